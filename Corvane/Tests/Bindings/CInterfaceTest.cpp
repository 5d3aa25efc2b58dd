// The C interface as a program of another maker uses it: with wrong arguments, with structures of another
// version, and from many threads. That its frames are those which are rendered is tested on the installed
// library (Install).
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <corvane/engine.h>
#include <corvane/handles.h>

#include "Growth.h"

namespace {

using ::testing::HasSubstr;

using corvane::handles::Clip;
using corvane::handles::Empty;
using corvane::handles::Frame;
using corvane::handles::Importer;

class CInterface : public ::testing::Test {
  protected:
    Clip Create(const std::vector<corvane_setting>& settings) const {
        return Clip(corvane_clip_create(mImporter.get(), "test", settings.data(), settings.size()));
    }

    Importer mImporter{corvane_importer_load(nullptr)};
};

TEST_F(CInterface, ClipsAreWhatTheirSettingsSay) {
    // The number of frames before the rate: it is one at that rate all the same.
    const Clip clip = Create({{"frames", "7"},
                              {"rate", "30000/1001"},
                              {"size", "32x24"},
                              {"fields", "lower"},
                              {"format", "BGRA_4444_32f"},
                              {"upper", "1:0.5:0.25"},
                              {"lower", "#ff0000"}});
    ASSERT_TRUE(clip) << corvane_last_error();
    auto info = Empty<corvane_clip_info>();
    ASSERT_EQ(corvane_clip_get_info(clip.get(), &info), 0);
    EXPECT_EQ(std::vector({info.width, info.height, info.rate_numerator, info.rate_denominator}),
              (std::vector<std::uint32_t>{32, 24, 30000, 1001}));
    EXPECT_EQ(info.frames, 7);
    EXPECT_EQ(info.field_order, CORVANE_FIELDS_LOWER_FIRST);

    auto frameInfo = Empty<corvane_frame_info>();
    Frame frame;
    {
        // A clip of the text it has is the same clip, and a frame outlives it.
        const Clip again(corvane_clip_open_text(mImporter.get(), "again", corvane_clip_settings(clip.get())));
        frame.reset(corvane_clip_get_frame(again.get(), 6));
    }
    ASSERT_TRUE(frame) << corvane_last_error();
    ASSERT_EQ(corvane_frame_get_info(frame.get(), &frameInfo), 0);
    const corvane_plane& plane = frameInfo.plane[0];
    float pixel[4];
    // Right of the number's box.
    std::memcpy(pixel, static_cast<const char*>(plane.data) + 31 * plane.bytes_per_pixel, sizeof pixel);
    EXPECT_THAT(pixel, ::testing::ElementsAre(0.25f, 0.5f, 1, 1));
    std::memcpy(pixel, static_cast<const char*>(plane.data) + plane.row_bytes * 23, sizeof pixel);
    EXPECT_THAT(pixel, ::testing::ElementsAre(0, 0, 1, 1));

    auto format = Empty<corvane_pixel_format>();
    ASSERT_EQ(corvane_pixel_format_of(frameInfo.format, &format), 0);
    EXPECT_STREQ(format.name, "BGRA_4444_32f");
    EXPECT_STREQ(format.components, "BGRA");
    EXPECT_EQ(format.bytes_per_component, 4);
}

TEST_F(CInterface, AColorOfTheGradientMakesAGradient) {
    const Clip clip = Create({{"size", "8x8"}, {"bottom-start", "#ffffff"}, {"bottom-end", "#ffffff"}});
    const Frame frame(corvane_clip_get_frame(clip.get(), 0));
    auto info = Empty<corvane_frame_info>();
    ASSERT_EQ(corvane_frame_get_info(frame.get(), &info), 0) << corvane_last_error();
    const auto* const pixels = static_cast<const unsigned char*>(info.plane[0].data);
    EXPECT_LT(pixels[0], pixels[info.plane[0].row_bytes * 7]);
}

TEST_F(CInterface, FailuresAreSentences) {
    const Clip clip = Create({{"size", "8x8"}, {"frames", "2"}});
    corvane_pixel_format format{};
    const auto create = [&](const char* name, const char* value) {
        return Create({{name, value}}) == nullptr;
    };
    const auto importer = mImporter.get();
    auto nowhere = Empty<corvane_render_options>();
    nowhere.output = "no such folder/a.png";
    ASSERT_STREQ(corvane_last_error(), "");
    ASSERT_EQ(corvane_clip_open_file(nullptr, "a"), nullptr);
    EXPECT_THAT(corvane_last_error(), HasSubstr("corvane_clip_open_file: the importer is NULL."));
    const struct {
        bool failed;
        std::string sentence;
        const char* part;
    } kRows[] = {
        {corvane_importer_load("no such folder") == nullptr, corvane_last_error(),
         "no such folder: there is no bundle"},
        {corvane_clip_open_file(importer, "none.synthex") == nullptr, corvane_last_error(),
         "none.synthex: there is no such file."},
        {corvane_clip_open_file(importer, nullptr) == nullptr, corvane_last_error(), "the path is NULL."},
        // What failed first is told, not that nothing came of it.
        {corvane_clip_get_frame(corvane_clip_open_file(importer, "no.synthex"), 0) == nullptr,
         corvane_last_error(), "no.synthex: there is no such file."},
        {corvane_clip_open_text(importer, "mine", "{]") == nullptr, corvane_last_error(), "mine: "},
        {create("speed", "25"), corvane_last_error(), "there is no setting 'speed'; choose one of size, par"},
        {create("codec", "ffv1"), corvane_last_error(), "there is no setting 'codec'"},
        {create("rate", "0"), corvane_last_error(), "test: rate '0' is not understood; write N/D"},
        {create("size", nullptr), corvane_last_error(), "a setting's value is NULL."},
        {corvane_clip_get_frame(clip.get(), 2) == nullptr, corvane_last_error(),
         "test: there is no frame 2; the clip has frames 0 to 1."},
        {corvane_clip_get_frame(clip.get(), -1) == nullptr, corvane_last_error(), "there is no frame -1"},
        {corvane_pixel_format_at(48, &format) == -1, corvane_last_error(), "There is no pixel format 48"},
        {corvane_pixel_format_of(1, &format) == -1, corvane_last_error(), "0x00000001"},
        {corvane_clip_save(clip.get(), "no such folder/a") == -1, corvane_last_error(), "no such folder/a: "},
        {corvane_clip_render(clip.get(), &nowhere, nullptr) == -1, corvane_last_error(),
         "no such folder/a.png: "},
    };
    for (const auto& row : kRows) {
        EXPECT_TRUE(row.failed) << row.part;
        EXPECT_THAT(row.sentence, HasSubstr(row.part));
    }
}

TEST_F(CInterface, FailuresLeaveNothingBehind) {
    const Clip clip = Create({{"size", "8x8"}, {"frames", "2"}});
    corvane::testing::ExpectNoGrowth(2500, [&](int) {
        ASSERT_FALSE(Clip(corvane_clip_open_file(mImporter.get(), "none.synthex")));
        ASSERT_FALSE(Clip(corvane_clip_open_text(mImporter.get(), "test", "{]")));
        ASSERT_FALSE(Create({{"rate", "0"}}));
        ASSERT_FALSE(Create({{"size", "0x8"}}));
        ASSERT_FALSE(Frame(corvane_clip_get_frame(clip.get(), 2)));
        const Clip empty(corvane_clip_open_text(mImporter.get(), "test", "{}"));
        ASSERT_FALSE(Frame(corvane_clip_get_frame(empty.get(), 0)));
    });
}

TEST_F(CInterface, ThreadsShareClipsAndHaveErrorsOfTheirOwn) {
    const Clip clip =
        Create({{"size", "64x48"}, {"frames", "100"}, {"fields", "upper"}, {"upper", "#ff8040"}});
    const Frame expected(corvane_clip_get_frame(clip.get(), 7));
    auto seen = Empty<corvane_frame_info>();
    ASSERT_EQ(corvane_frame_get_info(expected.get(), &seen), 0);
    const auto bytes = static_cast<std::size_t>(seen.plane[0].row_bytes) * 48;
    std::vector<std::string> said(4);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < said.size(); ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 200; ++i) {
                const Frame frame(corvane_clip_get_frame(clip.get(), 7));
                auto info = Empty<corvane_frame_info>();
                const bool made = corvane_frame_get_info(frame.get(), &info) == 0;
                if (!made || std::memcmp(info.plane[0].data, seen.plane[0].data, bytes) != 0) return;
                Frame(corvane_clip_get_frame(clip.get(), 100 + static_cast<std::int64_t>(thread)));
            }
            said[thread] = corvane_last_error();
        });
    for (std::thread& thread : threads) thread.join();
    for (std::size_t thread = 0; thread < said.size(); ++thread)
        EXPECT_THAT(said[thread], HasSubstr("there is no frame " + std::to_string(100 + thread) + ";"));
}

