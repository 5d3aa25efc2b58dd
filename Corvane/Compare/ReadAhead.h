#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "Video.h"

namespace corvane {

/// Decodes a video on a thread of its own, a few pictures ahead of those who look at them. One thread at a
/// time.
class ReadAhead {
  public:
    /// Begins. The video outlives it, and is used by nobody else meanwhile. Throws `std::system_error` if
    /// there can be no thread.
    explicit ReadAhead(Video& video);
    /// Ends with the picture that is being decoded.
    ~ReadAhead();

    /// The next picture; none at the end. Throws what `Video::Next` throws.
    std::optional<VideoPicture> Next();

  private:
    void Run();

    Video& mVideo;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<VideoPicture> mPictures;
    std::exception_ptr mFailure;
    bool mEnded = false;   // nothing more will come
    bool mStopped = false; // nothing more is wanted
    std::jthread mThread;
};

} // namespace corvane
