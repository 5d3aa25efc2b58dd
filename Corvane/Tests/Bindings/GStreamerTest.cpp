// The GStreamer plug-in in real pipelines: what it says of clips, its pictures in all formats, and files that
// open like any video.
#include <cstring>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gst/video/video.h>

#include "GStreamerFixture.h"

namespace {

using ::testing::HasSubstr;
using namespace corvane::testing;
using GStreamer = GStreamerFixture;

std::string CapsOf(const GstSampleOwner& sample) {
    gchar* const text = gst_caps_to_string(gst_sample_get_caps(sample.get()));
    std::string caps = text;
    g_free(text);
    return caps;
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
        {"defaults", {"field-order=(string)bottom-field-first"}, true},
        {"ten-bit-1080i", {"format=(string)RGBA64_LE", "interlace-mode=(string)interleaved"}, false},
        {"float-linear", {"format=(string)RGBA64_LE", "framerate=(fraction)50/1"}, false},
    };
    constexpr int kFrames = 2;
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.sample);
        const std::string path = kSamples + row.sample + ".synthex";
        const std::string expected = Rendered(path, kFrames, row.native);
        const Pipeline pipeline("synthexsrc location=" + path);
        pipeline.Set(GST_STATE_PLAYING);
        for (std::size_t i = 0; i < kFrames; ++i) {
            const GstSampleOwner sample = pipeline.Next();
            ASSERT_TRUE(sample) << pipeline.Error();
            for (const char* const part : row.caps) EXPECT_THAT(CapsOf(sample), HasSubstr(part));
            EXPECT_EQ(FrameOf(sample), i);
            const std::size_t size = expected.size() / kFrames;
            EXPECT_TRUE(BytesOf(sample) == expected.substr(i * size, size)) << i;
        }
    }
}

/// Expects R'G'B' of 16 bits with alpha on the last rows of the two fields.
void ExpectColors(const std::string& bytes, std::size_t width, bool hasAlpha, int tolerance) {
    const int upper[] = {0xCCCC, 0x6666, 0x3333, hasAlpha ? 0x8080 : 0xFFFF};
    const int lower[] = {0x3333, 0x9999, 0xCCCC, 0xFFFF};
    const std::size_t row = width * 8;
    for (const auto& [color, fromEnd] : {std::pair{upper, std::size_t{2}}, std::pair{lower, std::size_t{1}}})
        for (std::size_t i = 0; i < 4; ++i) {
            std::uint16_t part = 0;
            std::memcpy(&part, &bytes.at(bytes.size() - fromEnd * row + 2 * i), sizeof part);
            EXPECT_NEAR(part, color[i], tolerance) << fromEnd << ' ' << i;
        }
}

TEST_F(GStreamer, AllFormatsAreShownAsTheyAreOrWithoutLoss) {
    // The caps of those that are shown in their own form; all others are R'G'B' of 16 bits.
    std::map<std::string, std::vector<const char*>> own{{"BGRA_4444_8u", {"BGRA", "=(string)1:1:16:4"}},
                                                        {"BGRX_4444_8u", {"BGRx", "=(string)1:1:16:4"}},
                                                        {"ARGB_4444_8u", {"ARGB", "=(string)1:1:16:4"}},
                                                        {"XRGB_4444_8u", {"xRGB", "=(string)1:1:16:4"}},
                                                        {"VUYA_4444_8u_709", {"VUYA", "=(string)2:3:16:4"}},
                                                        {"VUYX_4444_8u_709", {"VUYA", "=(string)2:3:16:4"}}};
    for (const char* const name :
         {"VUYA_4444_8u", "VUYX_4444_8u", "YUYV_422_8u_601", "UYVY_422_8u_601", "NTSCDV25", "PALDV25",
          "NTSCDV50", "PALDV50", "YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601",
          "YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601"})
        own[name] = {"VUYA", "bt601"};
    const corvane::handles::Importer importer(corvane_importer_load(nullptr));
    const std::string path = mFolder / "clip.synthex";
    ASSERT_EQ(corvane_pixel_format_count(), 48u);
    for (std::size_t i = 0; i < 48; ++i) {
        auto format = corvane::handles::Empty<corvane_pixel_format>();
        corvane_pixel_format_at(i, &format);
        const std::string name = format.name;
        SCOPED_TRACE(name);
        // Rows of such a width have gaps in memory.
        const corvane_setting settings[] = {{"size", "47x34"}, {"format", format.name}, {"fields", "upper"},
                                            {"frames", "1"},   {"upper", "#cc663380"},  {"lower", "#3399cc"}};
        const corvane::handles::Clip clip(corvane_clip_create(importer.get(), "test", settings, 6));
        ASSERT_EQ(corvane_clip_save(clip.get(), path.c_str()), 0) << corvane_last_error();
        const Pipeline pipeline("synthexsrc location=" + path);
        pipeline.Set(GST_STATE_PAUSED);
        const GstSampleOwner sample = pipeline.Preroll();
        const std::string caps = CapsOf(sample), bytes = BytesOf(sample);
        const auto found = own.find(name);
        if (found == own.end()) {
            EXPECT_THAT(caps, HasSubstr("format=(string)RGBA64_LE,"));
            // Of premultiplied colors in bytes half are gone.
            ExpectColors(bytes, 47, name.find('X') == std::string::npos,
                         name.find("4444_8u") == std::string::npos ? 2 : 900);
            continue;
        }
        for (const char* const part : found->second) EXPECT_THAT(caps, HasSubstr(part));
        own.erase(found);
        std::string expected = Rendered(path, 1, true);
        if (name.starts_with("VUYX"))
            for (std::size_t alpha = 3; alpha < expected.size(); alpha += 4) expected[alpha] = '\xFF';
        EXPECT_TRUE(bytes == expected);
    }
    EXPECT_TRUE(own.empty()) << own.begin()->first;
}

