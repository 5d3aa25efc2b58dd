// Faults sought: wrong usage that counts as a failure or as success, help that does not teach, output lost in
// silence.
#include <cstdint>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Process.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Usage, HelpTeachesByExample) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"info", "--help"},
                                                      {"render", "--help"},
                                                      {"new", "--help"},
                                                      {"edit", "--help"},
                                                      {"formats", "--help"},
                                                      {"validate", "--help"}}) {
        const ProcessResult result = RunSynthex(arguments);
        EXPECT_EQ(result.status, 0) << arguments.front();
        EXPECT_THAT(result.out, AllOf(HasSubstr("Examples:\n  synthex "), HasSubstr("Exit status"),
                                      HasSubstr("--bundle")));
    }
    EXPECT_THAT(RunSynthex({"--version"}).out, testing::MatchesRegex("synthex [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Usage, WrongUsageIsExitStatusTwoAndNamesTheRemedy) {
    const std::string clip = Sample("defaults");
    struct Row {
        std::vector<std::string> arguments;
        const char* said;
    };
    const Row kRows[] = {
        {{}, "synthex --help"},
        {{"infos"}, "no subcommand or option 'infos'"},
        {{"info"}, "synthex info --help"},
        {{"info", clip, "--jsno"}, "--jsno"},
        {{"render", clip}, "OUT is required"},
        {{"render", clip, "out.raw", "--jobs", "0"}, "--jobs"},
        {{"render", clip, "out.raw", "--jobs", "many"}, "--jobs"},
        {{"render", clip, "out.raw", "--frames", ""}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames", "1:"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames", "9:3"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames", "1:2:3"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames=-1:3"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames", "99999999999999999999"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames", "1800"}, "0:1799"},
        {{"render", clip, "out.raw", "--frames", "0:1800"}, "0:1799"},
        {{"render", clip, "out.nonsense"}, "nonsense"},
        {{"render", clip, "-"}, "--format"},
        {{"validate", "--time-limit", "0"}, "--time-limit"},
    };
    for (const Row& row : kRows) {
        const ProcessResult result = RunSynthex(row.arguments);
        const std::string trace = testing::PrintToString(row.arguments);
        EXPECT_EQ(result.status, 2) << trace << result.err;
        EXPECT_EQ(result.out, "") << trace;
        EXPECT_THAT(result.err, AllOf(StartsWith("synthex: "), HasSubstr(row.said))) << trace;
    }
}

TEST(Usage, TheBundleIsNamedBeforeOrAfterTheSubcommand) {
    const std::string bundle = SYNTHEX_BUILD_DIR "/lib/ImporterSynthex.bundle";
    EXPECT_EQ(RunSynthex({"--bundle", bundle, "info", Sample("defaults")}).status, 0);
    EXPECT_EQ(RunSynthex({"info", Sample("defaults"), "--bundle", bundle},
                         {.environment = {{"SYNTHEX_BUNDLE", "/x"}}})
                  .status,
              0);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--bundle", "/none", "formats"}, {"formats", "--bundle", "/none"}}) {
        const ProcessResult result = RunSynthex(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, AllOf(StartsWith("synthex: /none: "), HasSubstr("--bundle")));
    }
}

TEST(Usage, AFullDiskIsNoticedByWhatIsPrinted) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"info", Sample("defaults")}, {"formats"}, {"formats", "--json"}}) {
        const ProcessResult result = RunSynthex(arguments, {.output = "/dev/full"});
        EXPECT_EQ(result.status, 1) << arguments.front();
        EXPECT_THAT(result.err, HasSubstr("standard output: it can't be written (No space left on device)"));
    }
}

TEST(Formats, AreListedAlikeForPeopleAndPrograms) {
    std::istringstream lines(RunSynthex({"formats", "--json"}).out);
    const std::string text = RunSynthex({"formats"}).out;
    std::set<std::uint32_t> codes;
    for (std::string line; std::getline(lines, line);) {
        const auto format = nlohmann::json::parse(line);
        const auto characters = format.at("characters").get<std::string>();
        const auto code = format.at("code").get<std::uint32_t>();
        for (std::uint32_t i = 0; i < 4; ++i)
            EXPECT_EQ(static_cast<unsigned char>(characters.at(i)), code >> (8 * i) & 0xFF) << line;
        EXPECT_TRUE(codes.insert(code).second) << line;
        EXPECT_THAT(text,
                    testing::ContainsRegex(characters + " +" + format.at("name").get<std::string>() + " +" +
                                           format.at("deliveredFormat").get<std::string>() + "\n"));
    }
    EXPECT_EQ(codes.size(), 48u);
}

} // namespace
