#include "ControlWidgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QListView>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStandardItemModel>

#include "ColorSwatch.h"
#include "ElidedLabel.h"
#include "NumberField.h"
#include "Text.h"

namespace corvane::desktop {

namespace {

constexpr QSize kSwatchSize(28, 14);

/// Replaces the items of a list. Its choice is lost.
void FillItems(QComboBox& box, const PopupModel& popup) {
    auto* const items = new QStandardItemModel(&box);
    for (const PopupModel::Item& item : popup.GetItems()) {
        auto* const row = new QStandardItem(ToQt(item.text));
        row->setEnabled(item.enabled);
        items->appendRow(row);
    }
    const QSignalBlocker silent(&box);
    box.setModel(items); // deletes the one before, which is the box's own
    // The list is as wide as its items even if the box is not.
    box.view()->setMinimumWidth(box.view()->sizeHintForColumn(0) +
                                box.view()->verticalScrollBar()->sizeHint().width());
}

ControlWidget MakePopup(DialogModel& dialog, PopupModel& popup, QWidget* parent,
                        const std::function<void()>& finishEntry) {
    auto* const box = new QComboBox(parent);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(20);
    box->setMaxVisibleItems(16);
    const auto update = [box, &popup](ControlAspect aspect) {
        if (aspect == ControlAspect::kItems) FillItems(*box, popup);
        box->setCurrentIndex(static_cast<int>(popup.GetValue()));
    };
    update(ControlAspect::kItems);
    // Only a person "activates" an item.
    QObject::connect(box, &QComboBox::activated, box, [&dialog, &popup, finishEntry, update](int index) {
        finishEntry();
        if (!dialog.Choose(popup, index)) update(ControlAspect::kValue);
    });
    return {box, update};
}

ControlWidget MakeNumber(DialogModel& dialog, NumberModel& number, QWidget* parent) {
    const LayoutNode& layout = number.GetLayout();
    auto* const field = new NumberField(layout.limits, ToQt(layout.unit), parent);
    const auto update = [field, &number](ControlAspect) { field->Show(number.GetValue()); };
    update(ControlAspect::kValue);
    QObject::connect(field, &QDoubleSpinBox::valueChanged, field, [&dialog, &number, update](double value) {
        if (!dialog.Enter(number, value)) update(ControlAspect::kValue);
    });
    return {field, update};
}

ControlWidget MakeCheckbox(DialogModel& dialog, CheckboxModel& checkbox, QWidget* parent,
                           const std::function<void()>& finishEntry) {
    auto* const box = new QCheckBox(WithMnemonic(checkbox.GetLayout().label), parent);
    const auto update = [box, &checkbox](ControlAspect) { box->setChecked(checkbox.IsChecked()); };
    update(ControlAspect::kValue);
    // Only a person "clicks".
    QObject::connect(box, &QCheckBox::clicked, box, [&dialog, &checkbox, finishEntry, update](bool checked) {
        finishEntry();
        if (!dialog.Check(checkbox, checked)) update(ControlAspect::kValue);
    });
    return {box, update};
}

/// The title, with the layout's mnemonic as long as the program has not set another.
QString ButtonText(const ControlModel& button) {
    const Mosk::String& title = button.GetTitle();
    const LabelText& label = button.GetLayout().label;
    return title == label.text ? WithMnemonic(label) : Literal(title);
}

ControlWidget MakeButton(DialogModel& dialog, ControlModel& control, QWidget* parent,
                         const std::function<void()>& finishEntry) {
    auto* const button = new QPushButton(parent);
    const auto update = [button, &control](ControlAspect) { button->setText(ButtonText(control)); };
    update(ControlAspect::kTitle);
    UpdateSwatch(dialog, control, button);
    const bool cancels = control.GetID() == dialog.GetLayout().cancelButton;
    QObject::connect(button, &QPushButton::clicked, button, [&dialog, &control, cancels, finishEntry] {
        if (!cancels) finishEntry();
        dialog.Press(control);
    });
    return {button, update};
}

Qt::TextElideMode ElideMode(lumui::controls::TextTruncation truncation) {
    using lumui::controls::TextTruncation;
    switch (truncation) {
    case TextTruncation::kNone: return Qt::ElideNone;
    case TextTruncation::kStart: return Qt::ElideLeft;
    case TextTruncation::kMiddle: return Qt::ElideMiddle;
    case TextTruncation::kEnd: break;
    }
    return Qt::ElideRight;
}

ControlWidget MakeStaticText(StaticTextModel& text, QWidget* parent) {
    auto* const label = new ElidedLabel(parent);
    const auto update = [label, &text](ControlAspect) {
        label->SetLine(ToQt(text.GetText()), ElideMode(text.GetTruncation()));
    };
    update(ControlAspect::kValue);
    return {label, update};
}

ControlWidget MakeBareWidget(DialogModel& dialog, ControlModel& control, QWidget* parent,
                             const std::function<void()>& finishEntry) {
    return std::visit(
        PerClass{
            [&](PopupModel* popup) { return MakePopup(dialog, *popup, parent, finishEntry); },
            [&](NumberModel* number) { return MakeNumber(dialog, *number, parent); },
            [&](CheckboxModel* checkbox) { return MakeCheckbox(dialog, *checkbox, parent, finishEntry); },
            [&](StaticTextModel* text) { return MakeStaticText(*text, parent); },
            [&](auto* button) { return MakeButton(dialog, *button, parent, finishEntry); },
        },
        control.AsClass());
}

} // namespace

ControlWidget MakeControlWidget(DialogModel& dialog, ControlModel& control, QWidget* parent,
                                const std::function<void()>& finishEntry) {
    ControlWidget made = MakeBareWidget(dialog, control, parent, finishEntry);
    made.widget->setObjectName(QString::fromStdString(control.GetID()));
    made.widget->setEnabled(control.IsEnabled());
    if (const Mosk::String& tip = control.GetLayout().tip; !tip.empty()) made.widget->setToolTip(ToQt(tip));
    return made;
}

void UpdateSwatch(const DialogModel& dialog, const ControlModel& button, QWidget* widget) {
    const std::vector<std::string>& channels = button.GetLayout().swatch;
    auto* const painted = dynamic_cast<QPushButton*>(widget);
    if (channels.empty() || painted == nullptr) return;
    float components[4]{};
    for (std::size_t i = 0; i < std::size(components); ++i)
        components[i] =
            static_cast<float>(std::get<NumberModel*>(dialog.Find(channels[i])->AsClass())->GetValue());
    painted->setIconSize(kSwatchSize + QSize(kSwatchGap, 0));
    painted->setIcon(MakeSwatch({components[0], components[1], components[2], components[3]}, kSwatchSize,
                                widget->devicePixelRatioF()));
}

} // namespace corvane::desktop
