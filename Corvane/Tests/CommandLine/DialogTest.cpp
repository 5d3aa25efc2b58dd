// Faults sought: a clip that is changed by a request that failed or was cancelled, an exit status that lies,
// a script that is carried out half, Qt in a process that shows no window.
#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Process.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using Arguments = std::vector<std::string>;

nlohmann::json Read(const fs::path& clip) {
    return nlohmann::json::parse(ReadText(clip));
}

/// No display, whatever the test has.
const ProcessOptions kNoDisplay{
    .environment = {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", ""}}};

TEST(New, MakesAClipOfTheSequencesFormat) {
    const TemporaryFolder folder;
    const std::string clip = folder.Path() / "new.synthex";
    const auto made =
        RunSynthex({"new", clip, "--size", "720x576", "--par", "16:15", "--rate", "30000/1001", "--do",
                    "fieldTypePopupID=Upper Field First", "--do", "durationFramesTextID=300"});
    EXPECT_EQ(made.status, 0) << made.err;
    const auto settings = Read(clip);
    EXPECT_EQ(settings["mFrameWidth"], 720);
    EXPECT_EQ(settings["mFrameHeight"], 576);
    EXPECT_EQ(settings["mFramePAR"], (nlohmann::json{{"numerator", 16}, {"denominator", 15}}));
    EXPECT_EQ(settings["mFieldType"], 1);
    EXPECT_EQ(settings["mVideoFrameRate"]["ticksperframe"], 8475667200);
    EXPECT_EQ(settings["mVideoDuration"]["ticks"], 8475667200 * 300);

    // A file that exists is kept, unless it is to be replaced.
    const std::string before = ReadText(clip);
    const auto kept = RunSynthex({"new", clip, "--dump"});
    EXPECT_EQ(kept.status, 1);
    EXPECT_THAT(kept.err, AllOf(HasSubstr(clip), HasSubstr("--force")));
    EXPECT_EQ(ReadText(clip), before);
    EXPECT_EQ(RunSynthex({"new", clip, "--force", "--rate", "25", "--do", "frameWidthID=8"}).status, 0);
    EXPECT_EQ(Read(clip)["mFrameWidth"], 8);
    EXPECT_EQ(Read(clip)["mVideoFrameRate"]["ticksperframe"], 10160640000);
    EXPECT_THAT(folder.Names(), ElementsAre("new.synthex"));
}

TEST(New, SaysAtOnceWhatCanNotBe) {
    const TemporaryFolder folder;
    fs::create_directory(folder.Path() / "locked");
    fs::permissions(folder.Path() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
    struct Row {
        Arguments arguments;
        int status;
        const char* said;
    };
    const Row kRows[] = {
        {{"--size", "0x4"}, 2, "WIDTHxHEIGHT"},
        {{"--size", "32769x4"}, 2, "32768"},
        {{"--size", "64"}, 2, "WIDTHxHEIGHT"},
        {{"--size", "64x48x2"}, 2, "WIDTHxHEIGHT"},
        {{"--par", "1/1"}, 2, "N:D"},
        {{"--par", "4294967296:1"}, 2, "N:D"},
        {{"--rate", "0"}, 2, "N/D"},
        {{"--rate", "25/0"}, 2, "N/D"},
        {{"--rate", "29.97"}, 2, "N/D"},
        {{"--do", "=1"}, 2, "ID=VALUE"},
        {{"--answer", "maybe"}, 2, "save=PATH"},
    };
    const std::string clip = folder.Path() / "new.synthex";
    for (const Row& row : kRows) {
        Arguments arguments{"new", clip};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const auto result = RunSynthex(arguments);
        EXPECT_EQ(result.status, row.status) << testing::PrintToString(arguments);
        EXPECT_THAT(result.err, AllOf(StartsWith("synthex: "), HasSubstr(row.said)));
    }
    // Wrong places are found before a person has set everything: without a display, no word about that.
    const std::pair<fs::path, const char*> kPlaces[] = {
        {folder.Path(), "folder"},
        {folder.Path() / "none" / "clip.synthex", "the folder does not exist"},
        {folder.Path() / "locked" / "clip.synthex", "not allowed"},
        {folder.Path() / "\xFF.synthex", "not valid UTF-8"},
    };
    ProcessOptions options = kNoDisplay;
    options.unprivileged = true;
    fs::permissions(folder.Path(), fs::perms::all);
    for (const auto& [path, said] : kPlaces) {
        const auto result = RunSynthex({"new", path}, options);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, AllOf(HasSubstr(path.string()), HasSubstr(said)));
    }
    EXPECT_THAT(folder.Names(), ElementsAre("locked"));
}

TEST(Edit, StoresWhatTheDialogClosedWith) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings(""));
    EXPECT_EQ(
        RunSynthex({"edit", clip, "--do", "frameWidthID=7", "--do", "colorRenderingTypePopupID=1", "--do",
                    "chooseColorPopupID=2", "--do", "chooseColorButtonID1", "--answer", "color=0.5,2,-1,0.25",
                    "--do", "chooseColorAlphaTextID1=0.125", "--do", "drawFrameNumberCBID=false"})
            .status,
        0);
    auto expected =
        nlohmann::json{{"mAlphaPart", 0.125}, {"mRedPart", 0.5}, {"mGreenPart", 2.0}, {"mBluePart", -1.0}};
    EXPECT_EQ(Read(clip)["mBottomGradiantColorEnd"], expected);
    EXPECT_EQ(Read(clip)["mFrameWidth"], 7);
    EXPECT_EQ(Read(clip)["mRenderFormat"], 1);

    // The actions are done in their order: the rate keeps the frames, then the seconds are set.
    EXPECT_EQ(
        RunSynthex({"edit", clip, "--do", "frameRatePopupID=PAL - 25 fps", "--do", "durationSecondsTextID=2"})
            .status,
        0);
    EXPECT_EQ(Read(clip)["mVideoDuration"]["ticks"], 508032000000);
    EXPECT_THAT(folder.Names(), ElementsAre("clip.synthex"));
}

