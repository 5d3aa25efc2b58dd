#include "DialogImpl.h"

using Dialog = ImporterSynthexPrefsDialogImpl;
using lumcore::utility::AsciiToUTF16;
using lumui::controls::UI_Popup;

namespace {

constexpr int kSlots = 2;

/// The items of the choose-color popup.
enum ColorChoice : long { kChoice_Field, kChoice_GradientStart, kChoice_GradientEnd, kColorChoices };

/// The colors that the two slots edit, by the choose-color popup's index.
constexpr FloatColor SynthexInfo::*kSlotColors[kColorChoices][kSlots] = {
    {&SynthexInfo::mUpperFieldColor, &SynthexInfo::mLowerFieldColor},
    {&SynthexInfo::mTopGradiantColorStart, &SynthexInfo::mBottomGradiantColorStart},
    {&SynthexInfo::mTopGradiantColorEnd, &SynthexInfo::mBottomGradiantColorEnd},
};

/// The color of a slot, or null if the popup shows no choice.
FloatColor* SlotColor(SynthexInfo& info, long choice, int slot) {
    return choice >= 0 && choice < kColorChoices ? &(info.*kSlotColors[choice][slot]) : nullptr;
}

/// The edit of one channel of one slot. The order is the one in which they are set.
struct ChannelEdit {
    ControlID<lumui::controls::UI_NumberEdit> id;
    float FloatColor::*channel;
    int slot;
};

constexpr ChannelEdit kChannelEdits[] = {
    {kRed0, &FloatColor::mRedPart, 0},   {kGreen0, &FloatColor::mGreenPart, 0},
    {kBlue0, &FloatColor::mBluePart, 0}, {kAlpha0, &FloatColor::mAlphaPart, 0},
    {kRed1, &FloatColor::mRedPart, 1},   {kGreen1, &FloatColor::mGreenPart, 1},
    {kBlue1, &FloatColor::mBluePart, 1}, {kAlpha1, &FloatColor::mAlphaPart, 1},
};

/// The titles of the two color buttons.
struct ButtonTitles {
    const char* first;
    const char* second;
};

constexpr ButtonTitles kGradientTitles{"Top Color", "Bottom Color"};
constexpr ButtonTitles kFieldTitles{"Upper Field Color", "Lower Field Color"};
constexpr ButtonTitles kFrameTitles{"Frame Color", "[unused]"};
constexpr ButtonTitles kNoTitles{"", ""};

const ButtonTitles& TitlesFor(long choice, lummediatypes::FieldType fieldType) {
    if (choice == kChoice_GradientStart || choice == kChoice_GradientEnd) return kGradientTitles;
    if (choice != kChoice_Field) return kNoTitles;
    return fieldType == lummediatypes::kFieldType_Progressive ? kFrameTitles : kFieldTitles;
}

/// Popups are filled once and never emptied.
void AddItemsOnce(UI_Popup& popup, std::initializer_list<const char*> items) {
    if (popup.HasItems()) return;
    for (const char* const item : items) popup.AddItem(AsciiToUTF16(item));
}

} // namespace

void Dialog::ColorRenderingChanged(Message*) {
    mSynthexInfo.mRenderFormat = static_cast<ContentRenderFormat>(Get(kColorRenderingPopup)->GetValue());
    SetupColorChoiceControls();
}

void Dialog::ChooseColorPopupChanged(Message*) {
    SetupColorButtonChoiceNames();
}

void Dialog::SetupColorChoiceControls() {
    const bool gradient = mSynthexInfo.mRenderFormat != kContentRenderFormat_FieldColors;
    const auto rendering = Get(kColorRenderingPopup);
    AddItemsOnce(*rendering, {"Render Field Colors", "Render Horizontal Gradient"});
    rendering->SetValue(gradient ? 1 : 0);

    const auto choice = Get(kChooseColorPopup);
    AddItemsOnce(*choice, {"Field Colors", "Gradient Colors - Start", "Gradient Colors - End"});
    choice->EnableAllItems();
    if (gradient) {
        choice->DisableItem(kChoice_Field, true);
        choice->SetValue(kChoice_GradientStart);
    } else {
        choice->DisableItem(kChoice_GradientStart, true);
        choice->DisableItem(kChoice_GradientEnd, true);
        choice->SetValue(kChoice_Field);
    }
    SetupColorButtonChoiceNames();
}

