#include "NumberField.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include <QLineEdit>
#include <QLocale>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSpinBox>

namespace corvane::desktop {

namespace {

/// Enough decimals for the spin box never to round a number.
constexpr int kAllDecimals = 323;

/// Digits that survive decimal arithmetic: 0.25 and a step of 0.05 make 0.3.
constexpr int kCleanDigits = 14;

double Cleaned(double number) {
    char text[64];
    const auto end =
        std::to_chars(text, std::end(text), number, std::chars_format::general, kCleanDigits).ptr;
    std::from_chars(text, end, number);
    return number;
}

} // namespace

NumberField::NumberField(const NumberLimits& limits, const QString& unit, QWidget* parent)
    : QDoubleSpinBox(parent), mLimits(limits) {
    setLocale(QLocale::c());
    setDecimals(kAllDecimals);
    // The program may show numbers beyond the limits.
    setRange(std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max());
    setKeyboardTracking(false);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    if (!unit.isEmpty()) setSuffix(u' ' + unit);
}

void NumberField::Show(double value) {
    const QSignalBlocker silent(this);
    setValue(value);
}

QString NumberField::textFromValue(double value) const {
    char text[400];
    // Numbers that would fill a line are shown in a form that people can read.
    const auto [end, error] =
        std::abs(value) < 1e15
            ? std::to_chars(text, std::end(text), value, std::chars_format::fixed, mLimits.decimals)
            : std::to_chars(text, std::end(text), value);
    return error == std::errc() ? QString::fromLatin1(text, end - text) : QString();
}

QString NumberField::WithoutUnit(const QString& text) const {
    return text.endsWith(suffix()) ? text.chopped(suffix().size()) : text;
}

double NumberField::valueFromText(const QString& text) const {
    const QString number = WithoutUnit(text);
    if (number == textFromValue(value())) return value();
    return ParseFiniteNumber(number.trimmed().toStdString()).value_or(value());
}

QValidator::State NumberField::validate(QString& text, int&) const {
    const QString number = WithoutUnit(text).trimmed();
    // Points and commas may be typed even if none is due: without them 719.9 would become 7199.
    constexpr QStringView kCharacters = u"0123456789+-eE.,";
    if (!std::all_of(number.begin(), number.end(), [&](QChar c) { return kCharacters.contains(c); }))
        return QValidator::Invalid;
    const auto value = ParseFiniteNumber(number.toStdString());
    const bool isNumber = value && (mLimits.decimals > 0 || *value == std::round(*value));
    return isNumber ? QValidator::Acceptable : QValidator::Intermediate;
}

void NumberField::stepBy(int steps) {
    interpretText();
    setValue(mLimits.Hold(Cleaned(value() + steps * mLimits.step)));
    selectAll();
}

QAbstractSpinBox::StepEnabled NumberField::stepEnabled() const {
    StepEnabled enabled = StepNone;
    if (!mLimits.maximum || value() < *mLimits.maximum) enabled |= StepUpEnabled;
    if (!mLimits.minimum || value() > *mLimits.minimum) enabled |= StepDownEnabled;
    return enabled;
}

QSize NumberField::sizeHint() const {
    ensurePolished();
    const QString widest =
        textFromValue(std::max(std::abs(mLimits.minimum.value_or(-1)), mLimits.maximum.value_or(1)));
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    const QSize text(fontMetrics().horizontalAdvance(u'-' + widest + suffix() + u' '),
                     lineEdit()->sizeHint().height());
    return style()->sizeFromContents(QStyle::CT_SpinBox, &option, text, this);
}

} // namespace corvane::desktop
