#pragma once

#include <QLabel>

namespace corvane::desktop {

/// A line of text that takes the room there is: shortened where it is wider, and whole in a tool tip then.
class ElidedLabel final : public QLabel {
  public:
    explicit ElidedLabel(QWidget* parent);

    void SetLine(const QString& text, Qt::TextElideMode mode);
    /// What is shown at the present width.
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
