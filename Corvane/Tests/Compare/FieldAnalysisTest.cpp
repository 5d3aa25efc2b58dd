#include <gmock/gmock.h>

#include "MadePictures.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

constexpr Color kUpper{0.9, 0.1, 0.2, 1}, kLower{0.2, 0.7, 0.3, 1};
const SampleCoding kCoded601{true, kMatrix601, false, 8};

MadeClip Fields(FieldOrder order) {
    return {288, order, [](double row, std::int64_t) { return std::lround(row) % 2 == 0 ? kUpper : kLower; }};
}

Color Half(const Color& a, const Color& b) {
    return {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2, 1};
}

struct FieldCase {
    const char* name;
    std::function<Color(std::uint32_t row, std::int64_t picture)> color =
        {}; // of the picture; the clip's if empty
    std::function<std::array<std::int64_t, 2>(std::int64_t)> frames =
        {}; // which a picture shows; its own if empty
    FieldOrder told = FieldOrder::kUpperFirst;
    bool fieldChroma = true;
    std::string kinds = {};
    const char* cause = "";
    std::function<Color(const Color&)> change = {};
    int subsampleH = 1;
    double top = 0, height = 288;
};

struct Found {
    std::vector<Finding> fields, colors;
};

Found Compare(const MadeClip& clip, const FieldCase& test) {
    const Pipeline pipeline{test.change,      kCoded601, {.subsampleW = 1, .subsampleH = test.subsampleH},
                            {6, 6, 6, false}, "ffv1",    {},
                            test.fieldChroma};
    VideoFacts video;
    video.tags = pipeline.tags;
    video.order = test.told;
    FieldAnalysis fields(clip.facts, video);
    ColorAnalysis colors(clip.facts, video, 2);
    const ExpectedRows expected = clip.Rows(0);
    Placement placement = Plain(clip.facts.size);
    placement.top = test.top;
    placement.height = test.height;
    for (std::int64_t picture = 0; picture < 40; ++picture) {
        std::vector<Color> rows;
        for (std::uint32_t y = 0; y < expected.Height(); ++y)
            rows.push_back(test.color ? test.color(y, picture) : expected.At(y));
        const auto frames = test.frames ? test.frames(picture) : std::array{picture, picture};
        FrameReading reading;
        reading.picture = picture;
        reading.certainty = 1;
        reading.frame = {double(frames[0]), double(frames[1])};
        const PictureRows made = MakePicture(rows, pipeline, clip.facts.Interlaced());
        const FieldShares shares = fields.Add(made, reading, test.told, placement, expected);
        colors.Add(made, pipeline.tags, placement, frames[0], expected, shares);
    }
    const ColorReport report = colors.Report();
    return {fields.Findings(report.fields), report.findings};
}

std::array<std::int64_t, 2> Telecine(std::int64_t picture) {
    constexpr std::int64_t kFrames[5][2] = {{0, 0}, {1, 1}, {1, 2}, {2, 3}, {3, 3}};
    return {picture / 5 * 4 + kFrames[picture % 5][0], picture / 5 * 4 + kFrames[picture % 5][1]};
}

Color Swapped(std::uint32_t row, std::int64_t) {
    return row % 2 == 0 ? kLower : kUpper;
}

constexpr auto kProgressive = FieldOrder::kProgressive, kUpperFirst = FieldOrder::kUpperFirst,
               kLowerFirst = FieldOrder::kLowerFirst;

const std::vector<FieldCase> kFieldCases = {
    {.name = "nothing", .kinds = ""},
    {.name = "swapped", .color = Swapped, .kinds = "fields.swapped"},
    {.name = "swapped and told otherwise", .color = Swapped, .told = kLowerFirst, .kinds = "fields.swapped"},
    {.name = "placed a row lower", .color = Swapped, .kinds = "", .top = 1},
    {.name = "blended",
     .color = [](auto, auto) { return Half(kUpper, kLower); },
     .told = kProgressive,
     .kinds = "fields.blended"},
    {.name = "one field",
     .color = [](auto, auto) { return kLower; },
     .told = kProgressive,
     .kinds = "fields.dropped",
     .cause = "upper field was dropped"},
    {.name = "bob",
     .color = [](auto, std::int64_t picture) { return picture % 2 == 0 ? kUpper : kLower; },
     .frames =
         [](std::int64_t picture) {
             return std::array{picture / 2, picture / 2};
         },
     .told = kProgressive,
     .kinds = "fields.dropped",
     .cause = "picture of its own"},
    {.name = "progressive chroma", .fieldChroma = false, .kinds = "fields.chroma"},
    {.name = "4:2:2", .fieldChroma = false, .kinds = "", .subsampleH = 0},
    {.name = "told otherwise", .told = kLowerFirst, .kinds = "tags.order"},
    {.name = "told progressive", .told = kProgressive, .kinds = "tags.order"},
    {.name = "a field late",
     .frames =
         [](std::int64_t picture) {
             return std::array{picture + 1, picture};
         },
     .told = kUpperFirst,
     .kinds = "fields.order"},
    {.name = "pulldown", .frames = Telecine, .kinds = "fields.pulldown", .cause = "2:3"},
    {.name = "scaled",
     .color = [](auto, auto) { return Half(kUpper, kLower); },
     .told = kProgressive,
     .kinds = "",
     .height = 240},
};

// A fault of fields that isn't found, that is taken for another one, or for wrong colors.
TEST(FieldAnalysis, NamesWhatWasDone) {
    const MadeClip clip = Fields(FieldOrder::kUpperFirst);
    for (const FieldCase& test : kFieldCases) {
        const Found found = Compare(clip, test);
        EXPECT_EQ(KindsOf(found.fields), test.kinds) << test.name;
        EXPECT_EQ(KindsOf(found.colors), "") << test.name;
        if (!found.fields.empty()) {
            EXPECT_THAT(found.fields[0].cause, HasSubstr(test.cause)) << test.name;
        }
    }
}

// Wrong colors bring fields together or exchange them nearly.
TEST(FieldAnalysis, IsNotMisledByWrongColors) {
    const auto exchanged = [](const Color& c) { return Color{c[1], c[0], c[2], c[3]}; };
    const auto taken709 = [](const Color& c) {
        return Decode(Encode(c, {true, kMatrix709, false, 8}), kCoded601);
    };
    const FieldCase cases[] = {{.name = "R and G", .kinds = "color.channels", .change = exchanged},
                               {.name = "matrix", .kinds = "color.matrix", .change = taken709}};
    for (const FieldCase& test : cases) {
        const Found found = Compare(Fields(FieldOrder::kUpperFirst), test);
        EXPECT_EQ(KindsOf(found.fields), "") << test.name;
        EXPECT_EQ(KindsOf(found.colors), test.kinds) << test.name;
    }
}

TEST(FieldAnalysis, TellsFieldsOfProgressiveClips) {
    const MadeClip clip{288, FieldOrder::kProgressive, [](double, std::int64_t) { return kUpper; }};
    EXPECT_EQ(KindsOf(Compare(clip, {.name = "interlaced", .told = FieldOrder::kLowerFirst}).fields),
              "tags.order");
    EXPECT_EQ(KindsOf(Compare(clip, {.name = "pulldown", .frames = Telecine}).fields), "fields.pulldown");
}

} // namespace
} // namespace corvane::testing
