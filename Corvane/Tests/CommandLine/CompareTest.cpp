// Faults sought: errors that are not the picture's, bad videos that crash, hang or are refused without a name
// and a reason, findings that are lost when it is cancelled, a report that is no page or leaves out its
// pictures.
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

// A gradient of 64 x 48 with colors that stay off the ends of the scale.
std::string Gradient(const TestFolder& folder) {
    return folder.Write(
        "clip.synthex",
        SettingsText(R"(,"mFieldType":0,"mRenderFormat":1,"mTopGradiantColorStart":{"mRedPart":0.2,)"
                     R"("mGreenPart":0.3,"mBluePart":0.4,"mAlphaPart":1},"mBottomGradiantColorEnd":{)"
                     R"("mRedPart":0.8,"mGreenPart":0.7,"mBluePart":0.6,"mAlphaPart":1})"));
}

void Make(const std::string& command) {
    ASSERT_EQ(std::system(("ffmpeg -v error -y " + command).c_str()), 0) << command;
}

TEST(Compare, ErrorsAreThoseOfThePictures) {
    const TestFolder folder;
    const std::string clip = Gradient(folder), made = folder / "made.mkv", off = folder / "off.mkv";
    ASSERT_EQ(RunSynthex({"render", clip, made, "--codec", "ffv1:pix_fmt=bgr0", "--quiet"}).status, 0);
    Make(fmt::format("-i {} -vf lutrgb=g=val+1:b=val-2,format=bgr0 -c:v ffv1 {}", made, off));
    const json exact = {{"r", nullptr}, {"g", nullptr}, {"b", nullptr}};
    // 20 log10(255) and 20 log10(255 / 2)
    const json wrong = {{"r", nullptr}, {"g", 48.1308}, {"b", 42.1102}};
    for (const auto& [file, psnr, green, blue] : {std::tuple(made, exact, 0, 0), {off, wrong, 1, 2}}) {
        const ProcessResult result = RunSynthex({"compare", clip, file, "--json", "--tolerance", "9"});
        EXPECT_EQ(std::pair(result.status, result.err), std::pair(0, std::string()));
        json found = json::parse(result.out);
        for (auto& value : found["psnr"])
            if (value.is_number()) value = std::round(value.get<double>() * 1e4) / 1e4;
        EXPECT_EQ(found, (json{{"clip", clip},
                               {"video", file},
                               {"frames_compared", 10},
                               {"frames_matched", 10},
                               {"psnr", psnr},
                               {"max_error", {{"r", 0}, {"g", green}, {"b", blue}}},
                               {"remarks",
                                {"No number was read, so that of geometry only the size and bars could be "
                                 "looked at."}},
                               {"findings", json::array()}}));
    }
}

TEST(Compare, BadVideosAreRefusedByName) {
    const TestFolder folder;
    const std::string clip = Gradient(folder);
    const auto in = [&](const char* name) { return (folder / name).string(); };
    ASSERT_EQ(RunSynthex({"render", clip, in("a.mp4"), "--quiet"}).status, 0);
    Make("-f lavfi -i sine=d=0.1 " + in("sound.wav"));
    Make("-f lavfi -i sine=d=0.1 -f lavfi -i color=s=64x48:d=0.1 -map 0 -map 1 -c:v png -frames:v 1 "
         "-disposition:v attached_pic " +
         in("song.m4a"));
    Make("-i " + in("a.mp4") +
         " -c copy -encryption_scheme cenc-aes-ctr -encryption_key "
         "00112233445566778899aabbccddeeff -encryption_kid 00112233445566778899aabbccddeeff " +
         in("secret.mp4"));
    folder.Write("empty.mkv", "");
    folder.Write("half.mp4", ReadFile(in("a.mp4")).substr(0, 600));
    folder.Write("size0.y4m", "YUV4MPEG2 W0 H0 F10:1\n");
    folder.Write("none.y4m", "YUV4MPEG2 W64 H48 F10:1 Ip A1:1 C420jpeg\n");
    const std::pair<const char*, const char*> kRows[] = {{"missing.mp4", "no such file"},
                                                         {"no.%04d.png", "no file with such a name"},
                                                         {"", "this is a folder"},
                                                         {"sound.wav", "no video in it"},
                                                         {"song.m4a", "no video in it"},
                                                         {"secret.mp4", "encrypted; decrypt it first"},
                                                         {"empty.mkv", "no video that libav knows"},
                                                         {"half.mp4", "no video that libav knows"},
                                                         {"size0.y4m", "no video that libav knows"},
                                                         {"none.y4m", "no picture of it can be decoded"}};
    for (const auto& [name, said] : kRows) ExpectRefused({"compare", clip, in(name)}, 1, in(name), said);
}

