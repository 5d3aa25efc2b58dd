// The GStreamer plug-in in real pipelines: what it says of clips, its pictures, seeks in time and by frame,
// and what becomes of it when states change a thousand times or files are bad.
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gst/app/gstappsink.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <corvane/handles.h>

#include "Tests/Process.h"

// Of the sanitizer: what libraries keep from being loaded, which can be told by a whole trace only.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:_dl_init\n";
}

namespace {

using ::testing::HasSubstr;
using Objects = corvane::handles::Releaser<gst_object_unref>;
using Sample = std::unique_ptr<GstSample, corvane::handles::Releaser<gst_sample_unref>>;
using Event = std::unique_ptr<GstMessage, corvane::handles::Releaser<gst_message_unref>>;

const std::string kSamples = SYNTHEX_SOURCE_DIR "/Samples/";

class Pipeline {
  public:
    explicit Pipeline(const std::string& source)
        : mBin(gst_parse_launch((source + " ! appsink name=sink sync=false").c_str(), nullptr)),
          mSink(gst_bin_get_by_name(GST_BIN(mBin.get()), "sink")) {}
    ~Pipeline() { Set(GST_STATE_NULL); }

    GstElement* Bin() const { return mBin.get(); }
    void Set(GstState state) const { gst_element_set_state(mBin.get(), state); }
    /// The frame at which a pipeline rests, or the next one of a pipeline that plays; none at the end.
    Sample Preroll() const { return Sample(gst_app_sink_pull_preroll(GST_APP_SINK(mSink.get()))); }
    Sample Next() const {
        return Sample(gst_app_sink_try_pull_sample(GST_APP_SINK(mSink.get()), 10 * GST_SECOND));
    }
    /// The sentence of the error that ends it.
    std::string Error() const {
        const std::unique_ptr<GstBus, Objects> bus(gst_element_get_bus(mBin.get()));
        const Event event(gst_bus_timed_pop_filtered(bus.get(), 10 * GST_SECOND, GST_MESSAGE_ERROR));
        if (!event) return "no error";
        GError* error = nullptr;
        gst_message_parse_error(event.get(), &error, nullptr);
        std::string text = error->message;
        g_error_free(error);
        return text;
    }

  private:
    std::unique_ptr<GstElement, Objects> mBin, mSink;
};

std::uint64_t FrameOf(const Sample& sample) {
    return sample ? GST_BUFFER_OFFSET(gst_sample_get_buffer(sample.get())) : ~std::uint64_t{0};
}

class GStreamer : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("GST_PLUGIN_PATH", SYNTHEX_BUILD_DIR "/lib/gstreamer-1.0", 1);
        ::setenv("GST_REGISTRY",
                 (::testing::TempDir() + "/gst-registry-" + std::to_string(::getpid())).c_str(), 1);
        // A helper that looks at plug-ins would not have the sanitizers.
        ::setenv("GST_REGISTRY_FORK", "no", 1);
        gst_init(nullptr, nullptr);
    }
    static void TearDownTestSuite() { ::unlink(::getenv("GST_REGISTRY")); }
};

/// The first frames of a sample as they are rendered into a raw file, `native` or converted as exports are.
std::vector<char> Rendered(const std::string& sample, int count, bool native) {
    const corvane::handles::Importer importer(corvane_importer_load(nullptr));
    const corvane::handles::Clip clip(corvane_clip_open_file(importer.get(), sample.c_str()));
    const std::string output = ::testing::TempDir() + "/gstreamer-" + std::to_string(::getpid()) + ".raw";
    auto options = corvane::handles::Empty<corvane_render_options>();
    options.output = output.c_str();
    options.native = native;
    options.has_frames = 1;
    options.last_frame = count - 1;
    EXPECT_EQ(corvane_clip_render(clip.get(), &options, nullptr), 0) << corvane_last_error();
    std::ifstream file(output, std::ios::binary);
    std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    ::unlink(output.c_str());
    return bytes;
}

TEST_F(GStreamer, CapsSayWhatClipsAreAndFramesAreThoseThatAreRendered) {
    const struct {
        const char* sample;
        std::vector<const char*> caps;
        bool native; // their own memory, else converted as exports are
    } kRows[] = {
        {"pal-upper-first",
         {"format=(string)BGRA", "width=(int)720, height=(int)576", "interlace-mode=(string)interleaved",
          "field-order=(string)top-field-first", "pixel-aspect-ratio=(fraction)12/11",
          "framerate=(fraction)25/1"},
         true},
        {"gradient-23976", {"interlace-mode=(string)progressive", "framerate=(fraction)24000/1001"}, true},
        {"uhd-5994",
         {"format=(string)VUYA", "colorimetry=(string)bt709", "framerate=(fraction)60000/1001"},
         true},
        {"ten-bit-1080i", {"format=(string)RGBA64_LE", "interlace-mode=(string)interleaved"}, false},
        {"float-linear", {"format=(string)RGBA64_LE", "framerate=(fraction)50/1"}, false},
    };
    constexpr int kFrames = 2;
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.sample);
        const std::string path = kSamples + row.sample + ".synthex";
        const std::vector<char> expected = Rendered(path, kFrames, row.native);
        const Pipeline pipeline("synthexsrc location=" + path);
        pipeline.Set(GST_STATE_PLAYING);
        for (std::size_t i = 0; i < kFrames; ++i) {
            const Sample sample = pipeline.Next();
            ASSERT_TRUE(sample) << pipeline.Error();
            gchar* const text = gst_caps_to_string(gst_sample_get_caps(sample.get()));
            for (const char* const part : row.caps) EXPECT_THAT(text, HasSubstr(part));
            g_free(text);
            GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
            const std::size_t size = expected.size() / kFrames;
            EXPECT_EQ(GST_BUFFER_OFFSET(buffer), i);
            ASSERT_EQ(gst_buffer_get_size(buffer), size);
            EXPECT_EQ(gst_buffer_memcmp(buffer, 0, expected.data() + i * size, size), 0) << i;
        }
    }
}

