#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include <QObject>
#include <QString>

#include "Compare/ReportImage.h"
#include "CompareJob.h"

namespace corvane::desktop {

/// A picture of a video and the frame of the clip that it should be, both as people see them.
struct PicturePair {
    std::int64_t number = 0; ///< of the picture in the video
    ReportImage found;       ///< without pixels if there is none
    ReportImage expected;    ///< without pixels if the picture shows no frame of the clip
    QString problem;         ///< why there is no picture, or no frame: a sentence; empty if there are both
};

/// Makes pairs of pictures on a thread of its own: the newest wish, not those that came before. UI thread.
class PairLoader final : public QObject {
    Q_OBJECT

  public:
    PairLoader(std::shared_ptr<const Clip> clip, std::filesystem::path video);
    ~PairLoader() override;

    /// Wants a picture. `at` is what the comparison kept of it.
    void Want(std::int64_t number, const PlacedPicture& at);

  Q_SIGNALS:
    void Made(const std::shared_ptr<const corvane::desktop::PicturePair>& pair);

  private:
    struct Wish {
        std::int64_t number = 0;
        PlacedPicture at;
    };

    void Work();
    PicturePair Make(const Wish& wish);
    /// Without pixels if the wish was given up.
    ReportImage Found(const Wish& wish);
    /// Goes to near before the picture; the start if the video can't be sought.
    void GoNear(const Wish& wish);
    /// Decodes the picture. None if it did not come where its time says, if the video ends before it, or if
    /// it is no longer wanted.
    std::optional<VideoPicture> Decode(const Wish& wish);
    /// Whether decoding is to end: for good, or for a newer wish when it has taken long.
    bool IsOver(int decoded);
    ReportImage Expected(std::int64_t frame) const;

    const std::shared_ptr<const Clip> mClip;
    const std::filesystem::path mPath;
    // Of the worker:
    std::unique_ptr<Video> mVideo;
    std::optional<std::int64_t> mNext; // the number of the picture that comes next; none after seeking

    std::mutex mMutex; // guards these
    std::condition_variable mWake;
    std::optional<Wish> mWish;
    bool mEnd = false;

    UICalls mUI;
    std::thread mThread;
};

} // namespace corvane::desktop