TEST(Compare, FindingsAreToldInEveryForm) {
    const TestFolder folder;
    const std::string clip = Gradient(folder), page = folder / "report.html";
    const std::string video = folder / "size.ts";
    ASSERT_EQ(RunSynthex({"render", clip, folder / "a.mkv", "--codec", "ffv1", "--quiet"}).status, 0);
    for (const char* const size : {"64x48", "96x64"})
        Make(fmt::format("-i {0}/a.mkv -s {1} -c:v mpeg2video -qscale 1 {0}/{1}.ts", folder.Path().string(),
                         size));
    folder.Write("size.ts", ReadFile(folder / "64x48.ts") + ReadFile(folder / "96x64.ts"));
    const std::vector<std::string> arguments = {"compare", clip, video, "--report", page};
    const ProcessResult result = RunSynthex(arguments);
    EXPECT_EQ(result.status, 4) << result.err;
    const std::string said = " is 96 x 64, and those before it are 64 x 48.";
    EXPECT_THAT(result.out,
                AllOf(HasSubstr("geometry.size    The size changes on the way: picture "), HasSubstr(said)));
    const std::string html = ReadFile(page);
    for (const std::string part :
         {"<!DOCTYPE html>", said.c_str(), "data:image/png;base64,iVBOR", "<figure id='timeline'><svg ",
          "<figure id='times'><svg ", "<figure id='levels'><svg ", "<section data-kinds='geometry.size'>",
          "Expected and found<", "</html>"})
        EXPECT_NE(html.find(part), std::string::npos) << part;
    EXPECT_EQ(html.find("http"), std::string::npos) << "it is not in one file";
    const ProcessResult ignored =
        RunSynthex({"compare", clip, video, "--ignore", "geometry,frames,time,tags", "--quiet"});
    EXPECT_EQ(std::tuple(ignored.status, ignored.out, ignored.err), std::tuple(0, "", ""));
}

class CompareOfAPipe : public testing::TestWithParam<int> {};

TEST_P(CompareOfAPipe, IsEndedByASignalAfterWhatWasFound) {
    const int frames = GetParam();
    const TestFolder folder;
    const fs::path pipe = folder / "pipe";
    ::mkfifo(pipe.c_str(), 0600);
    Process process(Synthex({"compare", Gradient(folder), pipe, "--json"}));
    const int writer = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC); // waits for the program to open it
    std::string text = frames > 0 ? "YUV4MPEG2 W64 H48 F10:1 Ip A1:1 C420jpeg\n" : "";
    for (int i = 0; i < frames; ++i) text += "FRAME\n" + std::string(64 * 48 * 3 / 2, '\x60');
    // Much more than the pipe and who probes it take: when all is written, some pictures were compared.
    ASSERT_EQ(::write(writer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    process.Signal(SIGINT); // while the writer keeps it waiting
    const ProcessResult result = process.Wait();
    ::close(writer);
    EXPECT_EQ(result.status, 128 + SIGINT) << result.err;
    if (frames == 0)
        EXPECT_THAT(result.err, HasSubstr("cancelled before there was a picture"));
    else
        EXPECT_LE(json::parse(result.out)["frames_compared"], frames);
    EXPECT_EQ(result.out.find("frames.missing"), std::string::npos) << "it may have come";
}
INSTANTIATE_TEST_SUITE_P(Frames, CompareOfAPipe, testing::Values(0, 3000));

} // namespace
