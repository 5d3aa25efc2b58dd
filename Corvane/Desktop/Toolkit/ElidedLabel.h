#pragma once

#include <QLabel>

namespace corvane::desktop {

/// A line of text that takes the room there is. If it is wider, it is shortened, and whole in a tool tip. UI
/// thread.
class ElidedLabel final : public QLabel {
  public:
    explicit ElidedLabel(QWidget* parent);

    /// Shows a text, which is shortened at the place that `mode` names.
    void SetLine(const QString& text, Qt::TextElideMode mode);
    /// The text as it is shown at the present width.
    QString GetShownText() const;

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void UpdateTip();

    Qt::TextElideMode mMode = Qt::ElideRight;
};

} // namespace corvane::desktop
