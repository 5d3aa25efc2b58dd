#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include <QList>
#include <QPointF>
#include <QTimer>
#include <QWidget>

#include "Engine/Clip.h"
#include "PictureLoader.h"
#include "Playback.h"

class QAction;
class QLabel;

namespace corvane::desktop {

class ElidedLabel;
class PictureArea;
class TransportBar;
struct ViewerActions;

/// Shows a clip: the frame at the playhead, the transport, and the values of the pixel under the pointer. UI
/// thread only; frames are made on threads of its own.
///
/// Keys. If the viewer or something in it has the focus: Space plays and pauses, Left and Right step, Home
/// and End go to the ends, L plays, J plays backwards, both twice as fast if they are pressed again, K
/// pauses, Shift and the arrows move a picture that is larger than its room, and Ctrl and the arrows move the
/// place of the readout. They do nothing outside of the viewer, so that lists and text fields there keep
/// them; the viewer's own frame field keeps what edits text, and Space presses a button that has the focus.
/// In the whole window: Ctrl+L loops, Ctrl+0 fits, Ctrl+1 is 100 %, and a keyboard's play key plays.
class Viewer final : public QWidget {
    Q_OBJECT

  public:
    explicit Viewer(QWidget* parent = nullptr);
    /// Waits for the frames that are being made, at most two.
    ~Viewer() override;

    /// Shows a clip under this name; null for none, with a hint of what to do. With `keepPlace`, which is for
    /// a clip whose settings changed, the playhead stays where it is (held to the new length) and goes on
    /// playing if it was. Otherwise it is at frame 0 and pauses. If a clip can't be rendered, the viewer says
    /// why.
    void SetClip(std::shared_ptr<const Clip> clip, const QString& name, bool keepPlace);
    /// Shows why there is no clip, as a sentence. If a clip is set with `keepPlace` afterwards, it goes on
    /// where the last one was.
    void SetProblem(const QString& name, const QString& sentence);
    /// Gives what is shown another name.
    void SetName(const QString& name);

    /// The frame at the playhead; 0 if there is no clip.
    std::int64_t CurrentFrame() const { return mClip ? mFrame : 0; }
    /// Moves the playhead, held to the clip. Playback goes on from there.
    void SetCurrentFrame(std::int64_t frame);
    bool IsPlaying() const { return mPlayback.IsRunning(); }
    /// Frames that the present or the last playback left out.
    std::int64_t DroppedFrames() const { return mPlayback.GetDropped(); }

    /// Does what a plain key does to the playhead when the viewer has the focus: Space, Left, Right, Home and
    /// End. Returns false for other keys, and if there is no clip.
    bool TakeKey(Qt::Key key);

    /// Hides all but the picture, or shows it again. The keys go on working.
    void ShowPictureAlone(bool alone);

    /// For a menu, with separators: play, step, ends, loop. The viewer owns them.
    QList<QAction*> PlaybackActions() const;
    /// For a menu, with separators: fit and 100 %; both, upper, lower field.
    QList<QAction*> ViewActions() const;

    /// The clock by which frames are chosen; the machine's monotonic one unless a test sets its own.
    void SetClock(PlaybackClock clock);

  public Q_SLOTS:
    /// Plays from the playhead, or from the beginning if that is at the end. Does nothing without a clip.
    void Play();
    /// Stays at the playhead.
    void Pause();

  Q_SIGNALS:
    /// The picture of this frame is on the screen.
    void FrameShown(qint64 frame);
    /// Playback has begun or ended.
    void PlayingChanged(bool playing);

  private:
    // Viewer.cpp: what it is made of, and what it shows.
    void BuildLayout();
    void ConnectParts();
    void ConnectKeys();
    void StopClip();
    void ShowReadout();
    void StepBy(std::int64_t frames);
    void GoTo(const QString& place);
    void MovePlayhead(std::int64_t frame);

    // ViewerPlayback.cpp: which picture is wanted, and when it is shown.
    PictureRequest RequestFor(std::int64_t frame, std::int64_t step) const;
    bool IsShown(const PictureRequest& request) const;
    void WantPictures();
    void WantAhead(std::vector<PictureRequest>& requests) const;
    std::int64_t StepsLate() const;
    void KeepReady(std::int64_t ahead);
    void TakePicture(const PicturePointer& picture);
    void TakePicturePlaying(const PicturePointer& picture);
    void Show(const PicturePointer& picture, std::int64_t step);
    void NotePainted(const PicturePointer& picture, std::int64_t step);
    void Shuttle(int direction);
    void StartPlaying(std::int64_t frame);
    void StopPlaying();
    void SetLoop(bool loop);
    void Tick();
    void ShowDropped();

    std::shared_ptr<const Clip> mClip; // one that can be rendered
    std::int64_t mFrame = 0;
    int mSpeed = 1;       // frames that playback goes on a step; backwards below 0
    bool mResume = false; // play when a clip comes with its place kept

    std::unique_ptr<ViewerActions> mActions;
    ElidedLabel* mTitle;
    PictureArea* mArea;
    TransportBar* mTransport;
    ElidedLabel* mReadout;
    QLabel* mDropped;
    QLabel* mZoom;
    std::optional<QPointF> mPointer; // over the picture area

    Playback mPlayback;
    QTimer mTimer;
    std::int64_t mStep = 0;                        // of the playback, at the playhead
    std::int64_t mShownStep = 0;                   // of the picture that is shown
    std::map<std::int64_t, PicturePointer> mReady; // by frame: pictures of later steps
    std::int64_t mAverage = 0;                     // nanoseconds that a picture takes
    std::uint64_t mOrder = 0;
    std::uint64_t mShownOrder = 0;
    std::uint64_t mFirstPlayed = 0; // order of the first request of this playback
    PictureLoader mLoader;          // the last: its threads end first
};

} // namespace corvane::desktop
