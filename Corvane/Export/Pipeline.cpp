#include "Pipeline.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace corvane {
namespace {

// A frame, and the packet that was made of it.
struct Slot {
    std::unique_ptr<Packet> packet;
    RenderedFrame frame;
    bool ready = false;
};

class Pipeline {
  public:
    Pipeline(const RenderFrame& render, Target& target, std::int64_t first, std::int64_t last, unsigned jobs,
             const ExportProgress& progress, const std::atomic<bool>& cancel)
        : mRender(render), mTarget(target), mFirst(first), mTotal(last - first + 1), mProgress(progress),
          mCancel(cancel), mSlots(jobs == 1 ? 1 : 2 * std::size_t{jobs}) {}

    std::int64_t Run(unsigned jobs) {
        {
            std::vector<std::jthread> threads;
            threads.reserve(jobs);
            while (threads.size() + 1 < jobs && Start(threads)) {
            }
            Work();
        }
        if (mError) std::rethrow_exception(mError);
        return mConsumed;
    }

  private:
    // Starts one more thread. False if the system has none left: those that run will do.
    bool Start(std::vector<std::jthread>& threads) {
        try {
            threads.emplace_back([this] { Work(); });
            return true;
        } catch (const std::system_error&) {
        } catch (const std::bad_alloc&) {
        }
        return false;
    }

    void Work() {
        std::unique_lock lock(mMutex);
        try {
            while (const std::optional<std::int64_t> number = Claim(lock)) {
                Slot& slot = SlotOf(*number);
                lock.unlock();
                Fill(slot, mFirst + *number);
                lock.lock();
                slot.ready = true;
                Drain(lock);
            }
        } catch (...) {
            if (!lock.owns_lock()) lock.lock();
            if (!mError) mError = std::current_exception();
        }
        mSpace.notify_all(); // threads that wait for a slot see that this is the end
    }

    // Waits for a free slot, and returns the number of the next frame to make in it; empty at the end.
    std::optional<std::int64_t> Claim(std::unique_lock<std::mutex>& lock) {
        mSpace.wait(lock, [this] { return Over() || mClaimed < mConsumed + std::ssize(mSlots); });
        if (Over()) return std::nullopt;
        return mClaimed++;
    }

    bool Over() const { return mError || mClaimed == mTotal || mCancel.load(std::memory_order_relaxed); }

    Slot& SlotOf(std::int64_t number) { return mSlots[static_cast<std::size_t>(number) % mSlots.size()]; }

    void Fill(Slot& slot, std::int64_t index) {
        if (!slot.packet) slot.packet = mTarget.NewPacket();
        slot.frame = mRender(index);
        mTarget.Prepare(slot.frame.view, index, *slot.packet);
        if (!mTarget.KeepsFrames()) slot.frame = {};
    }

    // Consumes, in order, what is ready, unless another thread is doing that: it will then take these, too.
    void Drain(std::unique_lock<std::mutex>& lock) {
        if (mDraining) return;
        mDraining = true;
        while (!mError && !mCancel.load(std::memory_order_relaxed) && mConsumed < mTotal &&
               SlotOf(mConsumed).ready) {
            Slot& slot = SlotOf(mConsumed);
            lock.unlock();
            mTarget.Consume(*slot.packet);
            slot.frame = {};
            if (mProgress) mProgress(mConsumed + 1, mTotal);
            lock.lock();
            slot.ready = false;
            ++mConsumed;
            mSpace.notify_one(); // one slot is free
        }
        mDraining = false;
    }

    const RenderFrame& mRender;
    Target& mTarget;
    const std::int64_t mFirst;
    const std::int64_t mTotal;
    const ExportProgress& mProgress;
    const std::atomic<bool>& mCancel;

    std::mutex mMutex;
    std::condition_variable mSpace;
    std::vector<Slot> mSlots;   // frame n uses slot n modulo their number
    std::int64_t mClaimed = 0;  // frames that a thread has begun
    std::int64_t mConsumed = 0; // written under the lock, by the thread that drains
    bool mDraining = false;     // stays set when `Consume` threw: nothing more is consumed
    std::exception_ptr mError;
};

} // namespace

std::int64_t RunPipeline(const RenderFrame& render, Target& target, std::int64_t first, std::int64_t last,
                         unsigned jobs, const ExportProgress& progress, const std::atomic<bool>& cancel) {
    const auto frames = static_cast<std::uint64_t>(last - first + 1);
    jobs = static_cast<unsigned>(std::clamp<std::uint64_t>(jobs, 1, frames));
    return Pipeline(render, target, first, last, jobs, progress, cancel).Run(jobs);
}

} // namespace corvane