TEST(Edit, ACancelChangesNothingAndADumpIsOneObject) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings(""));
    const std::string before = ReadText(clip);
    const auto time = fs::last_write_time(clip);
    const auto result = RunSynthex({"edit", clip, "--do", "fieldTypePopupID=0", "--cancel", "--dump"});
    EXPECT_EQ(result.status, 3) << result.err;
    EXPECT_EQ(ReadText(clip), before);
    EXPECT_EQ(fs::last_write_time(clip), time);
    const auto state = nlohmann::json::parse(result.out);
    EXPECT_EQ(state["fieldTypePopupID"]["value"], 0);
    EXPECT_EQ(state["chooseColorButtonID1"]["enabled"], false);
    EXPECT_EQ(state["chooseColorPopupID"]["disabledItems"], (nlohmann::json{1, 2}));

    // A dump is for programs: what is said to people goes elsewhere.
    const auto used = RunSynthex({"edit", clip, "--dump", "--do", "useAsCustomImporterID=true", "--answer",
                                  "save=" + (folder.Path() / "other.synthex").string()});
    EXPECT_EQ(used.status, 0) << used.err;
    EXPECT_TRUE(nlohmann::json::parse(used.out).contains("okButton"));
    EXPECT_THAT(used.err, HasSubstr("other.synthex"));
}

TEST(Edit, TheSavedFileBecomesTheSource) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings("")), other = folder.Path() / "Schön.synthex";
    const std::string before = ReadText(clip);
    const auto result =
        RunSynthex({"edit", clip, "--do", "frameWidthID=9", "--do", "useAsCustomImporterID=true", "--answer",
                    "save=" + (folder.Path() / "none" / "x.synthex").string(), "--answer", "again=yes",
                    "--answer", "save=" + other.string(), "--do", "frameHeightID=5"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, AllOf(HasSubstr(clip.string()), HasSubstr(other.string())));
    EXPECT_EQ(ReadText(clip), before);
    EXPECT_EQ(Read(other)["mFrameWidth"], 9);
    EXPECT_EQ(Read(other)["mFrameHeight"], 5);
}

