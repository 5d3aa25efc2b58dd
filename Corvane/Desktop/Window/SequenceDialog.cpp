#include "SequenceDialog.h"

#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "Engine/ClipText.h"
#include "Services/Frames/FrameBuffers.h"

namespace corvane::desktop {

namespace {

/// A ratio of two 32-bit terms, as an item of a box holds it.
using Terms = std::pair<std::uint32_t, std::uint32_t>;

struct Choice {
    const char* label;
    Terms terms;
};

// Sample aspect ratios of ITU-T H.264, Table E-1.
constexpr Choice kAspects[] = {
    {"Square (1:1)", {1, 1}},
    {"DV NTSC (10:11)", {10, 11}},
    {"DV NTSC wide (40:33)", {40, 33}},
    {"DV PAL (12:11)", {12, 11}},
    {"DV PAL wide (16:11)", {16, 11}},
    {"Anamorphic 2:1 (2:1)", {2, 1}},
    {"HD anamorphic 1080 (4:3)", {4, 3}},
    {"DVCPRO HD (3:2)", {3, 2}},
};

constexpr Rate kRates[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001},
                           {30, 1},       {50, 1}, {60000, 1001}, {60, 1}};

struct Preset {
    const char* name; ///< the label is this and the rate
    ClipFormat sequence;
};

constexpr Preset kPresets[] = {
    {"HD 1080", {{1920, 1080}, {1, 1}, {24, 1}}},
    {"HD 1080", {{1920, 1080}, {1, 1}, {25, 1}}},
    {"HD 1080", {{1920, 1080}, {1, 1}, {30000, 1001}}},
    {"HD 1080", {{1920, 1080}, {1, 1}, {30, 1}}},
    {"HD 1080", {{1920, 1080}, {1, 1}, {50, 1}}},
    {"HD 1080", {{1920, 1080}, {1, 1}, {60000, 1001}}},
    {"HD 720", {{1280, 720}, {1, 1}, {50, 1}}},
    {"HD 720", {{1280, 720}, {1, 1}, {60000, 1001}}},
    {"UHD 2160", {{3840, 2160}, {1, 1}, {25, 1}}},
    {"UHD 2160", {{3840, 2160}, {1, 1}, {60000, 1001}}},
    {"DV NTSC", {{720, 480}, {10, 11}, {30000, 1001}}},
    {"DV NTSC wide", {{720, 480}, {40, 33}, {30000, 1001}}},
    {"DV PAL", {{720, 576}, {12, 11}, {25, 1}}},
    {"DV PAL wide", {{720, 576}, {16, 11}, {25, 1}}},
};

QVariant Data(Terms terms) {
    return QVariant::fromValue(terms);
}

QComboBox* MakeBox(const char* name, QWidget* parent) {
    auto* const box = new QComboBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QComboBox* MakeAspects(QWidget* parent) {
    QComboBox* const box = MakeBox("aspect", parent);
    for (const Choice& aspect : kAspects) box->addItem(QString::fromLatin1(aspect.label), Data(aspect.terms));
    return box;
}

QComboBox* MakeRates(QWidget* parent) {
    QComboBox* const box = MakeBox("rate", parent);
    for (const Rate& rate : kRates)
        box->addItem(QString::fromStdString(RateText(rate)), Data({rate.scale, rate.sampleSize}));
    return box;
}

/// Chooses a ratio, which is added to the choices, with that label, if it is none of them.
void Choose(QComboBox& box, Terms terms, const std::string& label) {
    int index = 0;
    while (index < box.count() && box.itemData(index).value<Terms>() != terms) ++index;
    if (index == box.count()) box.addItem(QString::fromStdString(label), Data(terms));
    box.setCurrentIndex(index);
}

QSpinBox* MakeSize(const char* name, QWidget* parent) {
    auto* const box = new QSpinBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(1, static_cast<int>(kDefaultMaxFrameSide));
    box->setGroupSeparatorShown(false);
    box->setLocale(QLocale::c());
    return box;
}

} // namespace

SequenceDialog::SequenceDialog(const ClipFormat& sequence, QWidget* parent)
    : QDialog(parent), mPreset(new QComboBox(this)), mWidth(MakeSize("width", this)),
      mHeight(MakeSize("height", this)), mAspect(MakeAspects(this)), mRate(MakeRates(this)) {
    setWindowTitle(tr("Sequence Settings"));
    mPreset->setObjectName(QStringLiteral("preset"));
    mPreset->addItem(tr("Custom"));
    for (const auto& [name, preset] : kPresets)
        mPreset->addItem(QStringLiteral("%1, %2").arg(QString::fromLatin1(name),
                                                      QString::fromStdString(RateText(preset.rate))));
    auto* const size = new QHBoxLayout;
    size->addWidget(mWidth);
    size->addWidget(new QLabel(QStringLiteral("×"), this));
    size->addWidget(mHeight);
    size->addStretch();
    mWidth->setAccessibleName(tr("Frame width in pixels"));
    mHeight->setAccessibleName(tr("Frame height in pixels"));
    auto* const form = new QFormLayout;
    form->addRow(tr("&Preset"), mPreset);
    form->addRow(tr("Frame &size"), size);
    qobject_cast<QLabel*>(form->labelForField(size))->setBuddy(mWidth);
    form->addRow(tr("Pixel &aspect"), mAspect);
    form->addRow(tr("Frame &rate"), mRate);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const hint = new QLabel(tr("New clips begin with these. Clips that exist stay as they are."), this);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(hint);
    column->addLayout(form);
    column->addWidget(buttons);
    Show(sequence);
    connect(mPreset, &QComboBox::activated, this, [this](int index) {
        if (index > 0) Show(kPresets[index - 1].sequence);
    });
    for (QSpinBox* const box : {mWidth, mHeight})
        connect(box, &QSpinBox::valueChanged, this, &SequenceDialog::ShowPreset);
    for (QComboBox* const box : {mAspect, mRate})
        connect(box, &QComboBox::currentIndexChanged, this, &SequenceDialog::ShowPreset);
}

ClipFormat SequenceDialog::GetSequence() const {
    const auto [parNumerator, parDenominator] = mAspect->currentData().value<Terms>();
    const auto [scale, sampleSize] = mRate->currentData().value<Terms>();
    return {
        .size = {static_cast<std::uint32_t>(mWidth->value()), static_cast<std::uint32_t>(mHeight->value())},
        .aspect = {parNumerator, parDenominator},
        .rate = {scale, sampleSize}};
}

void SequenceDialog::Show(const ClipFormat& sequence) {
    mWidth->setValue(static_cast<int>(sequence.size.width));
    mHeight->setValue(static_cast<int>(sequence.size.height));
    Choose(*mAspect, {sequence.aspect.numerator, sequence.aspect.denominator}, AspectText(sequence.aspect));
    Choose(*mRate, {sequence.rate.scale, sequence.rate.sampleSize}, RateText(sequence.rate));
    ShowPreset();
}

/// Shows which preset the fields match, if any.
void SequenceDialog::ShowPreset() {
    const ClipFormat now = GetSequence();
    int index = 0;
    for (int preset = 0; preset < static_cast<int>(std::size(kPresets)); ++preset)
        if (kPresets[preset].sequence == now) index = preset + 1;
    mPreset->setCurrentIndex(index);
}

} // namespace corvane::desktop