TEST_F(GStreamer, SeeksFindTheFrame) {
    // Ten seconds at 25 frames a second.
    const Pipeline pipeline("synthexsrc location=" + kSamples + "pal-upper-first.synthex");
    pipeline.Set(GST_STATE_PAUSED);
    ASSERT_TRUE(pipeline.Preroll());
    gint64 frames = 0, nanoseconds = 0;
    ASSERT_TRUE(gst_element_query_duration(pipeline.Bin(), GST_FORMAT_DEFAULT, &frames));
    ASSERT_TRUE(gst_element_query_duration(pipeline.Bin(), GST_FORMAT_TIME, &nanoseconds));
    EXPECT_EQ(nanoseconds, frames * 40 * GST_MSECOND);
    const struct {
        double rate;
        GstFormat format;
        gint64 start, stop;
        std::uint64_t first, second;
    } kRows[] = {
        {1, GST_FORMAT_DEFAULT, 42, -1, 42, 43},
        {1, GST_FORMAT_TIME, 3 * 40 * GST_MSECOND, -1, 3, 4},
        {1, GST_FORMAT_TIME, 3 * 40 * GST_MSECOND - 1, -1, 2, 3},
        {1, GST_FORMAT_DEFAULT, frames - 1, -1, static_cast<std::uint64_t>(frames - 1), ~std::uint64_t{0}},
        {1, GST_FORMAT_DEFAULT, 7, 8, 7, ~std::uint64_t{0}},
        {-1, GST_FORMAT_DEFAULT, 0, 10, 9, 8},
        {-1, GST_FORMAT_DEFAULT, 4, 5, 4, ~std::uint64_t{0}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(::testing::Message() << row.rate << ' ' << row.start << ' ' << row.stop);
        pipeline.Set(GST_STATE_PAUSED);
        ASSERT_TRUE(gst_element_seek(pipeline.Bin(), row.rate, row.format,
                                     static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                     GST_SEEK_TYPE_SET, row.start,
                                     row.stop < 0 ? GST_SEEK_TYPE_NONE : GST_SEEK_TYPE_SET, row.stop));
        EXPECT_EQ(FrameOf(pipeline.Preroll()), row.first);
        pipeline.Set(GST_STATE_PLAYING);
        EXPECT_EQ(FrameOf(pipeline.Next()), row.first);
        EXPECT_EQ(FrameOf(pipeline.Next()), row.second);
    }
}

TEST_F(GStreamer, FilesOpenLikeAnyVideo) {
    const Pipeline pipeline("uridecodebin uri=file://" + kSamples + "pal-upper-first.synthex");
    pipeline.Set(GST_STATE_PLAYING);
    EXPECT_EQ(FrameOf(pipeline.Next()), 0u) << pipeline.Error();
    EXPECT_EQ(FrameOf(pipeline.Next()), 1u);
}

TEST_F(GStreamer, BadClipsAreErrorsWithTheSentence) {
    const std::string broken = ::testing::TempDir() + "/broken.synthex";
    std::ofstream(broken) << "{ \"mPixelFormat\": ";
    const struct {
        std::string source;
        const char* part;
    } kRows[] = {
        {"synthexsrc", "There is no clip to show; set the property location."},
        {"synthexsrc location=/none.synthex", "/none.synthex: there is no such file."},
        {"synthexsrc bundle=/none location=" + kSamples + "pal-upper-first.synthex",
         "/none: there is no bundle here"},
        {"synthexsrc settings={}", "settings: "},
        {"uridecodebin uri=file://" + broken, "settings: "},
        {"filesrc location=" + kSamples + "README.md ! synthexdec", "settings: "},
    };
    for (const auto& row : kRows) {
        const Pipeline pipeline(row.source);
        pipeline.Set(GST_STATE_PLAYING);
        EXPECT_THAT(pipeline.Error(), HasSubstr(row.part)) << row.source;
    }
    ::unlink(broken.c_str());
}

TEST_F(GStreamer, StateChangesLeaveNothingBehind) {
    const auto resident = [] {
        std::ifstream file("/proc/self/statm");
        long pages = 0, inMemory = 0;
        file >> pages >> inMemory;
        return inMemory * ::sysconf(_SC_PAGESIZE);
    };
    const std::string file = "location=" + kSamples + "pal-upper-first.synthex";
    const Pipeline pipeline("synthexsrc " + file);
    long before = 0;
    const int times = IsSanitized() ? 100 : 1000;
    for (int i = 0; i < times; ++i) {
        pipeline.Set(GST_STATE_PAUSED);
        ASSERT_TRUE(pipeline.Preroll()) << i << ' ' << pipeline.Error();
        pipeline.Set(i % 2 == 0 ? GST_STATE_READY : GST_STATE_NULL);
        // Links of a decoder's pads are made once for each pipeline.
        if (i % 10 == 0) {
            const Pipeline decoded("filesrc " + file + " ! synthexdec");
            decoded.Set(GST_STATE_PAUSED);
            ASSERT_TRUE(decoded.Preroll()) << i << ' ' << decoded.Error();
        }
        if (i == times / 10) before = resident();
    }
    constexpr long kMost = 8 << 20;
    // A sanitizer keeps what was given back.
    EXPECT_TRUE(IsSanitized() || resident() - before < kMost) << resident() - before;
}

} // namespace
