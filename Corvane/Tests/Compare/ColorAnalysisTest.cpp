#include <gmock/gmock.h>

#include "MadePictures.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

Color Mix(const Color& a, const Color& b, double share) {
    Color color;
    for (std::size_t i = 0; i < 4; ++i) color[i] = a[i] + (b[i] - a[i]) * share;
    return color;
}

// A gradient of colors that move, with alpha if it is below 1 at the top.
MadeClip Gradient(std::uint32_t height, double alpha = 1, bool gray = false) {
    const Color top = gray ? Color{0, 0, 0, 1} : Color{0.9, 0.2, 0.1, alpha};
    const Color bottom = gray ? Color{1, 1, 1, 1} : Color{0.1, 0.3, 0.9, 1};
    return {height, FieldOrder::kProgressive, [=](double row, std::int64_t frame) {
                const double time = double(frame) / 40;
                return Mix(Mix(top, {0.1, 0.8, 0.3, alpha}, gray ? 0 : time),
                           Mix(bottom, {0.8, 0.8, 0.2, 1}, gray ? 0 : time), row / height);
            }};
}

MadeClip Solid(double red, double green, double blue) {
    return {240, FieldOrder::kProgressive, [=](double, std::int64_t) { return Color{red, green, blue, 1}; }};
}

ColorReport Compare(const MadeClip& clip, const Pipeline& pipeline) {
    VideoFacts video;
    video.codec = pipeline.codec;
    ColorAnalysis analysis(clip.facts, video, 2);
    for (std::int64_t frame = 0; frame < 20; ++frame) {
        const ExpectedRows expected = clip.Rows(frame);
        std::vector<Color> colors;
        for (std::uint32_t y = 0; y < expected.Height(); ++y) colors.push_back(expected.At(y));
        analysis.Add(MakePicture(colors, pipeline, false), pipeline.tags, Plain(clip.facts.size), frame,
                     expected, {});
    }
    return analysis.Report();
}

constexpr SampleCoding k601{true, kMatrix601, false, 8}, k709{true, kMatrix709, false, 8},
    k601Full{true, kMatrix601, true, 8}, kRgb{false, kMatrix709, true, 8};
constexpr PlanarFormat k420{.subsampleW = 1, .subsampleH = 1},
    kFull420{.subsampleW = 1, .subsampleH = 1, .fullRange = true};
constexpr VideoTags kSd{6, 6, 6, false}, kHd{1, 1, 1, false}, kUntagged{};

struct Case {
    const char* name;
    MadeClip clip;
    Pipeline pipeline;
    std::string kinds;
    const char* cause = "";
};

auto Taken(SampleCoding made, SampleCoding taken) {
    return [=](const Color& color) { return Decode(Encode(color, made), taken); };
}

