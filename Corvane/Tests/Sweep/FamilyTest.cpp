// Faults sought: words that are read as something else or written in another way than they are read, members
// in another order or under names that others have, refusals that don't say what to write, plans that change
// on their way through a file.
#include "Sweep/Family.h"

#include <set>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Engine/Failure.h"
#include "Tests/TestFolder.h"

namespace {

using namespace corvane;
using corvane::testing::TestFolder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr std::int64_t kSecond = 254016000000;

ClipSettings Base() {
    return {.pixelFormat = CvPixelFormat_BGRA_4444_8u,
            .size = {64, 48},
            .ticksPerFrame = kSecond / 25,
            .durationTicks = kSecond,
            .upper = {0.25f, 0.5f, 1, 1}};
}

Family Of(std::vector<Plan::Axis> axes, const std::string& output, bool zip = false) {
    return Family({"clips/bars.synthex", std::move(axes), zip, output}, Base());
}

std::vector<std::string> OutputsOf(const Family& family) {
    std::vector<std::string> outputs;
    for (std::int64_t i = 0; i < family.Count(); ++i) outputs.push_back(family.At(i).output);
    return outputs;
}

TEST(Axes, WordsAreWrittenInOneWay) {
    const std::tuple<const char*, const char*, const char*> kRows[] = {
        {"name", "a b", "a b"},
        {"size", "720x576", "720x576"},
        {"par", "32:30", "16:15"},
        {"rate", "50/2", "25"},
        {"rate", "24000/1001", "24000/1001"},
        {"rate", "29.97", "30000/1001"},
        {"fields", "lower", "lower"},
        {"format", "BGra", "BGra"},
        {"format", "V210_422_10u_601", "v210"},
        {"mode", "gradient", "gradient"},
        {"upper", "#FF8040", "#ff8040"},
        {"lower", "#01020304", "#01020304"},
        {"top-start", "1:0:0.2", "#ff0033"},
        {"top-end", "1:0.5:0", "1:0.5:0"},
        {"bottom-start", "-1:0:2:0.5", "-1:0:2:0.5"},
        {"bottom-end", "0:0:0:1", "#000000"},
        {"duration", "0.250", "0.25"},
        {"duration", "1001/30000", "1001/30000"},
        {"duration", "10", "10"},
        {"frames", "010", "10"},
        {"codec", "ffv1", "ffv1"},
        {"container", "mov", "mov"},
        {"part", "07:9", "7:9"}};
    std::set<std::string> seen;
    for (const auto& [axis, word, written] : kRows) {
        MemberSpec spec{"bars", Base(), {}, {}};
        EXPECT_EQ(FindAxis(axis)->read(word, spec), "") << axis;
        EXPECT_EQ(FindAxis(axis)->write(spec), written);
        seen.insert(axis);
    }
    EXPECT_EQ(seen.size(), AxisTable().size());
}

TEST(Family, CombinesAxesAndTheLastChangesFastest) {
    // Frames take the rate, whatever comes first.
    const Family family =
        Of({{"frames", {"3"}}, {"rate", {"24000/1001", "25"}}, {"codec", {"ffv1", "prores"}}},
           "out/x/{name}-{rate}.{codec}");
    EXPECT_EQ(family.Folder(), "out/x");
    EXPECT_THAT(OutputsOf(family), ElementsAre("bars-24000_1001.ffv1.mkv", "bars-24000_1001.prores.mov",
                                               "bars-25.ffv1.mkv", "bars-25.prores.mov"));
    EXPECT_EQ(family.At(1).spec.settings.durationTicks, kSecond / 24000 * 1001 * 3);
    EXPECT_EQ(family.At(0).settingsFile, family.At(1).settingsFile);
    EXPECT_EQ(family.At(2).settingsFile, "bars-25.synthex");
    EXPECT_THAT(
        OutputsOf(Of({{"rate", {"25", "50"}}, {"fields", {"upper", "lower"}}}, "{rate}/{fields}.mp4", true)),
        ElementsAre("25/upper.mp4", "50/lower.mp4"));
    EXPECT_THAT(OutputsOf(Of({{"container", {"mkv", "y4m"}}, {"upper", {"#ff0000", "1:0.5:0"}}},
                             "/{upper}.{container}")),
                ElementsAre("ff0000.mkv", "1_0.5_0.mkv", "ff0000.y4m", "1_0.5_0.y4m"));
}

TEST(Family, RefusesByASentenceThatSaysWhatToWrite) {
    using Axes = std::vector<Plan::Axis>;
    const std::tuple<Axes, const char*, bool, const char*> kRows[] = {
        {{{"speed", {"1"}}}, "a.mkv", false, "no axis 'speed'; choose some of name, size, par, rate, fields"},
        {{{"rate", {"29,97"}}}, "a.mkv", false, "rate '29,97' is not understood; write N/D"},
        {{{"rate", {"2997/100"}}}, "a.mkv", false, "such as 24000/1001"},
        {{{"fields", {"top"}}}, "a.mkv", false, "choose progressive, upper or lower"},
        {{{"format", {"bgr"}}}, "a.mkv", false, "choose one of bgra, vuya"},
        {{{"size", {"0x9"}}}, "a.mkv", false, "WIDTHxHEIGHT"},
        {{{"duration", {"0"}}}, "a.mkv", false, "seconds above 0"},
        {{{"duration", {"99999999"}}}, "a.mkv", false, "seconds above 0"},
        {{{"part", {"9:8"}}}, "a.mkv", false, "FIRST:LAST"},
        {{{"upper", {"#12345"}}}, "a.mkv", false, "#RRGGBB"},
        {{{"upper", {"nan:1:1"}}}, "a.mkv", false, "#RRGGBB"},
        {{{"rate", {}}}, "a.mkv", false, "rate has no values"},
        {{{"rate", {"25", "50/2"}}}, "{rate}.mkv", false, "the value '50/2' twice"},
        {{{"rate", {"25"}}, {"rate", {"30"}}}, "a.mkv", false, "rate is there twice"},
        {{{"frames", {"5"}}, {"duration", {"1"}}}, "a.mkv", false, "vary one of them"},
        {{{"rate", {"25", "50"}}, {"name", {"a"}}}, "{rate}.mkv", true, "rate has 2 values and name has 1"},
        {{{"rate", {"25", "50"}}, {"size", {"2x2", "4x4"}}, {"name", {"a", "b"}}},
         "o/{name}.mkv",
         false,
         "because {rate}, {size} is not in it; write o/{name}-{rate}-{size}.mkv"},
        {{{"rate", {"25", "50"}}}, "o/a.mkv", true, "both be a.mkv; write o/a-{rate}.mkv"},
        {{{"name", {"a", "a2"}}, {"rate", {"25", "5"}}},
         "{name}{rate}.mkv",
         false,
         "both be a25.mkv; put something"},
        {{{"name", {"a:b", "a/b"}}}, "{name}.mkv", false, "both be a_b.mkv"},
        {{}, "{rte}.mkv", false, "no placeholder {rte}; choose some of name"},
        {{}, "a{rate", false, "no placeholder {rate}"},
        {{}, "o/{rate}", false, "does not tell the kind of output; put a suffix behind it (png"},
        {{}, "o/", false, "names no file"},
        {{}, "o/a.synthex", false, "settings files are made by themselves"},
        {{}, "o/\xFF.mkv", false, "not valid UTF-8"},
        {{{"frames", std::vector<std::string>(1001, "1")}}, "a.mkv", false, "twice"}};
    for (const auto& [axes, output, zip, said] : kRows) {
        try {
            Of(axes, output, zip);
            ADD_FAILURE() << said;
        } catch (const UsageFailure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(said));
        }
    }
    Axes large;
    for (const char* const axis : {"size", "par", "name"}) {
        large.push_back({axis, {}});
        for (int i = 1; i <= 101; ++i)
            large.back().values.push_back(std::string(axis) == "par" ? fmt::format("{}:101", i)
                                                                     : fmt::format("{}x1", i));
    }
    EXPECT_THROW(Of(large, "{size}-{par}-{name}.mkv"), UsageFailure);
}

