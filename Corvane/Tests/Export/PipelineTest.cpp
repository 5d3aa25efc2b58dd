// Faults sought: frames out of order, two consumers at once, an exception lost or thrown while threads still
// run, a cancel that waits for the end.
#include "Export/Pipeline.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using corvane::FrameView;
using corvane::Packet;

struct IndexPacket : Packet {
    std::int64_t index = -1;
    std::vector<int> work;
};

class RecordingTarget : public corvane::Target {
  public:
    std::unique_ptr<Packet> NewPacket() override {
        ++packets;
        return std::make_unique<IndexPacket>();
    }
    void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) override {
        auto& mine = static_cast<IndexPacket&>(packet);
        if (index == failInPrepare) throw corvane::Failure("prepare");
        // Uneven work, so that later frames are done before earlier ones.
        mine.work.assign(index % 3 == 0 ? 300000 : 10, 1);
        mine.index = static_cast<std::int64_t>(frame.width);
        ++prepared;
    }
    void Consume(Packet& packet) override {
        EXPECT_EQ(inside.fetch_add(1), 0) << "two consumers at once";
        const std::int64_t index = static_cast<IndexPacket&>(packet).index;
        while (prepared < failAfter) std::this_thread::yield();
        if (index == failInConsume) throw corvane::Failure("consume");
        order.push_back(index);
        --inside;
    }
    void Finish() override {}
    std::uint64_t BytesWritten() const override { return 0; }

    std::int64_t failInPrepare = -1;
    std::int64_t failInConsume = -1;
    int failAfter = 0; ///< frames that are prepared before the first is consumed
    std::atomic<int> inside{0};
    std::atomic<int> packets{0}, prepared{0};
    std::vector<std::int64_t> order;
};

corvane::RenderedFrame Render(std::int64_t index) {
    if (index == 77) throw corvane::Failure("render");
    corvane::RenderedFrame frame;
    frame.view.width = static_cast<std::uint32_t>(index);
    return frame;
}

TEST(Pipeline, FramesArriveInOrderWithAnyNumberOfThreads) {
    const std::atomic<bool> cancel{false};
    for (const unsigned jobs : {1u, 2u, 5u}) {
        RecordingTarget target;
        std::vector<std::int64_t> told;
        EXPECT_EQ(corvane::RunPipeline(
                      Render, target, 10, 69, jobs,
                      [&](std::int64_t done, std::int64_t total) { told.push_back(done * 1000 + total); },
                      cancel),
                  60);
        ASSERT_EQ(target.order.size(), 60u);
        for (std::size_t i = 0; i < 60; ++i) {
            EXPECT_EQ(target.order[i], static_cast<std::int64_t>(10 + i));
            EXPECT_EQ(told[i], static_cast<std::int64_t>((i + 1) * 1000 + 60));
        }
        EXPECT_LE(target.packets, static_cast<int>(2 * jobs)) << "packets are to be used again";
    }
}

TEST(Pipeline, TheFirstExceptionOfAnyStepEndsIt) {
    const std::atomic<bool> cancel{false};
    for (const std::string step : {"render", "prepare", "consume"})
        for (const unsigned jobs : {1u, 3u}) {
            RecordingTarget target;
            if (step == "prepare") target.failInPrepare = 20;
            if (step == "consume") target.failInConsume = 20;
            try {
                corvane::RunPipeline(Render, target, 0, 99, jobs, {}, cancel);
                ADD_FAILURE() << step << " did not throw";
            } catch (const corvane::Failure& failure) {
                EXPECT_EQ(failure.what(), step);
            }
            EXPECT_LE(target.order.size(), step == "render" ? 77u : 20u);
        }
    // All slots are full, and threads wait for one: they must see the end.
    RecordingTarget target;
    target.failInConsume = 0;
    target.failAfter = 6;
    EXPECT_THROW(corvane::RunPipeline(Render, target, 0, 99, 3, {}, cancel), corvane::Failure);
}

} // namespace
