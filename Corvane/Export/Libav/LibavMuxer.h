#pragma once

#include <exception>
#include <filesystem>
#include <string>

#include "Export/Files/OutputFile.h"
#include "LibavEncoder.h"

namespace corvane {

/// A container that is being written, through an `OutputFile`. One thread at a time. All of it throws
/// `Failure`.
class LibavMuxer {
  public:
    /// Makes the file under its temporary name. `log` outlives the muxer.
    LibavMuxer(const LibavRequest& request, const AVOutputFormat& container, const LibavLog& log);
    ~LibavMuxer();
    LibavMuxer(const LibavMuxer&) = delete;
    LibavMuxer& operator=(const LibavMuxer&) = delete;

    /// Describes the stream and writes the header.
    void Begin(const AVCodecContext& encoder, const StreamFacts& facts);
    /// Writes the packet, and leaves it empty.
    void Write(AVPacket& packet);
    /// Completes the container.
    void Complete();
    /// Where this process finds it until `Finish`.
    std::filesystem::path WorkingPath() const { return mFile.WorkingPath(); }
    /// Puts the complete file in its place. Returns what could not be kept of an older file, as a clause, or
    /// nothing.
    [[nodiscard]] std::string Finish() { return mFile.Commit(); }
    /// Bytes written to the file so far.
    std::uint64_t BytesWritten() const { return mFile.BytesWritten(); }

  private:
    // What libav calls. Its muxers don't always look at what comes of it, so that errors are kept here.
    static int WriteBytes(void* self, std::uint8_t* bytes, int size);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);
    static int OpenToRead(AVFormatContext* context, AVIOContext** io, const char* name, int flags,
                          AVDictionary** options);
    static int CloseToRead(AVFormatContext* context, AVIOContext* io);
    static int ReadBytes(void* self, std::uint8_t* bytes, int size);
    static std::int64_t SeekToRead(void* self, std::int64_t offset, int whence);
    template <class Step>
    std::int64_t Keeping(const Step& step);
    std::int64_t Size() const;
    void WriteHeader();
    void Check(int error);

    OutputFile mFile;
    const LibavLog& mLog;
    AVFormatContext* mContext = nullptr;
    AVStream* mStream = nullptr;
    AVRational mTimeBase{1, 1};
    std::int64_t mReadPlace = 0;    // where the file is read again
    std::exception_ptr mWriteError; // what using the file threw: it can't pass through libav
};

} // namespace corvane