TEST(Plan, IsTheSameAfterAFile) {
    const TestFolder folder;
    const Plan plan{
        folder / "a.synthex", {{"rate", {"25", "30"}}, {"codec", {}}}, true, folder / "o/{rate}.mkv", 7};
    EXPECT_EQ(SavePlan(plan, folder / "plan.json"), "");
    EXPECT_EQ(ReadPlan(folder / "plan.json"), plan);
    EXPECT_THAT(corvane::testing::ReadFile(folder / "plan.json"), HasSubstr(R"("output": "o/{rate}.mkv")"));
    const std::pair<const char*, const char*> kRows[] = {
        {R"({"version":2,"base":"a","output":"b"})",
         "is of version 2, and this program reads 1; use the newer"},
        {R"({"base":"a","output":"b"})", "no version"},
        {R"({"version":1,"bas":"a"})", "no key 'bas'; choose some of version, base"},
        {R"({"version":1,"output":"b"})", "the base is no text"},
        {R"({"version":1,"base":"a","output":"b","zip":1})", "zip is neither"},
        {R"({"version":1,"base":"a","output":"b","axes":{}})", "the axes are no list"},
        {R"({"version":1,"base":"a","output":"b","axes":[{"name":"rate","values":[2.5]}]})",
         "a value is no text"},
        {R"({"version":1,"base":"a","output":"b","split":0})", "split is no number of parts"},
        {R"({"version":1,)", "this is no plan"},
        {"[]", "no object"}};
    for (const auto& [text, said] : kRows) {
        try {
            ReadPlan(folder.Write("bad.json", text));
            ADD_FAILURE() << said;
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), ::testing::AllOf(HasSubstr("bad.json: "), HasSubstr(said)));
        }
    }
}

} // namespace
