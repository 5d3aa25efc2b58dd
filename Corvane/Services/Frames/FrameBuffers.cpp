#include "FrameBuffers.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <limits>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "FrameMemory.h"
#include "Services/Foundation/NeverDestroyed.h"
#include "Services/Raster/PixelFormats.h"
#include "Services/Raster/RasterkitRows.h"
#include "Services/TestHooks.h"
#include "Suites.h"

/// What a handle points to. Never freed, only reused, so that a handle which was disposed of can be told.
struct CvVexel {
    std::atomic<bool> isLive = false;
    corvane::FrameMemory memory;
    std::int32_t rowBytes = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    CvPixelFormat format = 0;
    std::uint32_t parNumerator = 0;
    std::uint32_t parDenominator = 0;
};

namespace corvane {
namespace {

class FramePool {
  public:
    FramePool() { mIdle.reserve(kMaxIdleFrames); }

    // A frame with at least that many bytes of memory; null when memory runs out.
    CvVexel* Take(std::size_t bytes);
    // Takes back what `Take` gave. Allocates nothing.
    void Return(CvVexel* frame);
    void PurgeIdle();

    // Counts a creation; true when it is the one that shall fail.
    bool ShallFail();
    void FailAt(std::uint32_t nth);
    FrameStatistics Statistics();

  private:
    // All with the lock held.
    CvVexel* TakeIdle(std::size_t bytes);
    CvVexel* TakeSpare();
    bool KeepIdle(CvVexel* frame);
    FrameMemory FreeOldest();

