#include <cmath>
#include <limits>

#include "ChoiceTables.h"
#include "DialogImpl.h"

using Dialog = ImporterSynthexPrefsDialogImpl;
using lummediatypes::kTicksPerSecond;
using lummediatypes::TickTime;

namespace {

constexpr double kTicksPerSecondAsDouble = kTicksPerSecond;

/// `value` truncated towards zero. What the type can't hold becomes its nearest value, and NaN 0: settings
/// files can bring any duration, and the conversion alone is undefined there.
template <class Integer>
Integer Truncate(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value)) return 0;
    if (value <= static_cast<double>(Limits::min())) return Limits::min();
    if (value >= static_cast<double>(Limits::max())) return Limits::max();
    return static_cast<Integer>(value);
}

/// Stores the row that a popup shows into `setting`. Returns false, and stores nothing, if it shows none.
template <class Value>
bool TakeChoice(const lumui::controls::UI_Popup& popup, const ChoiceList<Value>& rows, Value& setting) {
    const auto index = static_cast<std::uint32_t>(popup.GetValue()); // -1 is beyond all rows
    if (index >= rows.size()) return false;
    setting = rows[index].first;
    return true;
}

} // namespace

double Dialog::ToSeconds(TickTime time) {
    return static_cast<double>(time.GetTicks()) / kTicksPerSecondAsDouble;
}

void Dialog::FrameWidthChanged(Message*) {
    mSynthexInfo.mFrameWidth = Truncate<std::uint32_t>(Get(kFrameWidth)->GetValue());
}

void Dialog::FrameHeightChanged(Message*) {
    mSynthexInfo.mFrameHeight = Truncate<std::uint32_t>(Get(kFrameHeight)->GetValue());
}

void Dialog::FieldTypePopupChanged(Message*) {
    mSynthexInfo.mFieldType = static_cast<lummediatypes::FieldType>(Get(kFieldTypePopup)->GetValue());
    // Deliberate: the color buttons keep their titles until one of the color popups changes.
    UpdateFieldColorChoicesUI();
}

void Dialog::UpdateFieldColorChoicesUI() {
    Get(kColorButton1)->SetDisabled(mSynthexInfo.mFieldType == lummediatypes::kFieldType_Progressive);
}

/// Deliberate: a hook for formats that can't have every color. None restricts anything today.
void Dialog::ConstrainUIToPixelFormat() {}

void Dialog::DurationFramesChanged(Message*) {
    // Deliberate: no minimum here, unlike in seconds; 0 frames are a duration of 0.
    const auto frames = Truncate<std::int64_t>(Get(kDurationFrames)->GetValue());
    TickTime duration;
    duration.AddFrames(frames, mSynthexInfo.mVideoFrameRate);
    mSynthexInfo.mVideoDuration = duration;
    Get(kDurationSeconds)->SetValue(ToSeconds(duration));
}

void Dialog::DurationSecondsChanged(Message*) {
    const auto edit = Get(kDurationSeconds);
    TickTime duration(Truncate<std::int64_t>(edit->GetValue() * kTicksPerSecondAsDouble));
    duration.AlignToFrame(mSynthexInfo.mVideoFrameRate);
    if (lummediatypes::kTime_Zero >= duration)
        duration = TickTime(lummediatypes::kTime_Zero).AddFrames(1, mSynthexInfo.mVideoFrameRate);
    Get(kDurationFrames)->SetValue(static_cast<double>(duration.ToFrame64(mSynthexInfo.mVideoFrameRate)));
    edit->SetValue(ToSeconds(duration));
    mSynthexInfo.mVideoDuration = duration;
}

void Dialog::FrameRatePopupChanged(Message*) {
    if (TakeChoice(*Get(kFrameRatePopup), GetAllVideoFrameRates(), mSynthexInfo.mVideoFrameRate))
        DurationFramesChanged(nullptr); // the number of frames stays, the length follows the rate
}

void Dialog::DrawFrameNumberChanged(Message*) {
    mSynthexInfo.mDrawFrameNumber = Get(kDrawFrameNumber)->GetValue() != 0;
}

void Dialog::PixelFormatPopupChanged(Message*) {
    TakeChoice(*Get(kPixelFormatPopup), GetAllPixelFormats(), mSynthexInfo.mPixelFormat);
    SetupColorTextDisplay();
}

void Dialog::PixelAspectPopupChanged(Message*) {
    TakeChoice(*Get(kPixelAspectPopup), GetAllPixelAspects(), mSynthexInfo.mFramePAR);
}
