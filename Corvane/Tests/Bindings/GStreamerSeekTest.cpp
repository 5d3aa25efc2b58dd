// Where the GStreamer source goes: seeks in time and by frame, while it rests and plays, loops, and frames
// that come when it is their time.
#include <gst/check/gsttestclock.h>

#include "GStreamerFixture.h"

namespace {

using namespace corvane::testing;
using GStreamerSeek = GStreamerFixture;

constexpr int kFlush = GST_SEEK_FLAG_FLUSH, kAccurate = kFlush | GST_SEEK_FLAG_ACCURATE,
              kKeyUnit = kFlush | GST_SEEK_FLAG_KEY_UNIT;
constexpr gint64 kFrameTime = 40 * GST_MSECOND; // of the sample, which has 25 frames a second for ten seconds
constexpr gint64 kLength = 250;

TEST_F(GStreamerSeek, SeeksFindTheFrame) {
    const Pipeline pipeline("synthexsrc location=" + kPALSample);
    pipeline.Set(GST_STATE_PAUSED);
    ASSERT_TRUE(pipeline.Preroll());
    gint64 frames = 0, nanoseconds = 0;
    ASSERT_TRUE(gst_element_query_duration(pipeline.Bin(), GST_FORMAT_DEFAULT, &frames));
    ASSERT_TRUE(gst_element_query_duration(pipeline.Bin(), GST_FORMAT_TIME, &nanoseconds));
    EXPECT_EQ(frames, kLength);
    EXPECT_EQ(nanoseconds, kLength * kFrameTime);
    const struct {
        double rate;
        GstFormat format;
        int flags;
        gint64 start, stop;
        std::uint64_t first, second;
    } kSeeks[] = {
        {1, GST_FORMAT_DEFAULT, kAccurate, 42, -1, 42, 43},
        {1, GST_FORMAT_TIME, kAccurate, 3 * kFrameTime, -1, 3, 4},
        {1, GST_FORMAT_TIME, kAccurate, 3 * kFrameTime - 1, -1, 2, 3},
        {1, GST_FORMAT_TIME, kKeyUnit, 3 * kFrameTime + 1, -1, 3, 4},
        {1, GST_FORMAT_DEFAULT, kKeyUnit, kLength - 1, -1, kLength - 1, kNoFrame},
        {1, GST_FORMAT_TIME, kAccurate, kLength * kFrameTime - 1, -1, kLength - 1, kNoFrame},
        {1, GST_FORMAT_DEFAULT, kAccurate, 7, 8, 7, kNoFrame},
        {-1, GST_FORMAT_DEFAULT, kAccurate, 0, 10, 9, 8},
        {-1, GST_FORMAT_DEFAULT, kAccurate, 4, 5, 4, kNoFrame},
        {-1, GST_FORMAT_TIME, kAccurate, 0, -1, kLength - 1, kLength - 2},
        {-1, GST_FORMAT_TIME, kAccurate, 0, 3 * kFrameTime + 1, 3, 2},
    };
    for (const auto& row : kSeeks) {
        SCOPED_TRACE(::testing::Message() << row.rate << ' ' << row.start << ' ' << row.stop);
        pipeline.Set(GST_STATE_PAUSED);
        ASSERT_TRUE(pipeline.Seek(row.rate, row.format, row.flags, row.start, row.stop));
        EXPECT_EQ(FrameOf(pipeline.Preroll()), row.first);
        pipeline.Set(GST_STATE_PLAYING);
        EXPECT_EQ(FrameOf(pipeline.Next()), row.first);
        EXPECT_EQ(FrameOf(pipeline.Next()), row.second);
    }
}

TEST_F(GStreamerSeek, FlushesWhileItPlaysLoseNothing) {
    for (const std::string& source :
         {"synthexsrc location=" + kPALSample, "uridecodebin uri=file://" + kPALSample}) {
        const Pipeline pipeline(source);
        pipeline.Set(GST_STATE_PLAYING);
        ASSERT_EQ(FrameOf(pipeline.Next()), 0u) << pipeline.Error();
        for (int i = 0; i < 100; ++i) {
            // Up and down, and as often to the end, where the source has come to rest.
            const gint64 target = i % 5 == 4 ? kLength - 1 : i * 97 % kLength;
            ASSERT_TRUE(pipeline.Seek(1, GST_FORMAT_TIME, kAccurate, target * kFrameTime)) << i;
            ASSERT_EQ(FrameOf(pipeline.Next()), static_cast<std::uint64_t>(target)) << i;
            ASSERT_EQ(FrameOf(pipeline.Next()),
                      target == kLength - 1 ? kNoFrame : static_cast<std::uint64_t>(target) + 1)
                << i;
        }
    }
}

TEST_F(GStreamerSeek, SegmentsRepeatWithoutAGap) {
    const Pipeline pipeline("synthexsrc location=" + kPALSample);
    pipeline.Set(GST_STATE_PAUSED);
    ASSERT_TRUE(pipeline.Preroll());
    ASSERT_TRUE(pipeline.Seek(1, GST_FORMAT_TIME, kFlush | GST_SEEK_FLAG_SEGMENT, 247 * kFrameTime,
                              kLength * kFrameTime));
    pipeline.Set(GST_STATE_PLAYING);
    GstClockTime running = 0;
    for (int loop = 0; loop < 4; ++loop) {
        for (const std::uint64_t frame : {247u, 248u, 249u}) {
            const GstSampleOwner sample = pipeline.Next();
            ASSERT_EQ(FrameOf(sample), frame) << loop;
            EXPECT_EQ(gst_segment_to_running_time(gst_sample_get_segment(sample.get()), GST_FORMAT_TIME,
                                                  GST_BUFFER_PTS(gst_sample_get_buffer(sample.get()))),
                      running);
            running += kFrameTime;
        }
        if (loop == 3) break;
        ASSERT_TRUE(pipeline.Message(GST_MESSAGE_SEGMENT_DONE)) << loop;
        // The last one is no segment, and ends the stream.
        const int flags = loop < 2 ? GST_SEEK_FLAG_SEGMENT : GST_SEEK_FLAG_NONE;
        ASSERT_TRUE(pipeline.Seek(1, GST_FORMAT_TIME, flags, 247 * kFrameTime, kLength * kFrameTime));
    }
    EXPECT_FALSE(pipeline.Next());
    EXPECT_TRUE(pipeline.Message(GST_MESSAGE_EOS));
}

TEST_F(GStreamerSeek, LiveFramesComeWhenItIsTheirTime) {
    const Pipeline pipeline("synthexsrc name=source is-live=true location=" + kPALSample);
    const GstOwner<GstClock> clock(gst_test_clock_new());
    auto* const testClock = GST_TEST_CLOCK(clock.get());
    gst_pipeline_use_clock(GST_PIPELINE(pipeline.Bin()), clock.get());
    EXPECT_EQ(pipeline.Set(GST_STATE_PAUSED), GST_STATE_CHANGE_NO_PREROLL);
    pipeline.Set(GST_STATE_PLAYING);
    for (std::uint64_t frame = 0; frame < 3; ++frame) {
        GstClockID pending = nullptr;
        gst_test_clock_wait_for_next_pending_id(testClock, &pending);
        EXPECT_EQ(gst_clock_id_get_time(pending), frame * kFrameTime);
        gst_test_clock_set_time(testClock, gst_clock_id_get_time(pending));
        gst_test_clock_process_next_clock_id(testClock);
        gst_clock_id_unref(pending);
        EXPECT_EQ(FrameOf(pipeline.Next()), frame);
    }
    GstQuery* const seeking = gst_query_new_seeking(GST_FORMAT_TIME);
    gboolean seekable = TRUE;
    ASSERT_TRUE(gst_element_query(pipeline.Bin(), seeking));
    gst_query_parse_seeking(seeking, nullptr, &seekable, nullptr, nullptr);
    gst_query_unref(seeking);
    EXPECT_FALSE(seekable);
    // The sink, which waits for no clock, would say that there is none.
    const GstOwner<GstElement> source(gst_bin_get_by_name(GST_BIN(pipeline.Bin()), "source"));
    GstQuery* const latency = gst_query_new_latency();
    gboolean live = FALSE;
    GstClockTime least = 0;
    ASSERT_TRUE(gst_element_query(source.get(), latency));
    gst_query_parse_latency(latency, &live, &least, nullptr);
    gst_query_unref(latency);
    EXPECT_TRUE(live);
    EXPECT_EQ(least, static_cast<GstClockTime>(kFrameTime));
}

} // namespace
