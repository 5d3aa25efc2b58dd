// Faults sought: wrong usage that counts as a failure or as success, help that does not teach, output lost in
// silence.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Tests/Process.h"

namespace {

using Arguments = std::vector<std::string>;

TEST(Usage, HelpTeachesByExample) {
    for (const Arguments& command : {Arguments{},
                                     {"info"},
                                     {"render"},
                                     {"compare"},
                                     {"sweep"},
                                     {"new"},
                                     {"edit"},
                                     {"formats"},
                                     {"codecs"},
                                     {"schema"},
                                     {"validate"}}) {
        Arguments arguments = command;
        arguments.push_back("--help");
        const ProcessResult result = RunSynthex(arguments);
        EXPECT_EQ(result.status, 0);
        for (const char* const text : {"Examples:\n  synthex ", "Exit status", "--bundle"})
            EXPECT_THAT(result.out, testing::HasSubstr(text)) << testing::PrintToString(arguments);
    }
    EXPECT_THAT(RunSynthex({"--version"}).out, testing::MatchesRegex("synthex [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Usage, WrongUsageIsExitStatusTwoAndNamesTheRemedy) {
    const std::string clip = Sample("defaults");
    const std::pair<Arguments, const char*> kRows[] = {
        {{}, "synthex --help"},
        {{"in\n\x1b\x7f\u009b\xFF\u00e9"}, "no subcommand or option 'in\\n\\x1b\\x7f\\x9b\\xff\u00e9'"},
        {{"info"}, "synthex info --help"},
        {{"info", clip, "--jsno"}, "--jsno"},
        {{"render", clip}, "OUT is required"},
        {{"render", clip, "out.raw", "--jobs", "0"}, "--jobs"},
        {{"render", clip, "out.raw", "--memory", "-1"}, "--memory"},
        {{"render", clip, "out.nonsense"}, "nonsense"},
        {{"render", clip, "out.raw", "--frames", "1800"}, "0:1799"},
        {{"render", clip, "out.raw", "--frames="}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames=1:"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames=9:3"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames=-1:3"}, "FIRST:LAST"},
        {{"render", clip, "out.raw", "--frames=99999999999999999999"}, "FIRST:LAST"},
        {{"compare", clip}, "VIDEO is required"},
        {{"compare", clip, "a.mp4", "--ignore", "color,colour"}, "'colour' is no kind of finding; choose"},
        {{"compare", clip, "a.mp4", "--tolerance", "nan"}, "--tolerance"},
        {{"sweep", clip}, "BASE and OUT are required, or --plan"},
        {{"sweep", clip, "a.mkv", "--plan", "a.json"}, "excludes --plan"},
        {{"sweep", clip, "a.mkv", "--vary", "rate"}, "AXIS=VALUE"},
        {{"sweep", clip, "{rate}.mkv", "--vary", "rate=24,x"}, "rate 'x' is not understood"},
        {{"sweep", clip, "{codec}.mkv", "--codec", "ffv1,none"}, "no video codec called none"},
        {{"sweep", clip, "{codec}.mp4", "--codec", "ffv1"}, "mp4 can't carry ffv1"},
        {{"sweep", clip, "a.mkv", "--only", "0:1"}, "choose from 0:0"},
        {{"new", "x", "--size", "0x4"}, "'0x4' is not understood; write WIDTHxHEIGHT"},
        {{"new", "x", "--size", "32769x4"}, "32768"},
        {{"new", "x", "--size", "64"}, "WIDTHxHEIGHT"},
        {{"new", "x", "--size", "64x48x2"}, "WIDTHxHEIGHT"},
        {{"new", "x", "--par", "1/1"}, "N:D"},
        {{"new", "x", "--par", "4294967296:1"}, "N:D"},
        {{"new", "x", "--rate", "25/0"}, "N/D"},
        {{"new", "x", "--rate", "29.9.7"}, "N/D"},
        {{"new", "x", "--do", "=1"}, "ID=VALUE"},
        {{"new", "x", "--answer", "maybe"}, "save=PATH"},
        {{"validate", "--time-limit", "0"}, "--time-limit"},
        {{"validate", "--time-limit", "nan"}, "--time-limit"},
    };
    for (const auto& [arguments, said] : kRows) ExpectRefused(arguments, 2, "", said);
}

TEST(Usage, TheBundleIsNamedBeforeOrAfterTheSubcommand) {
    const std::string bundle = corvane::testing::BundlePath();
    const ProcessOptions elsewhere{.environment = {{"SYNTHEX_BUNDLE", "/x"}}};
    for (const Arguments& arguments :
         {Arguments{"--bundle", bundle, "formats"}, {"formats", "--bundle", bundle}})
        EXPECT_EQ(RunSynthex(arguments, elsewhere).status, 0);
    for (const Arguments& arguments :
         {Arguments{"--bundle", "/none", "formats"}, {"formats", "--bundle", "/none"}})
        ExpectRefused(arguments, 1, "/none: ", "--bundle");
}

TEST(Usage, WhatIsPrintedIsNotLostInSilence) {
    for (const Arguments& arguments :
         {Arguments{"info", Sample("defaults")}, {"formats"}, {"formats", "--json"}})
        ExpectRefused(arguments, 1, "standard output: it can't be written (No space left on device)", "",
                      {.output = "/dev/full"});
    ExpectRefused({"formats"}, 1, "standard output: it can't be written (Bad file descriptor)", "",
                  {.redirections = ">&-"});
}

TEST(Formats, AreListedAlikeForPeopleAndPrograms) {
    const std::string text = RunSynthex({"formats"}).out, lines = RunSynthex({"formats", "--json"}).out;
    EXPECT_EQ(std::ranges::count(lines, '\n'), 48);
    EXPECT_EQ(nlohmann::json::parse(lines.substr(0, lines.find('\n'))),
              (nlohmann::json{{"code", 1634887522},
                              {"characters", "bgra"},
                              {"name", "CvPixelFormat_BGRA_4444_8u"},
                              {"deliveredFormat", "CvPixelFormat_BGRA_4444_8u"}}));
    EXPECT_THAT(text, testing::ContainsRegex("v211 +CvPixelFormat_V210_422_10u_709 +"
                                             "CvPixelFormat_VUYA_4444_32f_709\n"));
}

} // namespace
