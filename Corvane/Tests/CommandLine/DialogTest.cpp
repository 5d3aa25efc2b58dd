// Faults sought: a clip that is changed by a request that failed or was cancelled, an exit status that lies,
// a script that is carried out half, Qt in a process that shows no window.
#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;

nlohmann::json Read(const fs::path& clip) {
    return nlohmann::json::parse(ReadFile(clip));
}

/// No display, whatever the test has.
const ProcessOptions kNoDisplay{
    .environment = {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", ""}}};

TEST(New, MakesAClipOfTheSequencesFormat) {
    const TestFolder folder;
    const std::string clip = folder / "new.synthex";
    const auto made =
        RunSynthex(WithScript({"new", clip, "--size", "720x576", "--par", "16:15", "--rate", "30000/1001"},
                              "durationFramesTextID=300"));
    EXPECT_EQ(made.status, 0) << made.err;
    const auto settings = Read(clip);
    EXPECT_EQ(settings["mFrameWidth"], 720);
    EXPECT_EQ(settings["mFrameHeight"], 576);
    EXPECT_EQ(settings["mFramePAR"], (nlohmann::json{{"numerator", 16}, {"denominator", 15}}));
    EXPECT_EQ(settings["mVideoDuration"]["ticks"], 8475667200 * 300);

    // A file that exists is kept, unless it is to be replaced.
    ExpectRefused({"new", clip, "--dump"}, 1, clip, "--force");
    ExpectRefused(WithScript({"new", clip, "--force"}, "frameWidthID=9"), 1, clip, "size limit; raise it",
                  {.fileSize = 99});
    EXPECT_EQ(Read(clip), settings);
    EXPECT_EQ(RunSynthex({"new", clip, "--force", "--rate", "25", "--dump"}).status, 0);
    EXPECT_EQ(Read(clip)["mVideoFrameRate"]["ticksperframe"], 10160640000);
}

TEST(New, RefusesWrongPlacesBeforeAnyWindow) {
    const TestFolder folder;
    fs::create_directory(folder / "locked");
    fs::permissions(folder / "locked", fs::perms(0555));
    fs::permissions(folder.Path(), fs::perms::all);
    ProcessOptions options = kNoDisplay;
    const auto expectRefused = [&](const fs::path& path, const char* said) {
        ExpectRefused({"new", path}, 1, path, said, options);
    };
    expectRefused(folder.Path(), "folder");
    expectRefused(folder / "none/clip.synthex", "the folder does not exist");
    ExpectRefused({"new", folder / "\xFF.synthex"}, 1, folder / "\\xff.synthex", "not valid UTF-8", options);
    options.unprivileged = true; // root may write there
    if (RunsUnprivileged()) expectRefused(folder / "locked/clip.synthex", "not allowed");
    EXPECT_THAT(folder.Names(), ElementsAre("locked"));
}

class EditTest : public testing::Test {
  protected:
    const TestFolder folder;
    const fs::path clip = folder.Write("clip.synthex", SettingsText());
};

TEST_F(EditTest, StoresWhatTheDialogClosedWith) {
    // The actions are done in their order: the rate keeps the frames, then the seconds are set.
    const auto result =
        RunSynthex(WithScript({"edit", clip, "--dump"},
                              "chooseColorButtonID1; frameRatePopupID=PAL - 25 fps; durationSecondsTextID=2",
                              "color=0.5,2,-1,0.25"));
    EXPECT_EQ(result.status, 0) << result.err;
    // A dump is for programs: what is said to people goes elsewhere.
    EXPECT_TRUE(nlohmann::json::parse(result.out).contains("okButton"));
    EXPECT_THAT(result.err, HasSubstr("saved"));
    EXPECT_EQ(Read(clip)["mLowerFieldColor"]["mBluePart"], -1.0);
    EXPECT_EQ(Read(clip)["mVideoDuration"]["ticks"], 508032000000);
    EXPECT_THAT(folder.Names(), ElementsAre("clip.synthex"));
}

TEST_F(EditTest, ACancelChangesNothingAndADumpIsOneObject) {
    const auto result = RunSynthex(WithScript({"edit", clip, "--cancel", "--dump"}, "fieldTypePopupID=0"));
    EXPECT_EQ(result.status, 3) << result.err;
    EXPECT_EQ(ReadFile(clip), SettingsText());
    EXPECT_EQ(nlohmann::json::parse(result.out)["fieldTypePopupID"]["value"], 0);
    // What was saved from within stays, which is to be said.
    const std::string other = folder / "other.synthex";
    ExpectRefused(WithScript({"edit", clip, "--cancel"}, "saveToPathButtonID", "save=" + other), 3, clip,
                  other);
    EXPECT_EQ(Read(other)["mFrameWidth"], 64);
}

TEST_F(EditTest, TheSavedFileBecomesTheSource) {
    const fs::path other = folder / "Schön.synthex";
    fs::create_hard_link(folder.Write("link", "older"), other);
    const auto result =
        RunSynthex(WithScript({"edit", clip}, "frameWidthID=9; useAsCustomImporterID=true; frameHeightID=5",
                              "save=" + other.string()));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out,
                AllOf(HasSubstr(clip.string()), HasSubstr(other.string() + ": saved; its other names")));
    EXPECT_EQ(ReadFile(clip), SettingsText());
    EXPECT_EQ(Read(other)["mFrameWidth"], 9);
    EXPECT_EQ(Read(other)["mFrameHeight"], 5);
}

TEST_F(EditTest, SettingsThatTheirFileDoesNotTakeAreKept) {
    const auto expectKept = [&](std::vector<std::string> command, const fs::path& where,
                                const fs::path& save) {
        const auto arguments = WithScript(std::move(command), "useAsCustomImporterID=true; frameWidthID=9",
                                          "save=" + save.string() + "; again=no");
        ExpectRefused(arguments, 1, save, where);
        EXPECT_EQ(Read(where)["mFrameWidth"], 9);
    };
    expectKept({"new", folder / "new.synthex"}, folder / "new.synthex", folder / "none/other.synthex");
    expectKept({"edit", clip}, clip, folder.Path());
}

TEST_F(EditTest, AScriptThatCanNotBeCarriedOutChangesNothing) {
    const fs::path other = folder.Write("other.synthex", "old");
    fs::permissions(other, fs::perms(0600));
    fs::create_symlink(other, folder / "link.synthex");
    const std::string saveLink = "save=" + (folder / "link.synthex").string(),
                      saveFresh = "save=" + (folder / "fresh.synthex").string();
    const std::array<std::string, 3> kRows[] = {
        {"frameWidthID=0", "", "1 to 32768"},
        {"chooseColorButtonID0", "again=no", "color=R,G,B,A"},
        {"", "color=cancel", "color=cancel"},
        // Found only after a file was saved, which is put back.
        {"saveToPathButtonID; fieldTypePopupID=0; chooseColorButtonID1", saveLink, "disabled"},
        {"saveToPathButtonID; saveToPathButtonID", saveFresh, "save=PATH"},
    };
    for (const auto& [actions, answers, said] : kRows) {
        ExpectRefused(WithScript({"edit", clip, "--dump"}, actions, answers), 2, "", said);
        EXPECT_EQ(ReadFile(clip) + ReadFile(other), SettingsText() + "old") << said;
        EXPECT_EQ(fs::status(other).permissions(), fs::perms(0600)) << said;
        EXPECT_TRUE(fs::is_symlink(folder / "link.synthex")) << said;
        EXPECT_EQ(folder.Names().size(), 3u) << said;
    }
}

TEST_F(EditTest, WithoutADisplayNamesTheOptionsThatNeedNone) {
    ExpectRefused({"edit", clip}, 1, "No window can be shown: ", "--do", kNoDisplay);
    EXPECT_EQ(ReadFile(clip), SettingsText());
}

TEST_F(EditTest, NothingButAWindowLoadsQt) {
    const std::string trace = folder / "libraries";
    for (const Arguments& arguments : {Arguments{"info", clip}, {"edit", clip, "--dump"}})
        RunSynthex(arguments, {.environment = {{"LD_DEBUG", "files"}, {"LD_DEBUG_OUTPUT", trace}}});
    EXPECT_EQ(folder.Names().size(), 3u);
    for (const std::string& name : folder.Names())
        EXPECT_TRUE(name == "clip.synthex" ||
                    testing::Value(ReadFile(folder / name),
                                   AllOf(HasSubstr("libcorvane.so"), testing::Not(HasSubstr("Qt6")))))
            << name;
}

} // namespace
