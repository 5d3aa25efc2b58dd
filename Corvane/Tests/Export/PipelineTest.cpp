// Faults sought: frames out of order, two consumers at once, an exception that is lost, thrown while threads
// still run, or not told to threads that wait.
#include "Export/Pipeline.h"

#include <gtest/gtest.h>

#include "Services/Frames/FrameBuffers.h"
#include "Tests/Export/TestClips.h"

namespace {

using corvane::Packet;

constexpr std::int64_t kBadFrame = 20;

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
    void Prepare(const corvane::FrameView& frame, std::int64_t index, Packet& packet) override {
        FailAt(index, "prepare");
        auto& mine = static_cast<IndexPacket&>(packet);
        // Uneven work, so that later frames are done before earlier ones.
        mine.work.assign(index % 3 == 0 ? 300000 : 10, 1);
        mine.index = frame.width;
        ++prepared;
        prepared.notify_all();
    }
    void Consume(Packet& packet) override {
        EXPECT_EQ(inside.fetch_add(1), 0) << "two consumers at once";
        const std::int64_t index = static_cast<IndexPacket&>(packet).index;
        // Every slot is full by the time it fails or is cancelled: the other threads wait.
        if ((failing == "consume" || failing == "cancel") && index == kBadFrame)
            for (int count = prepared; count < kBadFrame + slots; count = prepared) prepared.wait(count);
        FailAt(index, "consume");
        order.push_back(index);
        --inside;
    }
    std::string Finish() override { return {}; }
    std::uint64_t BytesWritten() const override { return 0; }
    void FailAt(std::int64_t index, const std::string& step) const {
        if (index == kBadFrame && step == failing) throw corvane::Failure(step);
    }

    std::string failing;
    int slots = 0;
    std::atomic<int> inside{0}, packets{0}, prepared{0};
    std::vector<std::int64_t> order;
};

std::int64_t Send(RecordingTarget& target, std::int64_t first, std::int64_t last, unsigned jobs,
                  const corvane::ExportProgress& progress = {}, const std::atomic<bool>& cancel = false) {
    target.slots = jobs == 1 ? 1 : static_cast<int>(2 * jobs);
    const corvane::RenderFrame render = [&](std::int64_t index) {
        target.FailAt(index, "render");
        corvane::RenderedFrame frame;
        frame.view.width = static_cast<std::uint32_t>(index);
        return frame;
    };
    return corvane::RunPipeline(render, target, first, last, jobs, progress, cancel);
}

TEST(Pipeline, FramesArriveInOrderWithAnyNumberOfThreads) {
    for (const unsigned jobs : {1u, 2u, 5u}) {
        RecordingTarget target;
        std::vector<std::int64_t> told, wanted, wantedTold;
        for (std::int64_t i = 0; i < 60; ++i) wanted.push_back(10 + i), wantedTold.push_back(1060 + 1000 * i);
        EXPECT_EQ(
            Send(target, 10, 69, jobs, [&](auto done, auto total) { told.push_back(done * 1000 + total); }),
            60);
        EXPECT_EQ(target.order, wanted);
        EXPECT_EQ(told, wantedTold);
        EXPECT_LE(target.packets, target.slots) << "packets are to be used again";
    }
}

// Catches a frame whose memory is another's by the time it is written.
TEST(Pipeline, FramesStayUntilTheTargetHasReadThem) {
    struct : RecordingTarget {
        bool KeepsFrames() const override { return true; }
        void Consume(Packet&) override { EXPECT_EQ(corvane::GetFrameStatistics().liveFrames, 1u); }
    } target;
    const auto clip = corvane::testing::MakeClip({.width = 8, .height = 8});
    const auto render = [&](std::int64_t index) { return corvane::RenderedFrame{{}, clip->GetFrame(index)}; };
    EXPECT_EQ(corvane::RunPipeline(render, target, 0, 4, 1, {}, false), 5);
}

TEST(Pipeline, TheFirstExceptionOfAnyStepEndsIt) {
    for (const char* const step : {"render", "prepare", "consume"})
        for (const unsigned jobs : {1u, 3u}) {
            RecordingTarget target;
            target.failing = step;
            try {
                Send(target, 0, 99, jobs);
                ADD_FAILURE() << step << " did not throw";
            } catch (const corvane::Failure& failure) {
                EXPECT_STREQ(failure.what(), step);
            }
            EXPECT_LE(target.order.size(), std::size_t{kBadFrame});
        }
}

TEST(Pipeline, ACancelComesBeforeTheNextFrame) {
    RecordingTarget target;
    target.failing = "cancel";
    std::atomic<bool> cancel{false};
    const auto cancelThere = [&](auto done, auto) { cancel = done > kBadFrame; };
    EXPECT_EQ(Send(target, 0, 99, 3, cancelThere, cancel), kBadFrame + 1);
}

} // namespace
