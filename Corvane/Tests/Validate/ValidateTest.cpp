// Faults sought: a right plug-in that fails, a faulty one that passes, a hang or crash that takes the program
// along. Each row shows that a check can fail, and at which fault.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

/// Makes a bundle of that executable under the real one's identifier and with its resources.
fs::path MakeBundle(const TestFolder& folder, const fs::path& executable) {
    const fs::path bundle = folder / "Faulty.bundle";
    fs::create_directories(bundle / "Contents/Linux");
    for (const char* const name : {"Info.plist", "Resources"})
        fs::create_symlink(corvane::testing::BundlePath() / "Contents" / name, bundle / "Contents" / name);
    fs::create_symlink(executable, bundle / "Contents/Linux/ImporterSynthex");
    return bundle;
}

TEST(Validate, TheImporterAndAFaultlessWrapperPass) {
    const TestFolder folder;
    for (const bool terminal : {false, true}) {
        const fs::path bundle =
            terminal ? MakeBundle(folder, FAULTY_IMPORTER) : corvane::testing::BundlePath();
        const ProcessResult result = RunSynthex({"validate", bundle}, {.terminal = terminal});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.err, testing::MatchesRegex(terminal ? ".* of random sequence .*\r\x1b\\[K" : ""));
        EXPECT_THAT(result.out,
                    AllOf(testing::StartsWith("pass  The bundle loads.\n"),
                          testing::EndsWith(" checks passed.\n"), testing::Not(HasSubstr("FAIL"))));
    }
}

TEST(Validate, EachFaultIsFound) {
    struct Row {
        const char* fault;
        const char* found; ///< said of a check that failed
        bool needsHeapCounts = false;
        const char* timeLimit = "60"; ///< in seconds
    };
    constexpr Row kRows[] = {
        {"0 succeeds", "while initializing, the result is 0 instead of 400"},
        {"0 spoils byte 28 of 1", "while initializing, a capability is"},
        {"0 spoils byte 40 of 1", "it touched byte 40."},
        {"0 spoils byte 70 of 1", "it touched byte 70 of a record of 64 bytes."},
        {"0 spoils byte -1 of 1", "it touched byte -1 of a record of 64 bytes."},
        {"-1 succeeds", "while sending selector -1 without an instance, the result is 0 instead of 3."},
        {"3 succeeds", "while sending selector 3 with an instance, the result is 0 instead of 3."},
        {"58 spoils byte 100 of 2", "while sending selector 58 with an instance, it touched byte 100."},
        {"14 spoils byte 4 of 2", "the flags is"},
        {"27 succeeds", "while asking for a second pixel format, the result is 0 instead of 301."},
        {"a missing file is kept", "while opening a file that does not exist, it touched bytes 36 to 43."},
        {"39 succeeds", "while opening a file of an empty text, the result is 0 instead of 3."},
        {"37 spoils byte 12 of 2", "the depth is 223 instead of 32."},
        {"27 spoils byte 8 of 2", "while sending selector 27 as request "},
        {"37 spoils byte 174 of 2", "byte 174 of 214 is "},
        {"37 spoils byte 60 of 2", "it touched byte 60."},
        {"37 spoils byte 28 of 1", "it touched byte 28."},
        {"45 spoils byte 24 of 1", "while asking for the first preferred size, the width is"},
        {"38 spoils byte 8 of 2", "while asking for the size of the preferences, the size is"},
        {"preferences are not terminated", "the text does not end with a zero byte."},
        {"a frame is lost", "frames are still in use afterwards."},
        {"frames differ", "the second frame differs from the first."},
        {"frames differ", "row 0 is not of the color that the settings ask for."},
        {"47 spoils byte 20 of 2", "asking for a frame of CvPixelFormat_BGRA_4444_8u, it touched byte 20."},
        {"memory is lost", "bytes more are in use after 200 rounds.", true},
        {"opening hangs", "while opening a settings file, the time limit passed.", false, "2"},
        {"reports are forged", "while initializing, the plug-in ended the process with exit status 0."},
        {"reports have no end", "while initializing, the time limit passed.", false, "2"},
        {"files stay open", "the number of open files is"},
        {"shutdown fails", "while shutting down what was never initialized, the result is 1 instead of 0."},
        {"the preferred size crashes",
         "while asking for the first preferred size, the plug-in ended the process: Aborted."},
        {"the preferred size crashes", "3 of 26 checks failed.\n"}, // the others are made all the same
        {"information exits", "the plug-in ended the process with exit status 0."},
    };
    const TestFolder folder;
    const fs::path bundle = MakeBundle(folder, FAULTY_IMPORTER);
    for (const Row& row : kRows) {
        if (row.needsHeapCounts && IsSanitized()) continue;
        const ProcessResult result = RunSynthex({"validate", bundle, "--time-limit", row.timeLimit},
                                                {.environment = {{"SYNTHEX_FAULT", row.fault}}});
        EXPECT_EQ(result.status, 1) << row.fault;
        EXPECT_THAT(result.out, AllOf(HasSubstr("FAIL  "), HasSubstr(row.found))) << row.fault;
        EXPECT_TRUE(IsSanitized() || result.peakMiB < 200) << row.fault << result.peakMiB;
    }
}

TEST(Validate, EveryProcessThatCameOfTheBundleIsEnded) {
    const TestFolder folder;
    const fs::path left = folder / "left";
    RunSynthex({"validate", MakeBundle(folder, FAULTY_IMPORTER)},
               {.environment = {{"SYNTHEX_FAULT", "a process is left"}, {"SYNTHEX_LEFT", left}}});
    const std::string process = ReadFile(left);
    EXPECT_FALSE(process.empty());
    EXPECT_FALSE(fs::exists("/proc/" + process)) << process;
}

TEST(Validate, WhatIsNoPluginFails) {
    const TestFolder folder;
    const ProcessResult none = RunSynthex({"validate", folder / "none"});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.out, AllOf(HasSubstr("FAIL  The bundle loads: "), HasSubstr("there is no bundle here")));
}

} // namespace
