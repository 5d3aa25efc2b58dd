#include "MessageBar.h"

#include <QHBoxLayout>
#include <QStyle>
#include <QToolButton>

namespace corvane::desktop {

namespace {

/// How many sentences are shown at a time; further ones replace the first.
constexpr int kMost = 12;

} // namespace

MessageBar::MessageBar(QWidget* parent) : QFrame(parent), mText(new QLabel(this)) {
    setObjectName(QStringLiteral("messages"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    // The colors that the palette has for notes, light or dark.
    setBackgroundRole(QPalette::ToolTipBase);
    mText->setForegroundRole(QPalette::ToolTipText);
    mText->setTextFormat(Qt::PlainText);
    mText->setWordWrap(true);
    mText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    mText->setAccessibleName(tr("Messages"));
    auto* const mark = new QLabel(this);
    mark->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(20, 20));
    auto* const close = new QToolButton(this);
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setAutoRaise(true);
    close->setFocusPolicy(Qt::TabFocus);
    close->setToolTip(tr("Close these messages"));
    close->setAccessibleName(close->toolTip());
    connect(close, &QToolButton::clicked, this, &MessageBar::Clear);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 4, 4);
    row->addWidget(mark, 0, Qt::AlignTop);
    row->addWidget(mText, 1);
    row->addWidget(close, 0, Qt::AlignTop);
    hide();
}

void MessageBar::Tell(const QString& sentence) {
    mSentences.removeAll(sentence);
    mSentences << sentence;
    if (mSentences.size() > kMost) mSentences.removeFirst();
    mText->setText(GetText());
    show();
}

void MessageBar::Clear() {
    mSentences.clear();
    hide();
}

} // namespace corvane::desktop