const auto kGradient = Gradient(240), kHdGradient = Gradient(720), kAlphaGradient = Gradient(240, 0.3);
const PlanarFormat kRgbPlanes{.yCbCr = false}, kRgbaPlanes{.yCbCr = false, .alpha = true}, kTen{.bits = 10};
const SampleCoding kTen601{true, kMatrix601, false, 10};
const auto kShrunk = Taken(k601, k601Full);
const auto kExchanged = [](const Color& c) { return Color{c[2], c[1], c[0], c[3]}; };
const std::vector<Case> kCases = {
    {"nothing", kGradient, {{}, k601, k420, kSd}, ""},
    {"nothing, HD without tags", kHdGradient, {{}, k709, k420, kUntagged}, ""},
    {"right by its tag, unlike an export", kGradient, {{}, k709, k420, kHd}, ""},
    {"8 bits of a codec's noise in one color",
     Solid(0.75, 0, 0.75),
     {{}, k601, k420, kSd, "h264", [](double code, int plane) { return code + plane * 1.5; }},
     ""},
    {"matrix", kGradient, {{}, k709, k420, kSd}, "color.matrix", "BT.709 was taken for BT.601"},
    {"matrix before",
     kGradient,
     {Taken(k601, k709), kRgb, kRgbPlanes, {}},
     "color.matrix",
     "BT.601 was taken for BT.709"},
    {"matrix of one color", Solid(0.8, 0.4, 0.1), {{}, k709, k420, kSd}, "color.matrix"},
    {"matrix of gray", Gradient(240, 1, true), {{}, k709, k420, kSd}, ""},
    {"tag", kGradient, {{}, k601, k420, kHd}, "tags.matrix", "the tag says BT.709"},
    {"tag lost", kHdGradient, {{}, k709, k420, kSd}, "tags.matrix", "the tag says BT.601"},
    {"full as limited",
     kGradient,
     {{}, k601Full, k420, kSd},
     "color.range",
     "full range was taken for limited"},
    {"full tag", kGradient, {{}, k601, kFull420, {6, 6, 6, true}}, "tags.range"},
    {"limited as full twice",
     kGradient,
     {[](const Color& c) { return kShrunk(kShrunk(c)); }, k601, k420, kSd},
     "color.range",
     "twice"},
    {"R and B", kGradient, {kExchanged, kRgb, kRgbPlanes, {}}, "color.channels", "B, G, R"},
    {"R and B of one color", Solid(0.8, 0.4, 0.1), {kExchanged, k601, k420, kSd}, "color.channels"},
    {"linear",
     kGradient,
     {[](const Color& c) { return ToLinear(c, Transfer::kBT709); }, k601, k420, kSd},
     "color.transfer",
     "linear light was taken for gamma-coded"},
    {"sRGB coded twice",
     kHdGradient,
     {[](const Color& c) { return ToGammaCoded(c, Transfer::kSrgb); }, k709, k420, kHd},
     "color.transfer",
     "sRGB"},
    {"multiplied",
     kAlphaGradient,
     {[](const Color& c) {
          return Color{c[0] * c[3], c[1] * c[3], c[2] * c[3], c[3]};
      },
      kRgb,
      kRgbaPlanes,
      {}},
     "color.alpha",
     "once too often"},
    {"opaque",
     kAlphaGradient,
     {[](const Color& c) {
          return Color{c[0], c[1], c[2], 1};
      },
      kRgb,
      kRgbaPlanes,
      {}},
     "color.alpha",
     "lost"},
    {"over black",
     kAlphaGradient,
     {[](const Color& c) {
          return Color{c[0] * c[3], c[1] * c[3], c[2] * c[3], 1};
      },
      kRgb,
      kRgbaPlanes,
      {}},
     "color.alpha",
     "black"},
    {"no place for alpha", kAlphaGradient, {{}, k601, k420, kSd}, "color.alpha"},
    {"cut",
     kGradient,
     {{},
      k601,
      k420,
      kSd,
      "ffv1",
      [](double code, int plane) { return plane == 0 ? std::clamp(code, 90.0, 108.0) : code; }},
     "color.clipped"},
    {"8 bits in 10",
     kGradient,
     {{}, kTen601, kTen, kSd, "ffv1", [](double code, int) { return 4 * std::round(code / 4); }},
     "color.depth",
     "2 bits"},
    {"4 bits",
     kGradient,
     {{},
      k601,
      k420,
      kSd,
      "h264",
      [](double code, int plane) { return plane == 0 ? 16 * std::floor(code / 16) : code; }},
     "color.depth"},
    {"moved",
     kGradient,
     {{}, k601, k420, kSd, "ffv1", [](double code, int plane) { return code + 9 * (plane == 0); }},
     "color.error",
     "+9"},
};

// A cause that isn't found, that is taken for another one, or told twice; noise that is taken for a fault.
TEST(ColorAnalysis, NamesWhatWasDone) {
    for (const Case& test : kCases) {
        const ColorReport report = Compare(test.clip, test.pipeline);
        EXPECT_EQ(KindsOf(report.findings), test.kinds)
            << test.name << ' ' << (report.findings.empty() ? "" : report.findings[0].sentence);
        if (!report.findings.empty()) {
            EXPECT_THAT(report.findings[0].cause, HasSubstr(test.cause)) << test.name;
        }
    }
}

TEST(ColorAnalysis, SaysNothingOfColorsThatIntegersCannotHold) {
    Pipeline pipeline{{}, k601, k420, kSd};
    EXPECT_EQ(KindsOf(Compare(Solid(1.4, -0.2, 0.5), pipeline).findings), "");
}

TEST(ColorAnalysis, TellsTheFramesThatAreOff) {
    const MadeClip clip = Gradient(240);
    ColorAnalysis analysis(clip.facts, {}, 2);
    for (std::int64_t frame = 0; frame < 40; ++frame) {
        const ExpectedRows expected = clip.Rows(frame);
        std::vector<Color> colors;
        for (std::uint32_t y = 0; y < expected.Height(); ++y) colors.push_back(expected.At(y));
        const Pipeline pipeline{{}, frame < 10 || frame > 19 ? k601 : k601Full, k420, kSd};
        analysis.Add(MakePicture(colors, pipeline, false), kSd, Plain(clip.facts.size), frame, expected, {});
    }
    const ColorReport report = analysis.Report();
    ASSERT_EQ(KindsOf(report.findings), "color.range");
    EXPECT_EQ(report.findings[0].frames, (std::vector<FrameRange>{{10, 19}}));
}

// Where an hour of pictures is kept whole, or only its beginning is.
TEST(ColorSamples, KeepsAFewFromTheFirstPictureToTheLast) {
    ColorSamples samples;
    for (int picture = 0; picture < 20000; ++picture)
        for (int row = 0; samples.WantsNext() && row < 47; ++row) {
            ColorSample sample;
            sample.frame = picture;
            samples.Add(sample);
            break;
        }
    EXPECT_LE(samples.Get().size(), 6200u);
    EXPECT_EQ(samples.Get().front().frame, 0);
    EXPECT_GT(samples.Get().back().frame, 19990);
}

} // namespace
} // namespace corvane::testing
