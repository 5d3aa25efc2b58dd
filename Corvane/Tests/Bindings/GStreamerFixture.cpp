#include "GStreamerFixture.h"

#include <unistd.h>

// Of the sanitizer: what libraries keep from being loaded, which can be told by a whole trace only.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    // And what encodebin forgets.
    return "leak:_dl_init\nleak:libgstencoding\n";
}

namespace corvane::testing {

Pipeline::Pipeline(const std::string& elements, const std::string& sink)
    : mBin(gst_parse_launch((elements + " ! " + sink).c_str(), nullptr)),
      mSink(gst_bin_get_by_name(GST_BIN(mBin.get()), "sink")) {}

Pipeline::~Pipeline() {
    Set(GST_STATE_NULL);
}

GstSampleOwner Pipeline::Preroll() const {
    return GstSampleOwner(gst_app_sink_try_pull_preroll(GST_APP_SINK(mSink.get()), 10 * GST_SECOND));
}

GstSampleOwner Pipeline::Next() const {
    return GstSampleOwner(gst_app_sink_try_pull_sample(GST_APP_SINK(mSink.get()), 10 * GST_SECOND));
}

bool Pipeline::Seek(double rate, GstFormat format, int flags, gint64 start, gint64 stop) const {
    return gst_element_seek(mBin.get(), rate, format, static_cast<GstSeekFlags>(flags), GST_SEEK_TYPE_SET,
                            start, GST_SEEK_TYPE_SET, stop);
}

GstMessageOwner Pipeline::Message(int kinds) const {
    const GstOwner<GstBus> bus(gst_element_get_bus(mBin.get()));
    return GstMessageOwner(
        gst_bus_timed_pop_filtered(bus.get(), 10 * GST_SECOND, static_cast<GstMessageType>(kinds)));
}

std::string Pipeline::Error() const {
    const GstMessageOwner message = Message(GST_MESSAGE_ERROR);
    if (!message) return "no error";
    GError* error = nullptr;
    gst_message_parse_error(message.get(), &error, nullptr);
    std::string text = error->message;
    g_error_free(error);
    return text;
}

std::uint64_t FrameOf(const GstSampleOwner& sample) {
    return sample ? GST_BUFFER_OFFSET(gst_sample_get_buffer(sample.get())) : kNoFrame;
}

std::string BytesOf(const GstSampleOwner& sample) {
    if (!sample) return "";
    GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
    std::string bytes(gst_buffer_get_size(buffer), '\0');
    gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
    return bytes;
}

std::string Rendered(const std::string& path, int count, bool native) {
    const handles::Importer importer(corvane_importer_load(nullptr));
    const handles::Clip clip(corvane_clip_open_file(importer.get(), path.c_str()));
    const TestFolder folder;
    const std::string output = folder / "frames.raw";
    auto options = handles::Empty<corvane_render_options>();
    options.output = output.c_str();
    options.native = native;
    options.has_frames = 1;
    options.last_frame = count - 1;
    EXPECT_EQ(corvane_clip_render(clip.get(), &options, nullptr), 0) << corvane_last_error();
    // Whole: characters one by one take seconds in large frames.
    std::string bytes(std::filesystem::file_size(output), '\0');
    std::ifstream(output, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

void GStreamerFixture::SetUpTestSuite() {
    ::setenv("GST_PLUGIN_PATH", SYNTHEX_BUILD_DIR "/lib/gstreamer-1.0", 1);
    const std::string registry = ::testing::TempDir() + "/gst-registry-" + std::to_string(::getpid());
    ::setenv("GST_REGISTRY", registry.c_str(), 1);
    // A helper that looks at plug-ins would not have the sanitizers.
    ::setenv("GST_REGISTRY_FORK", "no", 1);
    gst_init(nullptr, nullptr);
}

void GStreamerFixture::TearDownTestSuite() {
    ::unlink(::getenv("GST_REGISTRY"));
}

} // namespace corvane::testing
