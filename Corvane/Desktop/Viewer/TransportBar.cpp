#include "TransportBar.h"

#include <algorithm>
#include <initializer_list>

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

#include "Engine/ClipText.h"
#include "Engine/FramePlace.h"
#include "FrameSlider.h"

namespace corvane::desktop {

namespace {

QToolButton* ButtonFor(QAction* action, QWidget* parent) {
    auto* const button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(action->statusTip());
    return button;
}

QLabel* Digits(const char* name, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return label;
}

} // namespace

TransportBar::TransportBar(const ViewerActions& actions, QWidget* parent)
    : QWidget(parent), mSlider(new FrameSlider(this)), mField(new QLineEdit(this)),
      mLast(Digits("lastFrame", this)), mTimecode(Digits("timecode", this)), mTime(Digits("time", this)) {
    NameParts();
    BuildLayout(actions);
    connect(mSlider, &FrameSlider::FrameWanted, this, &TransportBar::FrameWanted);
    connect(mField, &QLineEdit::returnPressed, this, &TransportBar::ReadField);
    // Return has been read by now: what is still modified then is wrong.
    connect(mField, &QLineEdit::editingFinished, this, [this] {
        if (!mField->hasFocus() || !mField->isModified()) ShowFrame();
    });
    SetClip(0, 0);
}

void TransportBar::NameParts() {
    mSlider->setObjectName(QStringLiteral("scrubber"));
    mSlider->setAccessibleName(tr("Scrubber"));
    mSlider->setToolTip(tr("Drag to go to a frame"));
    mField->setObjectName(QStringLiteral("frameField"));
    mField->setAccessibleName(tr("Frame"));
    mField->setToolTip(tr("The frame, counted from 0. To go to another one, type %1, and press Return")
                           .arg(QLatin1String(kFramePlaceForms)));
    mField->setFont(mTime->font());
    mField->setAlignment(Qt::AlignRight);
    mField->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9:;.s]*")), mField));
    mField->installEventFilter(this);
    mLast->setAccessibleName(tr("Last frame"));
    mLast->setToolTip(tr("The last frame"));
    mTimecode->setAccessibleName(tr("Timecode"));
    mTimecode->setToolTip(
        tr("The timecode of the frame: hours, minutes, seconds and frames; with a semicolon where "
           "numbers are dropped to keep the time of 30000/1001 frames a second"));
    mTime->setAccessibleName(tr("Time"));
    mTime->setToolTip(tr("The time of the frame, in hours, minutes, seconds and thousandths"));
}

void TransportBar::BuildLayout(const ViewerActions& actions) {
    auto* const row = new QHBoxLayout;
    row->setSpacing(2);
    QWidget* before = mSlider;
    const auto add = [&](QWidget* part) {
        row->addWidget(part);
        if (part->focusPolicy() == Qt::NoFocus) return;
        setTabOrder(before, part);
        before = part;
    };
    const auto addButtons = [&](std::initializer_list<QAction*> buttons) {
        for (QAction* const action : buttons) {
            QToolButton* const button = ButtonFor(action, this);
            button->installEventFilter(this);
            add(button);
        }
    };
    addButtons({actions.first, actions.previous, actions.play, actions.next, actions.last, actions.loop});
    row->addSpacing(8);
    add(mField);
    add(mLast);
    row->addSpacing(8);
    add(mTimecode);
    row->addSpacing(8);
    add(mTime);
    row->addStretch();
    addButtons({actions.bothFields, actions.upperField, actions.lowerField});
    row->addSpacing(8);
    addButtons({actions.fit, actions.full});
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(6, 2, 6, 2);
    rows->setSpacing(2);
    rows->addWidget(mSlider);
    rows->addLayout(row);
}

void TransportBar::SetClip(std::int64_t frames, std::int64_t ticksPerFrame) {
    mFrames = frames;
    mTicksPerFrame = ticksPerFrame;
    mFrame = std::clamp<std::int64_t>(mFrame, 0, std::max<std::int64_t>(frames - 1, 0));
    mSlider->SetFrames(frames);
    mSlider->setEnabled(frames > 0);
    mField->setEnabled(frames > 0);
    const QString last = QString::number(std::max<std::int64_t>(frames - 1, 0));
    const int digits = std::max<int>(static_cast<int>(last.size()), 5);
    mField->setFixedWidth(mField->fontMetrics().horizontalAdvance(QString(digits + 2, u'0')));
    mLast->setText(frames > 0 ? QStringLiteral("/ ") + last : QString());
    mField->setModified(false);
    ShowFrame();
}

void TransportBar::SetFrame(std::int64_t frame) {
    mFrame = frame;
    // What a person is typing is kept.
    if (mField->isModified() && mField->hasFocus()) {
        mSlider->SetFrame(frame);
        return ShowTimes();
    }
    ShowFrame();
}

void TransportBar::ShowFrame() {
    mSlider->SetFrame(mFrame);
    mField->setText(mFrames > 0 ? QString::number(mFrame) : QString());
    ShowTimes();
}

void TransportBar::ShowTimes() {
    const bool shown = mFrames > 0;
    mTimecode->setText(shown ? QString::fromStdString(TimecodeText(mFrame, mTicksPerFrame)) : QString());
    mTime->setText(shown ? QString::fromStdString(TimeText(mFrame, mTicksPerFrame)) : QString());
}

void TransportBar::ReadField() {
    const QString text = mField->text();
    mField->setModified(false);
    if (!text.isEmpty() && mFrames > 0) Q_EMIT PlaceWanted(text);
    // A problem leaves it to be corrected.
    if (!mField->isModified()) Q_EMIT FieldLeft();
}

void TransportBar::ShowProblem(const QString& sentence) {
    mField->setModified(true);
    mField->selectAll();
    QToolTip::showText(mField->mapToGlobal(QPoint(0, mField->height())), sentence, mField);
}

bool TransportBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (watched == mField && key == Qt::Key_Escape) {
        event->accept();
        if (event->type() == QEvent::KeyPress) {
            mField->setModified(false);
            ShowFrame();
            Q_EMIT FieldLeft();
        }
        return true;
    }
    // Space presses a button that has the focus.
    if (watched != mField && key == Qt::Key_Space && event->type() == QEvent::ShortcutOverride)
        event->accept();
    return false;
}

} // namespace corvane::desktop
