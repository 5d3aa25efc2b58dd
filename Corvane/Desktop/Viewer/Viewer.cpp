#include "Viewer.h"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>

#include <QAction>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

#include "Desktop/Toolkit/ElidedLabel.h"
#include "Engine/ClipText.h"
#include "Engine/Failure.h"
#include "Engine/FramePlace.h"
#include "PictureArea.h"
#include "PixelReadout.h"
#include "TransportBar.h"
#include "ViewerActions.h"

namespace corvane::desktop {

namespace {

ElidedLabel* MakeLine(const char* name, const QString& accessibleName, QWidget* parent) {
    auto* const label = new ElidedLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setAccessibleName(accessibleName);
    return label;
}

QLabel* MakeLabel(const char* name, const QString& accessibleName, const QString& tip, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setAccessibleName(accessibleName);
    label->setToolTip(tip);
    return label;
}

} // namespace

Viewer::Viewer(QWidget* parent)
    : QWidget(parent), mActions(std::make_unique<ViewerActions>(*this)),
      mTitle(MakeLine("viewerTitle", tr("Clip"), this)), mArea(new PictureArea(this)),
      mTransport(new TransportBar(*mActions, this)),
      mReadout(MakeLine("pixelReadout", tr("Pixel under the pointer"), this)),
      mDropped(MakeLabel("droppedFrames", tr("Dropped frames"),
                         tr("Frames that playback had to leave out to keep time"), this)),
      mZoom(MakeLabel("zoom", tr("Zoom"), tr("Rows of the screen to rows of the frame"), this)),
      mPlayback(&MonotonicNanoseconds), mLoader(nullptr) {
    mArea->setObjectName(QStringLiteral("pictureArea"));
    mTimer.setSingleShot(true);
    mTimer.setTimerType(Qt::PreciseTimer);
    BuildLayout();
    ConnectParts();
    SetClip(nullptr, {}, false);
}

Viewer::~Viewer() {
    // QWidget's destructor deletes them, when the members that their signals use are gone.
    mArea->disconnect(this);
    mTransport->disconnect(this);
}

void Viewer::BuildLayout() {
    mReadout->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* const status = new QHBoxLayout;
    status->setContentsMargins(8, 0, 8, 4);
    status->setSpacing(16);
    status->addWidget(mReadout, 1);
    status->addWidget(mZoom);
    status->addWidget(mDropped);
    mTitle->setContentsMargins(8, 4, 8, 4);
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(2);
    rows->addWidget(mTitle);
    rows->addWidget(mArea, 1);
    rows->addWidget(mTransport);
    rows->addLayout(status);
    setFocusProxy(mArea);
}

void Viewer::ConnectParts() {
    const ViewerActions& actions = *mActions;
    connect(actions.play, &QAction::triggered, this, [this] { IsPlaying() ? Pause() : Play(); });
    connect(actions.previous, &QAction::triggered, this, [this] { StepBy(-1); });
    connect(actions.next, &QAction::triggered, this, [this] { StepBy(1); });
    connect(actions.first, &QAction::triggered, this, [this] { SetCurrentFrame(0); });
    connect(actions.last, &QAction::triggered, this,
            [this] { SetCurrentFrame(mClip ? mClip->Info().frames - 1 : 0); });
    connect(actions.loop, &QAction::toggled, this, &Viewer::SetLoop);
    connect(actions.fit, &QAction::toggled, mArea, &PictureArea::SetFit);
    connect(actions.bothFields, &QAction::triggered, mArea, [this] { mArea->SetFields(FieldView::kBoth); });
    connect(actions.upperField, &QAction::triggered, mArea, [this] { mArea->SetFields(FieldView::kUpper); });
    connect(actions.lowerField, &QAction::triggered, mArea, [this] { mArea->SetFields(FieldView::kLower); });
    ConnectKeys();

    connect(mTransport, &TransportBar::FrameWanted, this, &Viewer::SetCurrentFrame);
    connect(mTransport, &TransportBar::PlaceWanted, this, &Viewer::GoTo);
    connect(mTransport, &TransportBar::FieldLeft, this, [this] { mArea->setFocus(); });
    connect(mArea, &PictureArea::LookChanged, this, [this] {
        mZoom->setText(mClip ? QStringLiteral("%1 %").arg(QString::number(mArea->GetZoom(), 'f', 0))
                             : QString());
        mReady.clear();
        WantPictures();
    });
    connect(mArea, &PictureArea::Painted, this, &Viewer::NotePainted, Qt::QueuedConnection);
    connect(mArea, &PictureArea::Hovered, this, [this](QPointF place) {
        mPointer = place;
        ShowReadout();
    });
    connect(mArea, &PictureArea::HoverEnded, this, [this] {
        mPointer.reset();
        ShowReadout();
    });
    connect(&mLoader, &PictureLoader::Made, this, &Viewer::TakePicture);
    connect(&mTimer, &QTimer::timeout, this, &Viewer::Tick);
}

void Viewer::ConnectKeys() {
    const auto onKey = [this](Qt::Key key, auto act) {
        auto* const shortcut =
            new QShortcut(QKeySequence(key), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    onKey(Qt::Key_J, [this] { Shuttle(-1); });
    onKey(Qt::Key_K, [this] { Pause(); });
    onKey(Qt::Key_L, [this] { Shuttle(1); });
    for (const Qt::Key key : {Qt::Key_MediaPlay, Qt::Key_MediaTogglePlayPause})
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, mActions->play,
                &QAction::trigger);
}

QList<QAction*> Viewer::PlaybackActions() const {
    return mActions->playback;
}

QList<QAction*> Viewer::ViewActions() const {
    return mActions->view;
}

void Viewer::SetName(const QString& name) {
    QString text = name;
    if (mClip) text += QStringLiteral("  —  ") + QString::fromStdString(FormatText(mClip->Info().format));
    mTitle->SetLine(text, Qt::ElideMiddle);
}

bool Viewer::TakeKey(Qt::Key key) {
    for (QAction* const action : mActions->playback) {
        if (action->shortcut() != QKeySequence(key) || !action->isEnabled()) continue;
        action->trigger();
        return true;
    }
    return false;
}

void Viewer::ShowPictureAlone(bool alone) {
    for (QWidget* const other :
         std::initializer_list<QWidget*>{mTitle, mTransport, mReadout, mZoom, mDropped})
        other->setVisible(!alone);
}

void Viewer::StopClip() {
    mResume = mResume || IsPlaying();
    StopPlaying();
    mClip = nullptr;
    mReady.clear();
    mAverage = 0;
    mLoader.Want({});
}

void Viewer::SetClip(std::shared_ptr<const Clip> clip, const QString& name, bool keepPlace) {
    if (clip) {
        if (const std::string why = clip->WhyNotRenderable(); !why.empty())
            return SetProblem(name, QStringLiteral("%1: %2.").arg(name, QString::fromStdString(why)));
    }
    StopClip();
    const bool resume = std::exchange(mResume, false) && keepPlace;
    mClip = std::move(clip);
    const std::int64_t frames = mClip ? mClip->Info().frames : 0;
    if (!keepPlace || !mClip) mArea->ShowMessage(mClip ? QString() : tr("Choose a clip to see it here."));
    if (!keepPlace) mDropped->clear();
    SetName(name);
    const ClipFormat format = mClip ? mClip->Info().format : ClipFormat();
    mActions->Enable(mClip != nullptr, format.Interlaced());
    if (mClip && !format.Interlaced()) mActions->bothFields->trigger();
    mTransport->SetClip(frames, mClip ? mClip->Info().ticksPerFrame : 0);
    const std::int64_t place = keepPlace ? std::min(mFrame, frames - 1) : 0;
    MovePlayhead(std::max<std::int64_t>(place, 0));
    mArea->SetClip(format);
    ShowReadout();
    if (mClip && resume) StartPlaying(mFrame);
}

void Viewer::SetProblem(const QString& name, const QString& sentence) {
    StopClip();
    mActions->Enable(false, false);
    mTransport->SetClip(0, 0);
    mArea->SetClip(ClipFormat());
    mArea->ShowMessage(sentence);
    SetName(name);
    ShowReadout();
}

void Viewer::SetCurrentFrame(std::int64_t frame) {
    if (!mClip) return;
    frame = std::clamp<std::int64_t>(frame, 0, mClip->Info().frames - 1);
    if (IsPlaying()) return StartPlaying(frame);
    MovePlayhead(frame);
    WantPictures();
}

void Viewer::StepBy(std::int64_t frames) {
    Pause();
    SetCurrentFrame(mFrame + frames);
}

void Viewer::GoTo(const QString& place) {
    if (!mClip) return;
    const std::string text = place.toStdString();
    const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
    try {
        const auto read = ReadFramePlace(text);
        if (!read && !digits)
            return mTransport->ShowProblem(
                tr("%1 is no frame; write %2").arg(place, QLatin1String(kFramePlaceForms)));
        // A number too large for a frame is one after the end.
        SetCurrentFrame(read ? FrameOf(*read, *mClip) : std::numeric_limits<std::int64_t>::max());
    } catch (const Failure& failure) {
        mTransport->ShowProblem(QString::fromUtf8(failure.what()));
    }
}

void Viewer::MovePlayhead(std::int64_t frame) {
    mFrame = frame;
    mTransport->SetFrame(frame);
}

void Viewer::ShowReadout() {
    const auto pixel = mPointer ? mArea->PixelAt(*mPointer) : std::nullopt;
    if (!pixel) return mReadout->SetLine(QString(), Qt::ElideRight);
    const Picture& picture = *mArea->GetPicture();
    QString text;
    try {
        const PixelWords words =
            DescribePixel(*picture.request.clip, *picture.frame, static_cast<std::uint32_t>(pixel->x()),
                          static_cast<std::uint32_t>(pixel->y()));
        text = QStringLiteral("x %1  y %2   %3   %4   RGB %5")
                   .arg(QString::number(pixel->x()), QString::number(pixel->y()),
                        QString::fromStdString(words.delivered), QString::fromStdString(words.format),
                        QString::fromStdString(words.rgb));
    } catch (const std::exception& exception) {
        text = QString::fromUtf8(exception.what());
    }
    mReadout->SetLine(text, Qt::ElideRight);
}

} // namespace corvane::desktop
