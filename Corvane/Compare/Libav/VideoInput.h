#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Compare/Video.h"
#include "Export/Files/NumberedName.h"
#include "Export/Libav/LibavError.h"
#include "Export/Libav/LibavFree.h"
#include "Services/Foundation/FileDescriptor.h"

namespace corvane {

/// A pixel aspect, whose terms are above 0, as a codec of libav tells it: that of PNG takes the pixels a
/// meter across and down for it, which is the reverse. Any thread.
PixelAspect AspectOf(AVRational told, AVCodecID codec);

/// The number of a value of libav's, which may be none that its type has if a file says so: C++ must not read
/// it as that type then. Any thread.
template <class Value>
int NumberOf(const Value& value) {
    static_assert(sizeof(Value) == sizeof(int));
    int number;
    std::memcpy(&number, &value, sizeof number);
    return number;
}

/// The packets of a video stream: of a container, of standard input, or of the files of a numbered sequence,
/// each of which is one packet. One thread at a time.
class VideoInput {
  public:
    /// Opens what `path` names and finds the video in it. `cancel`, which may be null, ends the wait for a
    /// pipe when it becomes true; it and `log` outlive the input. Throws `Failure` if there is none that
    /// could be decoded, and `std::bad_alloc`.
    VideoInput(const std::filesystem::path& path, const std::atomic<bool>* cancel, const LibavLog& log);

    /// The stream, with what its decoder has to know.
    const AVStream& Stream() const { return *mStream; }
    /// What the container and the codec's header say, but for the pixel format.
    VideoFacts Facts() const;
    /// Reads the next packet. Returns false at the end. Throws `Failure` if it is encrypted, and
    /// `std::bad_alloc`.
    bool Next(AVPacket& packet);
    /// Goes to the key packet at or before a time. Returns false if that can't be. Throws `std::bad_alloc`.
    bool SeekBefore(std::int64_t time);
    /// Ends the wait for more data of a pipe. Any thread.
    void Stop() { mStopped = true; }
    /// Why it can't be read to its end, as a clause; empty if nothing was in the way so far.
    const std::string& WhyCut() const { return mWhyCut; }
    /// Ends with the name of the video, the reason and the remedy.
    [[noreturn]] void Fail(const std::string& reason) const;

  private:
    struct Close {
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    };
    struct Sequence {
        NumberedName name;
        std::vector<std::int64_t> numbers; // of the files that there are
        std::size_t next = 0;
    };

    struct FreeIO {
        void operator()(AVIOContext* io) const {
            av_freep(static_cast<void*>(&io->buffer));
            avio_context_free(&io);
        }
    };

    bool IsStopped() const { return mStopped || (mCancel != nullptr && *mCancel); }
    // What libav calls to read a pipe: its own way would not end while nobody writes.
    static int ReadPipe(void* self, std::uint8_t* bytes, int size);
    // What libav calls to ask whether to give up.
    static int AskStopped(void* self) { return static_cast<const VideoInput*>(self)->IsStopped(); }
    std::string FindFile(const std::filesystem::path& path);
    void OpenPipe(const std::filesystem::path& path);
    void Open(const std::string& url);
    void FindStream();
    bool NextOfSequence(AVPacket& packet);

    const std::string mName;
    const std::atomic<bool>* const mCancel; // null if nobody cancels
    const LibavLog& mLog;
    std::unique_ptr<Sequence> mSequence; // none for containers
    std::atomic<bool> mStopped{false};
    FileDescriptor mPipe; // none for files
    std::unique_ptr<AVIOContext, FreeIO> mPipeIO;
    std::unique_ptr<AVFormatContext, Close> mContext;
    AVStream* mStream = nullptr;
    std::string mWhyCut;
};

} // namespace corvane
