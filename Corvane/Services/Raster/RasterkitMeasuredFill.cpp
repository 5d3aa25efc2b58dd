#include "RasterkitMeasuredFill.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

namespace corvane::raster {
namespace {

using Clock = std::chrono::steady_clock;

template <class T>
class Relaxed {
  public:
    explicit constexpr Relaxed(T value) : mValue(value) {}
    operator T() const { return mValue.load(std::memory_order_relaxed); }
    Relaxed& operator=(T value) { return mValue.store(value, std::memory_order_relaxed), *this; }

  private:
    std::atomic<T> mValue;
};

// What is known of the memory of one frame. Threads may mix their notes up: an estimate is wrong then.
struct Known {
    Relaxed<const std::byte*> start{nullptr};
    Relaxed<std::size_t> firstFill{0}; // bytes; another number is another frame in the same memory
    Relaxed<bool> isStreamed{true};    // which way is the better one
    Relaxed<int> storedInTurn{0};      // how often it was filled through the caches since it last was not
    Relaxed<int> untilTrial{0};        // fills until the other way is tried
    Relaxed<float> stored{0};          // speed through the caches, bytes a second; 0 if not known
};

// Enough for the frames of a pool. Frames lie at whole pages, often huge ones: only a product mixes the bits
// in which they differ.
std::array<Known, 256> gKnown;
Known& KnownOf(const std::byte* start) {
    return gKnown[(reinterpret_cast<std::uintptr_t>(start) * 0x9E3779B97F4A7C15u) >> 56];
}

// The speed past the caches, bytes a second; 0 if not known. It depends on no frame.
Relaxed<float> gStreamed{0};

// A fill that begins at most this far behind the last one's beginning belongs to the same frame.
constexpr std::ptrdiff_t kNear = 256 * 1024;

// Fills of at least so many bytes are timed each, and so many of the shorter ones together: one alone would
// end while its streamed bytes are still on their way.
constexpr std::size_t kLong = 64 * 1024;
constexpr std::uint32_t kTimedTogether = 64;
// The time of fewer bytes is too short to say anything.
constexpr std::size_t kTellingBytes = 4096;

// After so many fills of the same frame the other way is tried. New ones go through the caches at first.
constexpr int kFirstFrames = 2; // of a process, to learn how fast streaming is
constexpr int kStreamedFrames = 256;
constexpr int kStoredFrames = 128;

// Past the caches it must be so much faster: a frame that was streamed takes longer to read afterwards.
constexpr float kMargin = 0.95f;

// A cache takes to memory only if it is used a few times: before that, the speed says nothing. The first one
// that does may have been held up: the second one decides.
constexpr int kStoredToTell = 3;
constexpr int kStoredToDecide = kStoredToTell + 1;

// The frame that a thread is filling.
struct Frame {
    Known* known;
    const std::byte* last; // where its newest fill began
    bool isStreamed;
    int storedInTurn; // how often its memory was before
    std::size_t timedBytes;
    Clock::duration time;
    // Short fills since `shortBegun`.
    std::uint32_t shortFills;
    std::size_t shortBytes;
    Clock::time_point shortBegun;

    void AddShort(std::size_t bytes) {
        if (shortFills == kTimedTogether) {
            timedBytes += shortBytes;
            time += Clock::now() - shortBegun;
            shortFills = 0;
        }
        if (shortFills++ == 0) {
            shortBytes = 0;
            shortBegun = Clock::now();
        }
        shortBytes += bytes;
    }
};
[[gnu::tls_model("initial-exec")]] constinit thread_local Frame tFrame{};

// Threads are interrupted: one slow frame must not decide.
float Smooth(float before, float now) {
    return before == 0 ? now : before + (now - before) / 8;
}

void Learn(const Frame& frame) {
    if (frame.timedBytes < kTellingBytes) return;
    const float speed = static_cast<float>(frame.timedBytes) /
                        std::max(std::chrono::duration<float>(frame.time).count(), 1e-9f);
    if (frame.isStreamed) {
        gStreamed = Smooth(gStreamed, speed);
        return;
    }
    Known& known = *frame.known;
    if (frame.storedInTurn < kStoredToTell) return;
    if (frame.storedInTurn > kStoredToDecide)
        known.stored = Smooth(known.stored, speed);
    else if (frame.storedInTurn == kStoredToTell || speed > known.stored)
        known.stored = speed;
    if (frame.storedInTurn < kStoredToDecide) return;
    const bool isFirst = gStreamed == 0;
    known.isStreamed = isFirst || known.stored < kMargin * gStreamed;
    if (known.isStreamed) {
        known.stored = 0;
        known.untilTrial = isFirst ? kFirstFrames : kStreamedFrames;
    }
}

// Which way to fill a frame: the better one, or the other one if that is to be tried. Stored frames far ahead
// of streamed ones need no trial.
bool ChooseStreamed(Known& known) {
    if (known.untilTrial > 0) {
        known.untilTrial = known.untilTrial - 1;
        return known.isStreamed;
    }
    if (known.isStreamed) return false; // until it is known how fast that is
    known.untilTrial = kStoredFrames;
    return known.stored < 2 * gStreamed;
}

// Ends the thread's frame and begins another one.
void BeginFrame(const std::byte* start, std::size_t bytes) {
    Learn(tFrame);
    Known& known = KnownOf(start);
    if (known.start != start || known.firstFill != bytes) {
        known.start = start;
        known.firstFill = bytes;
        known.isStreamed = true;
        known.storedInTurn = 0;
        known.untilTrial = 0;
        known.stored = 0;
    }
    tFrame = {};
    tFrame.known = &known;
    tFrame.isStreamed = ChooseStreamed(known);
    tFrame.storedInTurn = known.storedInTurn;
    known.storedInTurn = tFrame.isStreamed ? 0 : known.storedInTurn + 1;
}

} // namespace

MeasuredFill::MeasuredFill(const std::byte* start, std::size_t bytes) : mBytes(bytes) {
    Frame& frame = tFrame;
    const std::ptrdiff_t behind = start - frame.last;
    if (behind <= 0 || behind > kNear) BeginFrame(start, bytes);
    frame.last = start;
    mIsStreamed = frame.isStreamed;
    mIsTimed = bytes >= kLong;
    if (mIsTimed) {
        frame.shortFills = 0;
        mBegun = Clock::now();
    } else {
        frame.AddShort(bytes);
    }
}

MeasuredFill::~MeasuredFill() {
    if (!mIsTimed) return;
    tFrame.timedBytes += mBytes;
    tFrame.time += Clock::now() - mBegun;
}

} // namespace corvane::raster