TEST(Edit, AScriptThatCanNotBeCarriedOutChangesNothing) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings("")),
                   other = folder.Write("other.synthex", "old");
    const std::string before = ReadText(clip), save = "save=" + other.string();
    struct Row {
        Arguments arguments;
        std::vector<const char*> said;
    };
    const Row kRows[] = {
        {{"--do", "noSuchID=1"}, {"noSuchID", "frameWidthID"}},
        {{"--do", "frameWidthID=0"}, {"frameWidthID", "1 to 32768"}},
        {{"--do", "frameWidthID=many"}, {"frameWidthID", "number"}},
        {{"--do", "frameWidthID=1,5"}, {"frameWidthID", "number"}},
        {{"--do", "frameWidthID"}, {"frameWidthID", "number"}},
        {{"--do", "fieldTypePopupID=Sideways"}, {"fieldTypePopupID", "Progressive"}},
        {{"--do", "chooseColorPopupID=1"}, {"chooseColorPopupID", "Field Colors"}},
        {{"--do", "drawFrameNumberCBID=yes"}, {"drawFrameNumberCBID", "true or false"}},
        {{"--do", "okButton=1"}, {"okButton", "press"}},
        {{"--do", "saveToPathStaticTextID=x"}, {"saveToPathStaticTextID"}},
        {{"--do", "saveFileButtonID"}, {"saveFileButtonID", "disabled"}},
        {{"--do", "chooseColorButtonID0"}, {"color=R,G,B,A"}},
        {{"--do", "chooseColorButtonID0", "--answer", "again=no"}, {"color=R,G,B,A", "again=no"}},
        {{"--answer", "color=cancel"}, {"color=cancel"}},
        // Found only after a file was saved, which is put back.
        {{"--do", "saveToPathButtonID", "--answer", save, "--do", "fieldTypePopupID=0", "--do",
          "chooseColorButtonID1"},
         {"chooseColorButtonID1", "disabled"}},
        {{"--do", "saveToPathButtonID", "--answer", "save=" + (folder.Path() / "fresh.synthex").string(),
          "--do", "saveToPathButtonID"},
         {"save=PATH"}},
    };
    for (const Row& row : kRows) {
        Arguments arguments{"edit", clip, "--dump"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const auto result = RunSynthex(arguments);
        const std::string trace = testing::PrintToString(row.arguments) + result.err;
        EXPECT_EQ(result.status, 2) << trace;
        EXPECT_EQ(result.out, "") << trace;
        for (const char* const part : row.said) EXPECT_THAT(result.err, HasSubstr(part)) << trace;
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << trace;
        EXPECT_EQ(ReadText(clip), before) << trace;
        EXPECT_EQ(ReadText(other), "old") << trace;
        EXPECT_THAT(folder.Names(), ElementsAre("clip.synthex", "other.synthex")) << trace;
    }
}

TEST(Edit, SaysWhyAClipCanNotBeEdited) {
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::all);
    const fs::path clip = folder.Write("clip.synthex", Settings("")),
                   broken = folder.Write("broken.synthex", "{");
    const fs::path readOnly = folder.Write("read-only.synthex", Settings(""));
    fs::permissions(readOnly, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    struct Row {
        fs::path path;
        const char* said;
        ProcessOptions options;
    };
    const Row kRows[] = {
        {folder.Path() / "none.synthex", "no such file", {}},
        {folder.Path(), "folder", {}},
        {broken, "JSON not well-formed", {}},
        {readOnly, "not allowed to write", {.unprivileged = true}},
        {clip, "no room", {.fileSize = 100}},
    };
    for (const Row& row : kRows) {
        const auto text = [&] { return fs::is_regular_file(row.path) ? ReadText(row.path) : ""; };
        const std::string before = text();
        const auto result = RunSynthex({"edit", row.path, "--do", "frameWidthID=3"}, row.options);
        EXPECT_EQ(result.status, 1) << row.path << result.err;
        EXPECT_THAT(result.err, AllOf(StartsWith("synthex: " + row.path.string()), HasSubstr(row.said)));
        EXPECT_EQ(text(), before) << row.path;
    }
    EXPECT_THAT(folder.Names(), ElementsAre("broken.synthex", "clip.synthex", "read-only.synthex"));
}

TEST(Edit, WithoutADisplayNamesTheOptionsThatNeedNone) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings(""));
    ProcessOptions deaf = kNoDisplay, unknown = kNoDisplay;
    deaf.environment[0].second = ":987";
    unknown.environment[2].second = "nonsense";
    for (const ProcessOptions& options : {kNoDisplay, deaf, unknown}) {
        const auto result = RunSynthex({"edit", clip}, options);
        EXPECT_EQ(result.status, 1) << result.err;
        EXPECT_THAT(result.err, AllOf(StartsWith("synthex: No window can be shown: "), HasSubstr("--do")));
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
    }
    EXPECT_EQ(ReadText(clip), Settings(""));
}

TEST(Edit, NothingButAWindowLoadsQt) {
    const TemporaryFolder folder;
    const fs::path clip = folder.Write("clip.synthex", Settings(""));
    const std::string trace = folder.Path() / "libraries";
    for (const Arguments& arguments : {Arguments{"info", clip}, {"edit", clip, "--dump"}}) {
        RunSynthex(arguments, {.environment = {{"LD_DEBUG", "files"}, {"LD_DEBUG_OUTPUT", trace}}});
    }
    std::size_t traces = 0;
    for (const std::string& name : folder.Names()) {
        if (!name.starts_with("libraries")) continue;
        ++traces;
        EXPECT_THAT(ReadText(folder.Path() / name),
                    AllOf(HasSubstr("libcorvane.so"), testing::Not(HasSubstr("Qt6"))));
    }
    EXPECT_EQ(traces, 2u);
}

} // namespace
