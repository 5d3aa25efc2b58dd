#pragma once

#include <QFrame>
#include <QLabel>
#include <QStringList>

namespace corvane::desktop {

/// A strip in a window that says what went wrong, until the person has read it and closes it. Nothing waits
/// for it. UI thread.
class MessageBar final : public QFrame {
    Q_OBJECT

  public:
    explicit MessageBar(QWidget* parent = nullptr);

    /// Shows a sentence, below those that are still there.
    void Tell(const QString& sentence);
    /// The sentences that are shown, one per line.
    QString GetText() const { return mSentences.join(u'\n'); }
    /// Takes all sentences away, and the strip with them.
    void Clear();

  private:
    QLabel* mText;
    QStringList mSentences;
};

} // namespace corvane::desktop