TEST_F(GStreamer, BuffersAreTheFramesOwnMemory) {
    std::set<const void*> shown;
    {
        const Pipeline pipeline("synthexsrc location=" + kPALSample);
        pipeline.Set(GST_STATE_PLAYING);
        for (int i = 0; i < 3; ++i) {
            const GstSampleOwner sample = pipeline.Next();
            GstMapInfo map;
            GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
            ASSERT_TRUE(gst_buffer_map(buffer, &map, GST_MAP_READ));
            shown.insert(map.data);
            gst_buffer_unmap(buffer, &map);
        }
    }
    // They went back to the pool, which hands out the youngest first.
    const corvane::handles::Importer importer(corvane_importer_load(nullptr));
    const corvane::handles::Clip clip(corvane_clip_open_file(importer.get(), kPALSample.c_str()));
    std::vector<corvane::handles::Frame> frames;
    bool again = false;
    for (int i = 0; i < 8; ++i) {
        auto info = corvane::handles::Empty<corvane_frame_info>();
        frames.emplace_back(corvane_clip_get_frame(clip.get(), i));
        ASSERT_EQ(corvane_frame_get_info(frames.back().get(), &info), 0);
        again = again || shown.contains(info.plane[0].data);
    }
    EXPECT_TRUE(again);
}

TEST_F(GStreamer, RowsWithGapsAreSaidToBeSo) {
    const corvane::handles::Importer importer(corvane_importer_load(nullptr));
    const corvane_setting settings[] = {{"size", "47x34"}, {"top-start", "#ff8040"}};
    const corvane::handles::Clip clip(corvane_clip_create(importer.get(), "test", settings, 2));
    const std::string path = mFolder / "clip.synthex";
    ASSERT_EQ(corvane_clip_save(clip.get(), path.c_str()), 0) << corvane_last_error();
    // A filter takes rows with gaps, an application's sink doesn't.
    const char* const turn = " ! videoflip method=rotate-180";
    const Pipeline pipeline("synthexsrc location=" + path + turn + turn);
    pipeline.Set(GST_STATE_PAUSED);
    EXPECT_TRUE(BytesOf(pipeline.Preroll()) == Rendered(path, 1, true)) << pipeline.Error();
}

TEST_F(GStreamer, FilesOpenLikeAnyVideo) {
    // One begins with a key that nobody knows, one is wrapped.
    const std::string text = ReadFile(kPALSample);
    const std::string odd =
        mFolder.Write("odd.json", "\n{\"mine\": [\"m\"]," + text.substr(text.find('{') + 1));
    for (const std::string& source :
         {"uridecodebin uri=file://" + kPALSample, "uridecodebin uri=file://" + odd,
          "uridecodebin uri=file://" + kSamples + "wrapped-document.synthex",
          "filesrc location=" + kPALSample + " ! decodebin3"}) {
        const Pipeline pipeline(source);
        pipeline.Set(GST_STATE_PLAYING);
        EXPECT_EQ(FrameOf(pipeline.Next()), 0u) << source;
        EXPECT_EQ(FrameOf(pipeline.Next()), 1u) << source;
    }
}

TEST_F(GStreamer, FilesAreEncodedLikeAnyVideo) {
    const corvane::handles::Importer importer(corvane_importer_load(nullptr));
    const corvane_setting settings[] = {
        {"size", "64x48"}, {"fields", "lower"}, {"upper", "#ff8040"}, {"lower", "#2040ff"}, {"frames", "5"}};
    const corvane::handles::Clip clip(corvane_clip_create(importer.get(), "test", settings, 5));
    const std::string path = mFolder / "clip.synthex", movie = mFolder / "clip.mov";
    ASSERT_EQ(corvane_clip_save(clip.get(), path.c_str()), 0) << corvane_last_error();
    {
        const Pipeline pipeline("uridecodebin uri=file://" + path +
                                    " ! encodebin profile=video/quicktime:image/png",
                                "filesink location=" + movie);
        pipeline.Set(GST_STATE_PLAYING);
        const GstMessageOwner end = pipeline.Message(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
        ASSERT_TRUE(end && GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS) << pipeline.Error();
    }
    const Pipeline decoded("uridecodebin uri=file://" + movie + " ! videoconvert ! video/x-raw,format=BGRA");
    decoded.Set(GST_STATE_PLAYING);
    std::string frames;
    while (const GstSampleOwner sample = decoded.Next()) frames += BytesOf(sample);
    EXPECT_TRUE(frames == Rendered(path, 5, true)) << frames.size();
}

} // namespace
