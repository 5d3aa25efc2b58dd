#include "ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace corvane::desktop {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidedLabel::SetLine(const QString& text, Qt::TextElideMode mode) {
    mMode = mode;
    setText(text);
    UpdateTip();
}

QString ElidedLabel::GetShownText() const {
    return fontMetrics().elidedText(text(), mMode, contentsRect().width());
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 8, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                          GetShownText(), foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    UpdateTip();
}

void ElidedLabel::UpdateTip() {
    setToolTip(GetShownText() == text() ? QString() : text());
}

} // namespace corvane::desktop
