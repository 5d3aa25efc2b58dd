#pragma once

#include <condition_variable>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <QObject>

#include "Desktop/Toolkit/UICalls.h"
#include "PictureMaker.h"

namespace corvane::desktop {

/// A picture that has been made. It is never changed, and any thread may keep it.
using PicturePointer = std::shared_ptr<const Picture>;

/// Makes pictures on threads of its own. Everything else is for the UI thread.
///
/// A worker never holds the last reference to a clip: closing one waits for the plug-in, which may be busy
/// with a dialog on the UI thread.
class PictureLoader final : public QObject {
    Q_OBJECT

  public:
    explicit PictureLoader(QObject* parent);
    /// Waits for the pictures that are being made.
    ~PictureLoader() override;

    /// Wants these pictures, the first one first. What was wanted before and has not been begun is forgotten;
    /// a picture that is being made already is not begun again.
    void Want(std::vector<PictureRequest> requests);

  Q_SIGNALS:
    /// A picture is ready. They come in the order in which they become ready.
    void Made(const PicturePointer& picture);

  private:
    bool CanBegin() const;
    void Work();

    /// What is known of a picture that is being made; it keeps nothing alive.
    struct Busy {
        const Clip* clip;
        std::int64_t frame;
        PictureLook look;
        bool large;
    };

    std::mutex mMutex;
    std::condition_variable mWake;
    bool mEnd = false;
    std::deque<PictureRequest> mWanted;
    std::list<Busy> mBusy;
    UICalls mUI;
    std::vector<std::thread> mThreads;
};

} // namespace corvane::desktop