TEST_F(CInterface, StructuresOfOtherVersionsAreFilledAsFarAsBothKnowThem) {
    const Clip clip = Create({{"size", "8x6"}});
    // A caller of an older version has no members behind the height, one of a newer version has more.
    struct {
        corvane_clip_info info;
        std::uint64_t newer;
    } both;
    std::memset(&both, 0xCD, sizeof both);
    both.info.struct_size = offsetof(corvane_clip_info, aspect_numerator);
    ASSERT_EQ(corvane_clip_get_info(clip.get(), &both.info), 0);
    EXPECT_EQ(both.info.height, 6u);
    EXPECT_EQ(both.info.aspect_numerator, 0xCDCDCDCDu);
    both.info.struct_size = sizeof both;
    ASSERT_EQ(corvane_clip_get_info(clip.get(), &both.info), 0);
    EXPECT_EQ(both.info.aspect_numerator, 1u);
    EXPECT_EQ(both.newer, 0u);
}

TEST_F(CInterface, RenderingEndsIfItsProgressSaysSo) {
    const Clip clip = Create({{"size", "64x48"}, {"frames", "50"}});
    const std::string output = ::testing::TempDir() + "/c-interface.mkv";
    auto options = Empty<corvane_render_options>();
    options.output = output.c_str();
    options.codec = "ffv1";
    options.has_frames = 1;
    options.last_frame = 9;
    auto report = Empty<corvane_render_report>();
    ASSERT_EQ(corvane_clip_render(clip.get(), &options, &report), 0) << corvane_last_error();
    EXPECT_EQ(report.frames, 10);
    EXPECT_EQ(report.bytes, std::filesystem::file_size(output));
    std::filesystem::remove(output);

    std::int64_t told = 0;
    options.user = &told;
    options.progress = [](void* user, std::int64_t done, std::int64_t) {
        *static_cast<std::int64_t*>(user) = done;
        return done == 3 ? 1 : 0;
    };
    ASSERT_EQ(corvane_clip_render(clip.get(), &options, &report), 0);
    EXPECT_EQ(report.cancelled, 1);
    EXPECT_GE(told, 3);
    EXPECT_FALSE(std::filesystem::exists(output));
}

} // namespace
