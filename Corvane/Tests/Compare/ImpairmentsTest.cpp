// What other programs do to clips, and what a comparison says of it. Each row is one impairment, made by
// ffmpeg or GStreamer, with the kinds of findings that it is to give; no other kind may come. Clean
// transcodes give none.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Tests/Process.h"

namespace {

// Small clips, each of another kind: fields, shape of pixels, rate, format, what is drawn.
struct TestClip {
    const char* name;
    const char* size;
    const char* aspect;
    std::int64_t ticksPerFrame;
    int fieldType;
    bool gradient;
    std::uint32_t format;
    double alpha; // of the gradient's top
    int frames;
    const char* pixels; // of the lossless video, for libav
};
constexpr std::int64_t k25 = 10160640000, k2997 = 8475667200, k23976 = 10594584000;
const TestClip kPAL{"pal", "720x576", "12:11", k25, 1, false, 0x61726762, 1, 24, "yuv444p"};
const TestClip kNTSC{"ntsc", "720x480", "10:11", k2997, 2, false, 0x61726762, 1, 24, "yuv444p"};
const TestClip kFilm{"film", "720x480", "10:11", k23976, 2, false, 0x61726762, 1, 40, "yuv444p"};
const TestClip kTenBit{"tenbit", "1280x720", "1:1", k2997, 1, false, 0x31313276, 1, 24, "yuv422p10"};
const TestClip kHD{"hd", "960x720", "4:3", k25, 0, true, 0x61726762, 1, 24, "yuv444p"};
const TestClip kFloat{"float", "640x360", "1:1", k23976, 0, true, 0x61724742, 1, 24, "yuv444p10"};
const TestClip kDeep{"deep", "480x1024", "1:1", k25, 0, true, 0x31313276, 1, 24, "yuv422p10"};
const TestClip kAlpha{"alpha", "320x240", "1:1", k25, 0, true, 0x61726762, 0.25, 24, "bgra"};
const TestClip kSlow{"slow", "320x240", "1:1", k25, 0, true, 0x61726762, 0.25, 100, "bgra"};
const TestClip kAlike{"alike", "320x240", "1:1", k25, 0, false, 0x41595556, 1, 24, "yuv444p"};

std::string Settings(const TestClip& clip) {
    const auto color = [](const char* name, double red, double green, double blue, double alpha) {
        return fmt::format(
            R"("m{}":{{"mRedPart":{:.3f},"mGreenPart":{:.3f},"mBluePart":{:.3f},"mAlphaPart":{:.3f}}},)",
            name, red, green, blue, alpha);
    };
    unsigned width = 0, height = 0, numerator = 0, denominator = 0;
    std::sscanf(clip.size, "%ux%u", &width, &height);
    std::sscanf(clip.aspect, "%u:%u", &numerator, &denominator);
    return "{" + color("UpperFieldColor", 0.9, 0.2, 0.1, 1) + color("LowerFieldColor", 0.15, 0.3, 0.8, 1) +
           color("TopGradiantColorStart", 0.05, 0.1, 0.4, clip.alpha) +
           color("TopGradiantColorEnd", 0.9, 0.35, 0.1, clip.alpha) +
           color("BottomGradiantColorStart", 0.2, 0.6, 0.9, 1) +
           color("BottomGradiantColorEnd", 0.15, 0.05, 0.25, 1) +
           fmt::format(
               R"("mPixelFormat":{},"mFrameWidth":{},"mFrameHeight":{},"mFramePAR":{{"numerator":{},)"
               R"("denominator":{}}},"mFieldType":{},"mRenderFormat":{},"mVideoDuration":{{"ticks":{}}},)"
               R"("mVideoFrameRate":{{"ticksperframe":{}}}}})",
               clip.format, width, height, numerator, denominator, clip.fieldType, clip.gradient ? 1 : 0,
               clip.ticksPerFrame * clip.frames, clip.ticksPerFrame);
}

/// What turns the clip's lossless video into another one: GStreamer, if `how` begins a pipeline; else ffmpeg.
std::string CommandOf(const TestClip& clip, const std::string& master, std::string_view how,
                      const std::string& video) {
    if (how[0] != '!')
        return fmt::format("ffmpeg -nostdin -v error -i '{}' {} '{}' 2>&1", master, how, video);
    const std::string_view pixels(clip.pixels), size(clip.size);
    const std::string deep = pixels.ends_with("10") ? "-10le" : "";
    const std::string format =
        pixels == "bgra" ? "bgra" : (pixels.starts_with("yuv444") ? "y444" : "i422") + deep;
    const std::size_t by = size.find('x');
    std::string aspect(clip.aspect);
    std::ranges::replace(aspect, ':', '/');
    return fmt::format("ffmpeg -nostdin -v error -i '{}' -f rawvideo - | gst-launch-1.0 -q fdsrc ! "
                       "rawvideoparse format={} width={} height={} pixel-aspect-ratio={} framerate={} "
                       "interlaced={} top-field-first={} {} location='{}' 2>&1",
                       master, format, size.substr(0, by), size.substr(by + 1), aspect,
                       clip.ticksPerFrame == k25     ? "25/1"
                       : clip.ticksPerFrame == k2997 ? "30000/1001"
                                                     : "24000/1001",
                       clip.fieldType != 0, clip.fieldType == 1, how, video);
}

/// The kinds of findings, sorted, with blanks between, when the clip's lossless video was turned into another
/// one by `options`: those of ffmpeg or a pipeline of GStreamer, with the suffix of the file to write.
std::string Kinds(const TestClip& clip, const std::string& options) {
    const TestFolder folder;
    const std::string settings = folder.Write("clip.synthex", Settings(clip));
    const std::string master = folder / "master.mkv";
    if (RunSynthex({"render", settings, master, "--codec", std::string("ffv1:pix_fmt=") + clip.pixels})
            .status != 0)
        return "no master";
    const std::size_t suffix = options.find_last_of(' ');
    const std::string video = folder / ("video." + options.substr(suffix + 1));
    const std::string command = CommandOf(clip, master, options.substr(0, suffix), video);
    if (std::system(command.c_str()) != 0) return "not made: " + command;
    const ProcessResult result = RunSynthex({"compare", settings, video, "--json"});
    if (result.status != 0 && result.status != 4) return "failed: " + result.err;
    const auto report = nlohmann::json::parse(result.out);
    std::set<std::string> kinds;
    for (const auto& finding : report.at("findings")) kinds.insert(finding.at("kind"));
    EXPECT_EQ(result.status == 4, !kinds.empty()) << result.out;
    EXPECT_THAT(result.out, testing::Not(testing::HasSubstr("nan ")));
    return fmt::format("{}", fmt::join(kinds, " "));
}

struct Impairment {
    const TestClip& clip;
    const char* options;
    const char* kinds;
};
std::ostream& operator<<(std::ostream& out, const TestClip& clip) {
    return out << clip.name;
}
std::ostream& operator<<(std::ostream& out, const Impairment& impairment) {
    return out << impairment.clip << ", " << impairment.kinds;
}

class Impaired : public testing::TestWithParam<Impairment> {};

TEST_P(Impaired, GivesTheFindingsOfItsCausesAndNoOther) {
    const auto& [clip, options, kinds] = GetParam();
    // Programs with sanitizers take long: some rows show what they can show.
    if (IsSanitized() && std::string_view(options).size() % 7 != 0) GTEST_SKIP();
    EXPECT_EQ(Kinds(clip, options), kinds) << clip.name << ": " << options;
}

#define FFV1 " -c:v ffv1 mkv"
#define MILLISECONDS " -enc_time_base 1/1000"

const Impairment kFrames[] = {
    {kHD, "-vf \"select='not(between(n,8,10))',setpts=N/25/TB\"" FFV1, "frames.missing"},
    {kPAL, "-vf \"select='not(between(n,8,10))'\" -vsync passthrough" FFV1, "frames.missing"},
    {kPAL, "-vf trim=start_frame=3,setpts=N/25/TB" FFV1, "frames.missing"},
    {kNTSC, "-vf trim=end_frame=20" FFV1, "frames.missing"},
    {kFloat, "-vf loop=loop=2:size=1:start=10,setpts=N*1001/24000/TB" FFV1, "frames.repeated"},
    {kPAL, "-vf fps=50" FFV1, "frames.repeated"},
    {kNTSC, "-vf fps=15000/1001" FFV1, "frames.missing"},
    {kPAL, "-vf shuffleframes='0 2 1 3'" FFV1, "frames.order"},
    {kHD, "-vf reverse" FFV1, "frames.order"},
    {kPAL,
     "-f lavfi -i testsrc2=s=720x576:r=25:d=2 -filter_complex "
     "\"overlay=enable='between(n,5,7)':shortest=1:format=yuv444\"" FFV1,
     "frames.foreign"},
    {kTenBit,
     "-f lavfi -i mandelbrot=s=1280x720:r=30000/1001 -filter_complex "
     "\"overlay=enable='between(t,0.16,0.24)':shortest=1:format=yuv422p10\"" FFV1,
     "frames.foreign"},
    {kPAL, "-vf tpad=stop_mode=clone:stop=5" FFV1, "frames.repeated"},
    {kHD,
     "-f lavfi -i testsrc2=s=960x720:r=25:d=2 -filter_complex "
     "\"overlay=enable='between(n,20,23)':shortest=1:format=yuv444,format=yuv420p\" -c:v libx264 mp4",
     "frames.foreign"},
    {kHD,
     "-f lavfi -i color=black:s=960x720:r=25:d=2 -filter_complex "
     "\"overlay=enable='between(n,0,2)':shortest=1:format=yuv444\"" FFV1,
     "frames.foreign"},
    {kHD, "-f lavfi -i testsrc2=s=960x720:r=25 -map 1 -frames:v 24" FFV1, "frames.missing"},
    // Where frames are hardly told from their neighbors, the one after the last is none.
    {kSlow,
     "-vf \"select='not(between(n,40,49))',setpts=N/25/TB,format=yuva420p\" -auto-alt-ref 0 -c:v libvpx webm",
     "color.alpha frames.missing"},
};
const Impairment kTimes[] = {
    {kFloat, "-vf setpts=N/24/TB -r 24 -c:v ffv1 nut", "time.rate"},
    {kNTSC, "-vf setpts=N/30/TB -r 30 -c:v ffv1 nut", "time.rate"},
    {kPAL, "-vf setpts=N*1001/24000/TB -r 24000/1001" FFV1, "time.rate"},
    {kHD, "-vf settb=1/1000,setpts='PTS+6*(mod(N\\,3)-1)' -vsync passthrough" MILLISECONDS FFV1,
     "time.jitter"},
    {kPAL, "-vf settb=1/1000,setpts='PTS+10*mod(N\\,2)' -vsync passthrough" MILLISECONDS FFV1, "time.jitter"},
};
const Impairment kGeometry[] = {
    {kHD, "-vf scale=480:360,setsar=4/3" FFV1, "geometry.size"},
    {kPAL, "-vf scale=788:576,setsar=1" FFV1, "geometry.size"},
    {kTenBit, "-vf scale=640:720,setsar=2" FFV1, "geometry.size"},
    {kPAL, "-vf setsar=1" FFV1, "tags.aspect"},
    // PNG has pixels a meter across and down, for which ffmpeg takes the two terms of the aspect.
    {kPAL, "-vf setsar=11/12 %05d.png", ""},
    {kPAL, "-vf crop=688:560:16:8" FFV1, "geometry.crop"},
    {kNTSC, "-vf crop=704:480:8:0" FFV1, "geometry.crop"},
    {kHD, "-vf crop=960:716:0:2" FFV1, "geometry.crop"},
    {kFloat, "-vf crop=640:180:0:90" FFV1, "geometry.crop"},
    {kHD, "-vf crop=928:680:16:20" FFV1, "geometry.crop"},
    {kHD, "-vf crop=960:600:0:100 -c:v libx264 -crf 40 mp4", "geometry.crop"},
    {kHD, "-vf crop=960:540:0:90,scale=960:720" FFV1, "geometry.crop geometry.size"},
    {kHD, "-vf crop=960:700:0:20,pad=960:720:0:0" FFV1, "geometry.shift"},
    {kHD, "-vf crop=960:540:0:90,pad=960:1000:0:100" FFV1, "geometry.crop geometry.pad"},
    {kFloat, "-vf scale=640:270,pad=640:360:0:45" FFV1, "geometry.pad geometry.size"},
    {kHD, "-vf pad=960:900:0:90" FFV1, "geometry.pad"},
    {kPAL, "-vf pad=800:576:40:0" FFV1, "geometry.pad"},
    {kPAL, "-vf hflip" FFV1, "geometry.mirror"},
    {kHD, "-vf vflip" FFV1, "geometry.mirror"},
    {kPAL, "-vf hflip,vflip" FFV1, "geometry.rotate"},
    // Left and right of a gradient are alike.
    {kHD, "-vf hflip,vflip" FFV1, "geometry.mirror"},
    {kNTSC, "-vf format=yuv444p,transpose=clock" FFV1, "geometry.rotate"},
    {kPAL, "-vf crop=712:576:0:0,pad=720:576:8:0" FFV1, "geometry.shift"},
};
const Impairment kFields[] = {
    {kPAL, "-vf il=ls=1:cs=1:as=1" FFV1, "fields.swapped"},
    {kTenBit, "-vf il=ls=1:cs=1" FFV1, "fields.swapped"},
    {kNTSC, "-vf fieldorder=tff" FFV1, "fields.shifted"},
    {kPAL, "-vf phase=t" FFV1, "fields.order"},
    {kNTSC, "-vf phase=b" FFV1, "fields.order"},
    {kPAL, "-vf yadif" FFV1, "fields.dropped"},
    {kNTSC, "-vf yadif=1" FFV1, "fields.dropped"},
    {kPAL, "-vf separatefields,scale=720:576:flags=neighbor,setsar=12/11" FFV1, "fields.dropped"},
    {kTenBit, "-vf field=top,scale=1280:720:flags=neighbor,setsar=1" FFV1, "fields.dropped"},
    {kPAL, "-vf pp=lb" FFV1, "fields.blended"},
    {kFilm, "-vf telecine=pattern=23" FFV1, "fields.pulldown"},
    {kFilm, "-vf telecine=pattern=2332" FFV1, "fields.pulldown"},
    {kPAL, "-vf format=yuv444p,scale=interl=0,format=yuv420p" FFV1, "fields.chroma"},
    {kPAL, "-vf setfield=bff -c:v prores_ks mov", "tags.order"},
};
const Impairment kColors[] = {
    {kHD, "-vf scale=in_color_matrix=bt709:out_color_matrix=bt601,setparams=colorspace=bt709" FFV1,
     "color.matrix"},
    {kPAL, "-vf scale=in_color_matrix=bt601:out_color_matrix=bt709,setparams=colorspace=bt470bg" FFV1,
     "color.matrix"},
    {kHD, "-vf scale=in_range=tv:out_range=pc,setparams=range=tv" FFV1, "color.range"},
    {kPAL, "-vf scale=in_range=pc:out_range=tv,setparams=range=tv" FFV1, "color.range"},
    {kHD, "-vf format=gbrp,colorchannelmixer=rr=0:rb=1:br=1:bb=0" FFV1, "color.channels"},
    {kTenBit, "-vf swapuv" FFV1, "color.channels"},
    {kHD,
     "-vf "
     "format=gbrp,lutrgb='r=pow(val/255\\,2.2)*255:g=pow(val/255\\,2.2)*255:b=pow(val/255\\,2.2)*255'" FFV1,
     "color.transfer"},
    {kPAL,
     "-vf format=gbrp,lutrgb='r=pow(val/255\\,1/2.2)*255:g=pow(val/255\\,1/2.2)*255:"
     "b=pow(val/255\\,1/2.2)*255'" FFV1,
     "color.transfer"},
    {kAlpha, "-vf format=gbrap,premultiply=inplace=1" FFV1, "color.alpha"},
    {kAlpha, "-vf format=yuv444p" FFV1, "color.alpha"},
    {kHD, "-vf lutyuv=y='clip(val\\,16\\,100)'" FFV1, "color.clipped"},
    // Two colors alone don't tell cut levels: the number's black and white do.
    {kPAL, "-vf lutyuv=y='clip(val\\,16\\,80)'" FFV1, "color.clipped"},
    {kNTSC, "-vf lutyuv=y='clip(val\\,95\\,235)'" FFV1, "color.clipped"},
    {kTenBit,
     "-vf format=gbrp,lutrgb='r=clip(val\\,40\\,200):g=clip(val\\,40\\,200):b=clip(val\\,40\\,200)'" FFV1,
     "color.clipped"},
    {kTenBit, "-vf lutyuv=y='clip(val\\,64\\,250)'" FFV1, "color.error"}, // the number can't be read
    {kDeep, "-vf format=yuv422p,format=yuv422p10" FFV1, "color.depth"},
    {kHD, "-vf lutyuv=y='val+12'" FFV1, "color.error"},
    {kPAL, "-vf lutyuv=y='val+12'" FFV1, "color.error"},
    {kHD, "-vf \"format=gbrp,colorchannelmixer=rr=0:rb=1:br=1:bb=0:enable='between(n,10,20)'\"" FFV1,
     "color.channels"},
    {kHD, "-vf \"hue=h=40:enable='between(n,8,14)'\"" FFV1, "color.error"},
    {kHD, "-vf setparams=colorspace=bt470bg" FFV1, "tags.matrix"},
    {kHD, "-vf setparams=range=pc -color_range pc" FFV1, "tags.range"},
};
const Impairment kPairs[] = {
    {kPAL, "-vf \"crop=688:560:16:8,select='not(between(n,8,10))',setpts=N/25/TB\"" FFV1,
     "frames.missing geometry.crop"},
    {kHD, "-vf vflip,scale=in_range=tv:out_range=pc,setparams=range=tv" FFV1, "color.range geometry.mirror"},
    {kTenBit, "-vf il=ls=1:cs=1,swapuv" FFV1, "color.channels fields.swapped"},
    {kHD, "-vf crop=960:600:0:100,scale=in_range=tv:out_range=pc,setparams=range=tv" FFV1,
     "color.range geometry.crop"},
    {kHD,
     "-vf scale=in_color_matrix=bt709:out_color_matrix=bt601,setparams=colorspace=bt709,"
     "scale=in_range=tv:out_range=pc,setparams=range=tv" FFV1,
     "color.matrix color.range"},
    {kTenBit, "-vf scale=in_range=pc:out_range=tv,setparams=range=tv,swapuv" FFV1,
     "color.channels color.range"},
    {kNTSC,
     "-vf format=gbrp,lutrgb='r=pow(val/255\\,1/2.2)*255:g=pow(val/255\\,1/2.2)*255:"
     "b=pow(val/255\\,1/2.2)*255',scale=out_color_matrix=smpte170m,format=yuv444p,"
     "scale=in_range=pc:out_range=tv,setparams=range=tv" FFV1,
     "color.range color.transfer"},
    {kFloat, "-vf scale=320:180,setpts=N/25/TB -r 25" FFV1, "geometry.size time.rate"},
    {kPAL, "-vf scale=24:8,swapuv" FFV1, "color.channels geometry.size"}, // fewer rows than are sought
};

// A pipeline ends with the suffix that the written file has.
#define Y4M " ! y4menc ! filesink y4m"
const Impairment kGStreamer[] = {
    {kPAL, "! videocrop left=16 right=16 top=8 bottom=8" Y4M, "geometry.crop"},
    {kHD, "! videobox left=-40 right=-40" Y4M, "geometry.pad"},
    {kPAL, "! videoflip video-direction=horiz" Y4M, "geometry.mirror"},
    {kTenBit, "! videoflip video-direction=90r ! videoconvert ! video/x-raw,format=Y42B" Y4M,
     "geometry.rotate"},
    // What is scaled to a shape that it hasn't gets bars.
    {kPAL, "! videoscale ! video/x-raw,width=640,height=480,pixel-aspect-ratio=1/1" Y4M,
     "geometry.pad geometry.size"},
    {kPAL, "! capssetter caps=video/x-raw,pixel-aspect-ratio=1/1" Y4M, "tags.aspect"},
    {kHD, "! videorate ! video/x-raw,framerate=50/1" Y4M, "frames.repeated"},
    {kPAL, "! videorate ! video/x-raw,framerate=15/1" Y4M, "frames.missing"},
    {kPAL, "! deinterlace fields=top" Y4M, "fields.dropped"},
    {kNTSC, "! deinterlace fields=all" Y4M, "fields.dropped"},
    {kNTSC, "! deinterlace method=scalerbob" Y4M, "fields.dropped"},
    // These leave rows of the other field a little of their own color.
    {kPAL, "! deinterlace method=greedyl fields=top" Y4M, "fields.dropped"},
    {kNTSC, "! deinterlace method=greedyh" Y4M, "fields.dropped"},
    {kPAL, "! deinterlace method=linearblend" Y4M, "fields.blended"},
    {kPAL, "! deinterlace method=linearblend fields=top" Y4M, "fields.blended"},
    {kHD, "! videobalance saturation=0" Y4M, "color.channels"},
    {kHD,
     "! capssetter caps=video/x-raw,colorimetry=bt601 ! videoconvert ! "
     "video/x-raw,format=Y444,colorimetry=bt709" Y4M,
     "color.matrix"},
    {kHD,
     "! capssetter caps=video/x-raw,colorimetry=1:3:5:1 ! videoconvert ! video/x-raw,format=ARGB64 ! "
     "videoconvert ! video/x-raw,format=Y444,colorimetry=bt709" Y4M,
     "color.range"},
    {kPAL,
     "! videoconvert ! video/x-raw,format=I420 ! capssetter caps=video/x-raw,colorimetry=1:4:0:0 ! "
     "matroskamux ! filesink mkv",
     "tags.range"},
    {kAlpha, "! compositor background=white ! videoconvert ! pngenc ! multifilesink %05d.png", "color.alpha"},
    {kAlpha, "! videoconvert ! pngenc ! multifilesink %05d.png", ""},
    {kHD, "! videoconvert ! theoraenc ! oggmux ! filesink ogv", ""},
    {kHD, "! videoconvert ! video/x-raw,colorimetry=bt601 ! vp8enc deadline=1 ! webmmux ! filesink webm", ""},
    {kPAL, "! videoconvert ! vp9enc deadline=1 cpu-used=8 ! webmmux ! filesink webm", ""},
};

std::string NameOf(const testing::TestParamInfo<Impairment>& info) {
    return fmt::format("{}{}", info.param.clip.name, info.index);
}
INSTANTIATE_TEST_SUITE_P(Frames, Impaired, testing::ValuesIn(kFrames), NameOf);
INSTANTIATE_TEST_SUITE_P(Times, Impaired, testing::ValuesIn(kTimes), NameOf);
INSTANTIATE_TEST_SUITE_P(Geometry, Impaired, testing::ValuesIn(kGeometry), NameOf);
INSTANTIATE_TEST_SUITE_P(Fields, Impaired, testing::ValuesIn(kFields), NameOf);
INSTANTIATE_TEST_SUITE_P(Colors, Impaired, testing::ValuesIn(kColors), NameOf);
INSTANTIATE_TEST_SUITE_P(GStreamer, Impaired, testing::ValuesIn(kGStreamer), NameOf);
INSTANTIATE_TEST_SUITE_P(Pairs, Impaired, testing::ValuesIn(kPairs), NameOf);

class Transcoded : public testing::TestWithParam<TestClip> {};

TEST_P(Transcoded, GivesNoFinding) {
    const TestClip& clip = GetParam();
    if (IsSanitized() && std::string_view(clip.name) != "alike") GTEST_SKIP();
    const std::string fields = clip.fieldType == 0 ? "" : " -flags +ildct+ilme";
    const std::string chroma =
        clip.fieldType == 0 ? " -vf format=yuv420p" : " -vf scale=interl=1,format=yuv420p";
    std::vector<std::string> transcodes = {FFV1, " -c:v prores_ks mov", " -c:v v210 mov",
                                           chroma + fields + " -c:v mpeg2video -b:v 4M mpg"};
    for (const int crf : {1, 18, 28, 40})
        transcodes.push_back(chroma +
                             fmt::format("{} -c:v libx264 -preset veryfast -crf {} mp4", fields, crf));
    if (clip.fieldType == 0)
        transcodes.push_back(chroma + " -c:v libx265 -preset ultrafast -x265-params log-level=error mp4");
    if (clip.alpha < 1) transcodes.push_back(" -pix_fmt yuva420p -auto-alt-ref 0 -c:v libvpx webm");
    if (std::string(clip.size) == "720x576") transcodes.push_back(chroma + fields + " -c:v dvvideo dv");
    if (std::string(clip.size) == "720x480" && clip.ticksPerFrame == k2997)
        transcodes.push_back(" -vf scale=interl=1,format=yuv411p" + fields + " -c:v dvvideo dv");
    for (const std::string& options : transcodes) {
        const bool keepsAlpha = options == transcodes[0] || options == transcodes[1];
        EXPECT_EQ(Kinds(clip, options), clip.alpha < 1 && !keepsAlpha ? "color.alpha" : "")
            << clip.name << options;
    }
}
INSTANTIATE_TEST_SUITE_P(Clips, Transcoded,
                         testing::Values(kPAL, kNTSC, kFilm, kTenBit, kHD, kFloat, kDeep, kAlpha, kSlow,
                                         kAlike),
                         [](const auto& clip) { return std::string(clip.param.name); });

} // namespace
