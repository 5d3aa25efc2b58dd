#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include <QObject>

#include "Compare/Comparison.h"
#include "Desktop/Toolkit/UICalls.h"

namespace corvane::desktop {

/// What is kept of a picture of the video, to find it again.
struct PlacedPicture {
    std::int64_t time =
        -1; ///< when it is shown, in the video's units of time; -1 if that does not lead to it
    std::int64_t frame = -1; ///< the clip's frame that it shows; -1 for none
};

/// A comparison on a thread of its own. Destroying it ends the comparison. UI thread.
class CompareJob final : public QObject {
    Q_OBJECT

  public:
    CompareJob(std::shared_ptr<const Clip> clip, std::filesystem::path video);
    ~CompareJob() override;

    /// Begins. Called once.
    void Start();
    /// Ends it soon; `Finished` tells what was found until then.
    void Cancel();
    /// The pictures that were compared, in order; none until it has finished.
    const std::vector<PlacedPicture>& Pictures() const { return mPictures; }

  Q_SIGNALS:
    /// `total` is 0 if nobody knows.
    void Progressed(qint64 done, qint64 total);
    void Finished(const std::shared_ptr<const corvane::CompareReport>& report);
    /// Nothing could be compared: one sentence.
    void Failed(const QString& why);

  private:
    void Work();

    const std::shared_ptr<const Clip> mClip;
    const std::filesystem::path mVideo;
    std::atomic<bool> mCancel{false};
    std::vector<PlacedPicture> mPictures;
    UICalls mUI;
    std::thread mThread;
};

} // namespace corvane::desktop
