// Faults sought: an answer of the plug-in that is taken for another, a path that is found wrongly from its
// first half, blocks that leak.
#include "Engine/Preferences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Services/TestHooks.h"
#include "Tests/TestFolder.h"
#include "Tests/TestScript.h"
#include "Tests/TestSettings.h"

namespace {

namespace fs = std::filesystem;
using corvane::PreferencesAnswer;
using corvane::PreferencesOutcome;
using corvane::PreferencesRequest;
using ::testing::AllOf;
using ::testing::HasSubstr;

class PreferencesTest : public ::testing::Test {
  protected:
    ~PreferencesTest() override { EXPECT_EQ(corvane::HostBlocksInUse(), 0); }

    PreferencesAnswer Ask(const PreferencesRequest& request, const std::string& actions,
                          const std::string& answers = {}) {
        corvane::ScriptedPlatform platform(corvane::testing::Script(actions, answers));
        const corvane::ScopedPlatform scope(platform);
        return corvane::RequestPreferences(bundle, request, journal);
    }
    static PreferencesRequest OfText(const std::string& text) { return {.file = {}, .settings = text}; }

    const corvane::Bundle bundle{corvane::testing::BundlePath()};
    corvane::FileJournal journal;
    const corvane::testing::TestFolder folder;
};

TEST_F(PreferencesTest, SettingsGoRoundWithoutAFile) {
    const auto done = Ask(OfText(R"({"mFrameWidth":64})"), "frameHeightID=480");
    EXPECT_EQ(done.outcome, PreferencesOutcome::kDone) << done.message;
    EXPECT_THAT(done.settings, AllOf(HasSubstr(R"("mFrameWidth":64)"), HasSubstr(R"("mFrameHeight":480)")));
    const auto cancelled = Ask(OfText(done.settings), "frameWidthID=1; cancel");
    EXPECT_EQ(cancelled.outcome, PreferencesOutcome::kCancelled);
    EXPECT_EQ(cancelled.settings, done.settings);
}

TEST_F(PreferencesTest, ASavedFileIsFoundAgainFromTheFirstHalfOfItsPath) {
    // All these paths agree in their first halves; two have the same length. The last one saved to is meant.
    const std::string save = "save=" + folder.Path().string() + "/clip-";
    const auto answer =
        Ask({}, "saveToPathButtonID; saveToPathButtonID; saveToPathButtonID; useAsCustomImporterID=true",
            save + "A.synthex; " + save + "longer.synthex; " + save + "B.synthex");
    EXPECT_EQ(answer.outcome, PreferencesOutcome::kUseFile) << answer.message;
    EXPECT_EQ(answer.file, folder / "clip-B.synthex");
    EXPECT_EQ(Ask({}, "useAsCustomImporterID=true", save + "Schön €.synthex").file,
              folder / "clip-Schön €.synthex");
    journal.Undo();
    EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST_F(PreferencesTest, AnswersSayWhyThereAreNoSettings) {
    const auto malformed = Ask(OfText("{"), "");
    EXPECT_EQ(malformed.outcome, PreferencesOutcome::kFailed);
    EXPECT_EQ(malformed.message, "JSON not well-formed");
    EXPECT_THAT(Ask(OfText(std::string(kPrefsBufferSize, ' ')), "").message, HasSubstr("too long"));
    // A file that can't be read, for everybody: it is too large for settings.
    const fs::path large = folder.Write("large.synthex", "{}");
    fs::resize_file(large, (16u << 20) + 1);
    EXPECT_EQ(Ask({large, "", {}}, "").outcome, PreferencesOutcome::kUnreadable);
    fs::copy(corvane::testing::BundlePath(), folder / "mute.bundle", fs::copy_options::recursive);
    fs::remove(folder / "mute.bundle/Contents/Resources/ImporterSynthexPrefs.loom");
    const corvane::Bundle mute(folder / "mute.bundle"); // which is found by its identifier from here on
    EXPECT_THAT(Ask(OfText("{}"), "").message, HasSubstr("shows no dialog"));
}

} // namespace
