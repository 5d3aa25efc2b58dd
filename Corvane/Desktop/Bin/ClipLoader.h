#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <QImage>
#include <QObject>
#include <QSize>

#include "Desktop/Toolkit/UICalls.h"
#include "Engine/Project.h"

namespace corvane::desktop {

/// A clip as far as it could be opened.
struct LoadedClip {
    std::uint64_t id = 0;
    ClipSource source; ///< what was opened
    std::shared_ptr<const Clip> clip;
    /// Why there is no clip, or no frame of it, as a sentence; empty if all is well.
    QString problem;
    QImage thumbnail; ///< of the clip's first frame, in the shape of its pixels; null if there is none
};

/// Opens clips and makes their thumbnails on a thread of its own. All else is for the UI thread.
class ClipLoader final : public QObject {
    Q_OBJECT

  public:
    /// Thumbnails fit into `thumbnail`, in device pixels.
    ClipLoader(std::shared_ptr<Bundle> bundle, QSize thumbnail, QObject* parent = nullptr);
    /// Waits for the clip that is being opened.
    ~ClipLoader() override;

    /// Asks for a clip, after those that were asked for already. An earlier request with this id is
    /// forgotten.
    void Request(const ProjectClip& clip);
    /// Lets a clip that was asked for come next: its row is on the screen.
    void Hurry(std::uint64_t id);

  Q_SIGNALS:
    /// A clip that was asked for was opened, or could not be.
    void Loaded(const corvane::desktop::LoadedClip& loaded);

  private:
    void Run(const std::stop_token& stop);
    LoadedClip Load(const ProjectClip& wanted) const;

    const std::shared_ptr<Bundle> mBundle;
    const QSize mThumbnail;
    UICalls mUI;
    std::mutex mMutex; // guards mWaiting
    std::condition_variable_any mWake;
    std::deque<ProjectClip> mWaiting;
    std::jthread mThread; // last: it must end before what it uses
};

} // namespace corvane::desktop
