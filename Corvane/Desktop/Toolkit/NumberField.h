#pragma once

#include <QDoubleSpinBox>

#include "Services/UI/UILayout.h"

namespace corvane::desktop {

/// A field for a number that shows it rounded and keeps it exactly.
///
/// The number changes when the program sets it, and when a person's entry is finished: by Return, by leaving
/// the field, by a step, or by `interpretText`. Text that was not edited stands for the exact number, not for
/// the rounded one that it shows. Entries are decimal text with a point, whatever the locale, and whole
/// numbers if no decimals are shown; after any other entry the number is what it was. Only steps are held to
/// the limits here; the dialog's model holds entries to them. `valueChanged` reports only what a person does.
/// UI thread.
class NumberField final : public QDoubleSpinBox {
  public:
    /// `unit` is shown after the number; it may be empty.
    NumberField(const NumberLimits& limits, const QString& unit, QWidget* parent);

    /// Shows a number that the program sets.
    void Show(double value);

    QString textFromValue(double value) const override;
    double valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& position) const override;
    /// Mends nothing: an entry that is no number is not taken.
    void fixup(QString&) const override {}
    void stepBy(int steps) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    StepEnabled stepEnabled() const override;

  private:
    QString WithoutUnit(const QString& text) const;

    const NumberLimits mLimits;
};

} // namespace corvane::desktop