    std::mutex mMutex;
    std::deque<CvVexel> mFrames;
    std::vector<CvVexel*> mIdle;  // with memory; the one returned last at the end
    std::vector<CvVexel*> mSpare; // without memory
    FrameStatistics mStatistics;
    std::uint32_t mFailAt = 0;
};

CvVexel* FramePool::Take(std::size_t bytes) {
    {
        const std::lock_guard lock(mMutex);
        if (CvVexel* frame = TakeIdle(FrameMemory::RoundUp(bytes))) return frame;
    }
    FrameMemory memory = FrameMemory::Allocate(bytes);
    if (!memory) {
        PurgeIdle();
        memory = FrameMemory::Allocate(bytes);
        if (!memory) return nullptr;
    }
    const std::lock_guard lock(mMutex);
    CvVexel* const frame = TakeSpare();
    frame->memory = std::move(memory);
    ++mStatistics.allocations;
    ++mStatistics.liveFrames;
    return frame;
}

CvVexel* FramePool::TakeIdle(std::size_t bytes) {
    const auto hasSize = [bytes](const CvVexel* frame) { return frame->memory.Bytes() == bytes; };
    const auto found = std::find_if(mIdle.rbegin(), mIdle.rend(), hasSize);
    if (found == mIdle.rend()) return nullptr;
    CvVexel* const frame = *found;
    mIdle.erase(std::next(found).base());
    mStatistics.idleBytes -= bytes;
    ++mStatistics.liveFrames;
    return frame;
}

CvVexel* FramePool::TakeSpare() {
    if (mSpare.empty()) {
        mSpare.reserve(mFrames.size() + 1); // room for every frame, so that returning one can't fail
        return &mFrames.emplace_back();
    }
    CvVexel* const frame = mSpare.back();
    mSpare.pop_back();
    return frame;
}

void FramePool::Return(CvVexel* frame) {
    for (bool isKept = false; !isKept;) {
        FrameMemory freed; // outlives the lock: giving memory back to the system takes long
        const std::lock_guard lock(mMutex);
        isKept = KeepIdle(frame);
        if (isKept)
            --mStatistics.liveFrames;
        else
            freed = FreeOldest();
    }
}

bool FramePool::KeepIdle(CvVexel* frame) {
    const std::size_t bytes = frame->memory.Bytes();
    const bool fits = mIdle.size() < kMaxIdleFrames && mStatistics.idleBytes + bytes <= kMaxIdleFrameBytes;
    // Alone, even the largest is kept: its clip goes on asking for frames.
    if (!fits && !mIdle.empty()) return false;
    mIdle.push_back(frame);
    mStatistics.idleBytes += bytes;
    return true;
}

FrameMemory FramePool::FreeOldest() {
    if (mIdle.empty()) return {};
    CvVexel* const frame = mIdle.front();
    mIdle.erase(mIdle.begin());
    mSpare.push_back(frame);
    mStatistics.idleBytes -= frame->memory.Bytes();
    return std::move(frame->memory);
}

void FramePool::PurgeIdle() {
    for (bool isEmpty = false; !isEmpty;) {
        FrameMemory freed;
        const std::lock_guard lock(mMutex);
        freed = FreeOldest();
        isEmpty = mIdle.empty();
    }
}

bool FramePool::ShallFail() {
    const std::lock_guard lock(mMutex);
    return mFailAt > 0 && --mFailAt == 0;
}

void FramePool::FailAt(std::uint32_t nth) {
    const std::lock_guard lock(mMutex);
    mFailAt = nth;
}

FrameStatistics FramePool::Statistics() {
    const std::lock_guard lock(mMutex);
    FrameStatistics statistics = mStatistics;
    statistics.idleFrames = static_cast<std::uint32_t>(mIdle.size());
    return statistics;
}

FramePool& Pool() {
    // A frame may be given back while the statics of other modules are being destroyed.
    static NeverDestroyed<FramePool> pool;
    return pool.Get();
}

constexpr std::uint64_t kRowAlignment = 64;

std::atomic<std::uint32_t> gMaxSide = kDefaultMaxFrameSide;
std::atomic<std::uint64_t> gMaxBytes = kDefaultMaxFrameBytes;
std::atomic<bool> gBottomUp = false;

// The row of a format that frames can have; null for the others.
const PixelFormatRow* FindConcrete(CvPixelFormat format) {
    const PixelFormatRow* const row = FindPixelFormat(format);
    return row != nullptr && IsConcrete(row->raster) ? row : nullptr;
}

struct Layout {
    std::uint64_t rowBytes;
    std::uint64_t bytes;
};

// Nothing if no such frame can be made. In 64 bits: a row fits 32 bits before it is multiplied by the height.
std::optional<Layout> LayOut(CvPixelFormat format, std::uint32_t width, std::uint32_t height) {
    const PixelFormatRow* const row = FindConcrete(format);
    const std::uint32_t maxSide = gMaxSide;
    if (row == nullptr || width > maxSide || height > maxSide) return {};

    const std::uint64_t pixelBytes = BytesPerPixel(row->raster);
    const std::uint64_t rowBytes = (width * pixelBytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    if (rowBytes > std::numeric_limits<std::int32_t>::max()) return {};
    const std::uint64_t bytes = rowBytes * height;
    if (bytes > gMaxBytes) return {};
    return Layout{rowBytes, bytes};
}

std::int32_t Create(CvVexelHandle* handle, std::int32_t access, CvPixelFormat format, std::uint32_t width,
                    std::uint32_t height, std::int32_t /*reserved1*/, std::int32_t /*reserved2*/,
                    std::uint32_t parNumerator, std::uint32_t parDenominator) {
    if (!handle) return kSuiteFailed;
    *handle = nullptr;
    try {
        const std::optional<Layout> layout = LayOut(format, width, height);
        if (access != kCvVexelAccess_ReadWrite || !layout || Pool().ShallFail()) return kSuiteFailed;
        CvVexel* const frame = Pool().Take(layout->bytes);
        if (!frame) return kSuiteFailed;

        frame->rowBytes = static_cast<std::int32_t>(layout->rowBytes);
        frame->width = width;
        frame->height = height;
        frame->format = format;
        frame->parNumerator = parNumerator;
        frame->parDenominator = parDenominator;
        frame->isLive.store(true, std::memory_order_release);
        *handle = frame;
        return kSuiteSucceeded;
    } catch (const std::bad_alloc&) {
        return kSuiteFailed;
    }
}

bool IsLive(CvVexelHandle handle) {
    return handle && handle->isLive.load(std::memory_order_acquire);
}

std::int32_t Dispose(CvVexelHandle handle) {
    // Of two that dispose of the same frame only one gets to the pool.
    if (!handle || !handle->isLive.exchange(false, std::memory_order_acq_rel)) return kSuiteFailed;
    Pool().Return(handle);
    return kSuiteSucceeded;
}

std::int32_t GetPixels(CvVexelHandle handle, std::int32_t access, char** pixels) {
    if (!IsLive(handle) || access != kCvVexelAccess_ReadWrite || !pixels) return kSuiteFailed;
    // The host asks when the plug-in has filled the frame, before it goes to other threads.
    raster::CompleteFills();
    *pixels = reinterpret_cast<char*>(handle->memory.Base());
    if (gBottomUp && handle->height > 0)
        *pixels += std::ptrdiff_t{handle->rowBytes} * (std::ptrdiff_t{handle->height} - 1);
    return kSuiteSucceeded;
}

std::int32_t GetBounds(CvVexelHandle handle, CvRect* bounds) {
    if (!IsLive(handle) || !bounds) return kSuiteFailed;
    *bounds = {0, 0, static_cast<std::int32_t>(handle->width), static_cast<std::int32_t>(handle->height)};
    return kSuiteSucceeded;
}

std::int32_t GetRowBytes(CvVexelHandle handle, std::int32_t* rowBytes) {
    if (!IsLive(handle) || !rowBytes) return kSuiteFailed;
    *rowBytes = gBottomUp ? -handle->rowBytes : handle->rowBytes;
    return kSuiteSucceeded;
}

std::int32_t GetPixelFormat(CvVexelHandle handle, CvPixelFormat* format) {
    if (!IsLive(handle) || !format) return kSuiteFailed;
    *format = handle->format;
    return kSuiteSucceeded;
}

std::int32_t GetPixelAspectRatio(CvVexelHandle handle, std::uint32_t* numerator, std::uint32_t* denominator) {
    if (!IsLive(handle) || !numerator || !denominator) return kSuiteFailed;
    *numerator = handle->parNumerator;
    *denominator = handle->parDenominator;
    return kSuiteSucceeded;
}

std::int32_t CanCreate(CvPixelFormat format, std::int32_t* answer) {
    if (!answer) return kSuiteFailed;
    *answer = FindConcrete(format) != nullptr;
    return kSuiteSucceeded;
}

constexpr CvVexelCreator2Suite3 kVexelCreator2Suite{Create};
constexpr CvVexelSuite1 kVexelSuite{Dispose,     GetPixels,      GetBounds,
                                    GetRowBytes, GetPixelFormat, GetPixelAspectRatio};
constexpr CvPixelFormatSuite1 kPixelFormatSuite{CanCreate};

} // namespace

const CvVexelCreator2Suite3* VexelCreator2Suite() {
    return &kVexelCreator2Suite;
}
const CvVexelSuite1* VexelSuite() {
    return &kVexelSuite;
}
const CvPixelFormatSuite1* PixelFormatSuite() {
    return &kPixelFormatSuite;
}

void SetFrameLimits(std::uint32_t maxSide, std::uint64_t maxBytes) {
    gMaxSide = maxSide;
    gMaxBytes = maxBytes;
}

FrameLimits GetFrameLimits() {
    return {gMaxSide, gMaxBytes};
}

void StoreFramesBottomUp(bool bottomUp) {
    gBottomUp = bottomUp;
}

void PurgeIdleFrames() {
    Pool().PurgeIdle();
}
FrameStatistics GetFrameStatistics() {
    return Pool().Statistics();
}
void FailFrameCreation(std::uint32_t nth) {
    Pool().FailAt(nth);
}

} // namespace corvane
