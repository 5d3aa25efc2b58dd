// What becomes of the GStreamer plug-in when files are bad and when states change: errors with the sentence,
// and nothing left behind.
#include <gmock/gmock.h>

#include "GStreamerFixture.h"
#include "Growth.h"

namespace {

using ::testing::HasSubstr;
using namespace corvane::testing;
using GStreamerFailure = GStreamerFixture;

/// The sample's settings but for one: of a key that is there twice, the later one counts.
std::string SettingsWith(const std::string& setting) {
    std::string text = ReadFile(kPALSample);
    return text.insert(text.rfind('}'), ", " + setting);
}

TEST_F(GStreamerFailure, BadClipsAreErrorsWithTheSentence) {
    const std::string broken = mFolder.Write("broken.synthex", R"({ "mPixelFormat": )");
    const std::string large =
        mFolder.Write("large.synthex", R"({ "mPixelFormat": )" + std::string(1 << 20, ' '));
    const std::string empty = mFolder.Write("empty.synthex", "");
    const auto with = [&](const std::string& name, const std::string& setting) {
        return "synthexsrc location=" + mFolder.Write(name, SettingsWith(setting)).string();
    };
    const struct {
        std::string source, part;
    } kRows[] = {
        {"synthexsrc", "There is no clip to show; set the property location."},
        {"synthexsrc location=/none.synthex", "/none.synthex: there is no such file."},
        {"synthexsrc bundle=/none location=" + kPALSample, "/none: there is no bundle here"},
        {"synthexsrc location=" + broken, broken + ": "},
        {"synthexsrc settings={}", "settings: "},
        {with("width", R"("mFrameWidth": 0)"), "width: "},
        {with("height", R"("mFrameHeight": 4294967295)"), "height: "},
        {with("rate", R"("mVideoFrameRate": { "ticksperframe": 0 })"), "rate: "},
        {with("short", R"("mVideoDuration": { "ticks": 1 })"), "short: "},
        {with("format", R"("mPixelFormat": 7)"), "format: "},
        {"uridecodebin uri=file://" + broken, broken + ": "},
        {"uridecodebin uri=file://" + large, "Settings have at most 1048576 bytes."},
        {"filesrc location=" + empty + " ! synthexdec", empty + ": "},
        {"filesrc location=" + kSamples + "README.md ! synthexdec", "README.md: "},
    };
    for (const auto& row : kRows) {
        const Pipeline pipeline(row.source);
        pipeline.Set(GST_STATE_PLAYING);
        EXPECT_THAT(pipeline.Error(), HasSubstr(row.part)) << row.source;
    }
}

TEST_F(GStreamerFailure, StateChangesLeaveNothingBehind) {
    const std::string file = "location=" + kPALSample;
    const Pipeline pipeline("synthexsrc " + file);
    ExpectNoGrowth(1000, [&](int i) {
        pipeline.Set(GST_STATE_PAUSED);
        ASSERT_TRUE(pipeline.Preroll()) << i << ' ' << pipeline.Error();
        pipeline.Set(i % 2 == 0 ? GST_STATE_READY : GST_STATE_NULL);
        // Links of a decoder's pads are made once for each pipeline.
        if (i % 10 != 0) return;
        const Pipeline decoded("filesrc " + file + " ! synthexdec");
        decoded.Set(GST_STATE_PAUSED);
        ASSERT_TRUE(decoded.Preroll()) << i << ' ' << decoded.Error();
    });
}

TEST_F(GStreamerFailure, BadSettingsLeaveNothingBehind) {
    const std::string texts[] = {"{]", "{}", SettingsWith(R"("mFrameWidth": 0)"),
                                 SettingsWith(R"("mVideoFrameRate": { "ticksperframe": 0 })")};
    const GstOwner<GstElement> source(gst_element_factory_make("synthexsrc", nullptr));
    const GstOwner<GstElement> decoder(gst_element_factory_make("synthexdec", nullptr));
    gst_object_ref_sink(source.get());
    gst_object_ref_sink(decoder.get());
    const GstOwner<GstPad> sink(gst_element_get_static_pad(decoder.get(), "sink"));
    // Loading the plug-in anew takes most of the time.
    const corvane::handles::Importer loaded(corvane_importer_load(nullptr));
    ExpectNoGrowth(10000, [&](int i) {
        const std::string& text = texts[i % 4];
        g_object_set(source.get(), "settings", text.c_str(), nullptr);
        ASSERT_EQ(gst_element_set_state(source.get(), GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE) << i;
        gst_element_set_state(source.get(), GST_STATE_NULL);

        gst_element_set_state(decoder.get(), GST_STATE_PAUSED);
        gst_pad_send_event(sink.get(), gst_event_new_stream_start("test"));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_BYTES);
        gst_pad_send_event(sink.get(), gst_event_new_segment(&segment));
        ASSERT_EQ(gst_pad_chain(sink.get(), gst_buffer_new_memdup(text.data(), text.size())), GST_FLOW_OK);
        ASSERT_FALSE(gst_pad_send_event(sink.get(), gst_event_new_eos())) << i;
        gst_element_set_state(decoder.get(), GST_STATE_NULL);
    });
}

} // namespace
