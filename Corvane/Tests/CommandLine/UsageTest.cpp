// Faults sought: wrong usage that counts as a failure or as success, help that does not teach, output lost in
// silence.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Tests/Process.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

TEST(Usage, HelpTeachesByExample) {
    for (const std::string subcommand : {"", "info", "render", "new", "edit", "formats", "validate"}) {
        const ProcessResult result =
            subcommand.empty() ? RunSynthex({"--help"}) : RunSynthex({subcommand, "--help"});
        EXPECT_EQ(result.status, 0) << subcommand;
        EXPECT_THAT(result.out, AllOf(HasSubstr("Examples:\n  synthex "), HasSubstr("Exit status"),
                                      HasSubstr("--bundle")));
    }
    EXPECT_THAT(RunSynthex({"--version"}).out, testing::MatchesRegex("synthex [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Usage, WrongUsageIsExitStatusTwoAndNamesTheRemedy) {
    const std::string clip = Sample("defaults");
    const std::pair<std::vector<std::string>, const char*> kRows[] = {
        {{}, "synthex --help"},
        {{"infos"}, "no subcommand or option 'infos'"},
        {{"info"}, "synthex info --help"},
        {{"info", clip, "--jsno"}, "--jsno"},
        {{"render", clip}, "OUT is required"},
        {{"render", clip, "out.raw", "--jobs", "0"}, "--jobs"},
        {{"render", clip, "out.raw", "--jobs", "many"}, "--jobs"},
        {{"render", clip, "out.nonsense"}, "nonsense"},
        {{"render", clip, "-"}, "--format"},
        {{"validate", "--time-limit", "0"}, "--time-limit"},
    };
    for (const auto& [arguments, said] : kRows) ExpectRefused(arguments, 2, "", said);
    for (const char* const frames : {"", "1:", "9:3", "1:2:3", "-1:3", "99999999999999999999"})
        ExpectRefused({"render", clip, "out.raw", "--frames=" + std::string(frames)}, 2, "", "FIRST:LAST");
    for (const char* const frames : {"1800", "0:1800"})
        ExpectRefused({"render", clip, "out.raw", "--frames", frames}, 2, "", "0:1799");
}

TEST(Usage, TheBundleIsNamedBeforeOrAfterTheSubcommand) {
    const std::string bundle = corvane::testing::BundlePath(), clip = Sample("defaults");
    EXPECT_EQ(RunSynthex({"--bundle", bundle, "info", clip}).status, 0);
    EXPECT_EQ(
        RunSynthex({"info", clip, "--bundle", bundle}, {.environment = {{"SYNTHEX_BUNDLE", "/x"}}}).status,
        0);
    ExpectRefused({"--bundle", "/none", "formats"}, 1, "/none: ", "--bundle");
    ExpectRefused({"formats", "--bundle", "/none"}, 1, "/none: ", "--bundle");
}

TEST(Usage, AFullDiskIsNoticedByWhatIsPrinted) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"info", Sample("defaults")}, {"formats"}, {"formats", "--json"}})
        ExpectRefused(arguments, 1, "standard output: it can't be written (No space left on device)", "",
                      {.output = "/dev/full"});
}

TEST(Formats, AreListedAlikeForPeopleAndPrograms) {
    const std::string text = RunSynthex({"formats"}).out, json = RunSynthex({"formats", "--json"}).out;
    EXPECT_EQ(std::ranges::count(json, '\n'), 48);
    EXPECT_EQ(nlohmann::json::parse(json.substr(0, json.find('\n'))),
              (nlohmann::json{{"code", 1634887522},
                              {"characters", "bgra"},
                              {"name", "CvPixelFormat_BGRA_4444_8u"},
                              {"deliveredFormat", "CvPixelFormat_BGRA_4444_8u"}}));
    EXPECT_THAT(text, testing::ContainsRegex("v211 +CvPixelFormat_V210_422_10u_709 +"
                                             "CvPixelFormat_VUYA_4444_32f_709\n"));
}

} // namespace