void Dialog::SetupColorButtonChoiceNames() {
    const ButtonTitles& titles = TitlesFor(Get(kChooseColorPopup)->GetValue(), mSynthexInfo.mFieldType);
    Get(kColorButton0)->SetText(AsciiToUTF16(titles.first));
    Get(kColorButton1)->SetText(AsciiToUTF16(titles.second));
    SetupColorTextDisplay();
}

void Dialog::SetupColorTextDisplay() {
    const long choice = Get(kChooseColorPopup)->GetValue();
    for (const ChannelEdit& edit : kChannelEdits) {
        const FloatColor* const color = SlotColor(mSynthexInfo, choice, edit.slot);
        Get(edit.id)->SetValue(color ? color->*edit.channel : 0.0f);
    }
}

/// Deliberate: nothing is clamped, and the edit keeps what was typed.
void Dialog::SetColorFromControl(const std::string& id) {
    const long choice = Get(kChooseColorPopup)->GetValue();
    const auto value =
        static_cast<float>(Get(ControlID<lumui::controls::UI_NumberEdit>{id.c_str()})->GetValue());
    for (const ChannelEdit& edit : kChannelEdits) {
        FloatColor* const color = SlotColor(mSynthexInfo, choice, edit.slot);
        if (id == edit.id.text && color) color->*edit.channel = value;
    }
}

void Dialog::FirstColorRedChanged(Message*) {
    SetColorFromControl(kRed0.text);
}
void Dialog::FirstColorGreenChanged(Message*) {
    SetColorFromControl(kGreen0.text);
}
void Dialog::FirstColorBlueChanged(Message*) {
    SetColorFromControl(kBlue0.text);
}
void Dialog::FirstColorAlphaChanged(Message*) {
    SetColorFromControl(kAlpha0.text);
}
void Dialog::SecondColorRedChanged(Message*) {
    SetColorFromControl(kRed1.text);
}
void Dialog::SecondColorGreenChanged(Message*) {
    SetColorFromControl(kGreen1.text);
}
void Dialog::SecondColorBlueChanged(Message*) {
    SetColorFromControl(kBlue1.text);
}
void Dialog::SecondColorAlphaChanged(Message*) {
    SetColorFromControl(kAlpha1.text);
}

void Dialog::FirstColorButtonChanged(Message*) {
    ChooseColor(0);
}
void Dialog::SecondColorButtonChanged(Message*) {
    ChooseColor(1);
}

/// Lets the person pick the color of a slot: in field-color mode a field color, whatever the popup shows, and
/// otherwise the gradient color that the popup shows.
void Dialog::ChooseColor(int slot) {
    long choice = kChoice_Field;
    if (mSynthexInfo.mRenderFormat != kContentRenderFormat_FieldColors) {
        choice = Get(kChooseColorPopup)->GetValue();
        if (choice == kChoice_Field) choice = -1; // no gradient color
    }
    if (FloatColor* const color = SlotColor(mSynthexInfo, choice, slot)) {
        lumui::controls::ColorRGBA picked{color->mRedPart, color->mGreenPart, color->mBluePart,
                                          color->mAlphaPart};
        DisplayColorPicker(picked);
        // Deliberate: alpha is not taken over. Only the alpha edit sets it.
        color->mRedPart = picked.mRed;
        color->mGreenPart = picked.mGreen;
        color->mBluePart = picked.mBlue;
    }
    SetupColorTextDisplay();
}

void Dialog::DisplayColorPicker(lumui::controls::ColorRGBA& color) {
    using lumui::controls::ColorPickerDialog;
    const auto picker = lumui::ui::MakeNode<ColorPickerDialog>(GetDrawSupplier(), GetView().get(), false);
    picker->SetColor(color);
    picker->RunModal();
    if (picker->IsAccepted()) color = picker->GetColor();
}
