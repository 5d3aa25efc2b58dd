#include "StreamWriter.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <mutex>
#include <thread>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include "Export/Picture/AlignedBytes.h"

namespace corvane {
namespace {

// Direct I/O wants addresses, offsets and sizes in blocks; no disk has larger ones.
constexpr std::size_t kBlock = 4096;
constexpr std::size_t kChunk = std::size_t{8} << 20;
constexpr std::size_t kChunks = 3;
// Below this the page cache is quicker than waiting for the disk.
constexpr std::uint64_t kWorthDirect = std::uint64_t{64} << 20;

} // namespace

/// Chunks on their way to the disk, and the thread that writes them.
class StreamWriter::DirectQueue {
  public:
    explicit DirectQueue(OutputFile& file) : mFile(file), mThread([this] { WriteChunks(); }) {}

    ~DirectQueue() { Stop(); }

    void Add(std::span<const std::byte> bytes) {
        while (!bytes.empty()) {
            if (mFilled == kChunk) Submit();
            const std::size_t part = std::min(bytes.size(), kChunk - mFilled);
            std::memcpy(Chunk(mNext) + mFilled, bytes.data(), part);
            mFilled += part;
            bytes = bytes.subspan(part);
        }
    }

    // Waits for the thread; then writes the rest, of which the part after the last whole block goes by the
    // page cache.
    void Finish() {
        if (mFilled == kChunk) Submit();
        Stop();
        if (mError) std::rethrow_exception(mError);
        const std::size_t whole = mFilled / kBlock * kBlock;
        std::byte* const chunk = Chunk(mNext);
        const std::uint64_t offset = mNext * std::uint64_t{kChunk};
        mFile.WriteAt({chunk, whole}, offset);
        fcntl(mFile.Fd(), F_SETFL, fcntl(mFile.Fd(), F_GETFL) & ~O_DIRECT);
        mFile.WriteAt({chunk + whole, mFilled - whole}, offset + whole);
    }

  private:
    std::byte* Chunk(std::uint64_t number) {
        // One more block, to start at a multiple of it.
        auto* const memory = mMemory[number % kChunks].Get(kChunk + kBlock);
        return memory + (kBlock - reinterpret_cast<std::uintptr_t>(memory) % kBlock) % kBlock;
    }

    void Submit() {
        std::unique_lock lock(mMutex);
        ++mNext;
        mFilled = 0;
        mChanged.notify_all();
        // The chunk to fill next must have been written.
        mChanged.wait(lock, [this] { return mError || mWritten + kChunks > mNext; });
        if (mError) std::rethrow_exception(mError);
    }

    void Stop() {
        {
            const std::lock_guard lock(mMutex);
            mStop = true;
        }
        mChanged.notify_all();
        if (mThread.joinable()) mThread.join();
    }

    void WriteChunks() {
        std::unique_lock lock(mMutex);
        try {
            while (true) {
                mChanged.wait(lock, [this] { return mStop || mWritten < mNext; });
                if (mWritten == mNext) return;
                lock.unlock();
                mFile.WriteAt({Chunk(mWritten), kChunk}, mWritten * std::uint64_t{kChunk});
                lock.lock();
                ++mWritten;
                mChanged.notify_all();
            }
        } catch (...) {
            if (!lock.owns_lock()) lock.lock();
            mError = std::current_exception();
            mChanged.notify_all();
        }
    }

    OutputFile& mFile;
    std::array<AlignedBytes, kChunks> mMemory;
    std::size_t mFilled = 0;    // bytes in chunk `mNext`
    std::uint64_t mNext = 0;    // chunks before it were handed over
    std::uint64_t mWritten = 0; // chunks that are on the disk
    bool mStop = false;
    std::exception_ptr mError;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::thread mThread;
};

StreamWriter::StreamWriter(const std::filesystem::path& path, std::uint64_t total) : mFile(path) {
    struct stat status {};
    mPipe = fstat(mFile.Fd(), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
    if (!mFile.IsRegular()) return;
    if (total != 0 && fallocate(mFile.Fd(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(total)) != 0 &&
        (errno == ENOSPC || errno == EFBIG || errno == EDQUOT))
        mFile.Fail(errno);
    // Not every file system has direct I/O.
    if (total >= kWorthDirect && fcntl(mFile.Fd(), F_SETFL, fcntl(mFile.Fd(), F_GETFL) | O_DIRECT) == 0)
        mDirect = std::make_unique<DirectQueue>(mFile);
}

StreamWriter::~StreamWriter() = default;

void StreamWriter::Write(std::span<const std::byte> bytes) {
    mTotal += bytes.size();
    if (mDirect)
        mDirect->Add(bytes);
    else
        mFile.Write(bytes);
}

void StreamWriter::Finish() {
    if (mDirect) mDirect->Finish();
    mFile.Commit();
}

} // namespace corvane
