// Faults sought: an answer of the plug-in that is taken for another, a path that is found wrongly from its
// first half, blocks that leak, files that stay changed after a request was taken back.
#include "Engine/Preferences.h"

#include <fstream>
#include <iterator>

#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Services/ScriptedPlatform.h"
#include "Services/Suites.h"

namespace {

namespace fs = std::filesystem;
using corvane::PreferencesAnswer;
using corvane::PreferencesOutcome;
using corvane::PreferencesRequest;
using testing::HasSubstr;

std::string ReadText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class PreferencesTest : public testing::Test {
  protected:
    PreferencesTest() : bundle(fs::path(SYNTHEX_BUILD_DIR) / "lib/ImporterSynthex.bundle") {
        fs::create_directories(folder);
    }
    ~PreferencesTest() override {
        EXPECT_EQ(corvane::HostBlocksInUse(), 0);
        fs::remove_all(folder);
    }

    fs::path Write(const char* name, const char* text) const {
        std::ofstream(folder / name) << text;
        return folder / name;
    }

    /// Asks with a script of actions and answers.
    PreferencesAnswer Ask(const PreferencesRequest& request, const std::vector<std::string>& actions,
                          const std::vector<std::string>& answers = {}, bool cancel = false) {
        corvane::DialogScript script;
        for (const auto& action : actions) script.actions.push_back(corvane::ScriptedAction::Parse(action));
        for (const auto& answer : answers) script.answers.push_back(corvane::ScriptedAnswer::Parse(answer));
        script.cancel = cancel;
        corvane::ScriptedPlatform platform(script);
        const corvane::ScopedPlatform scope(platform);
        return corvane::RequestPreferences(bundle, request, journal);
    }

    corvane::Bundle bundle;
    corvane::FileJournal journal;
    fs::path folder = fs::path(testing::TempDir()) / ("preferences" + std::to_string(::getpid()));
};

TEST_F(PreferencesTest, ANewClipHasTheSequencesFormatAndWhatThePersonSet) {
    PreferencesRequest request;
    request.sequence = {
        .width = 720, .height = 576, .parNumerator = 16, .parDenominator = 15, .scale = 25, .sampleSize = 1};
    const auto answer = Ask(request, {"frameHeightID=480"});
    EXPECT_EQ(answer.outcome, PreferencesOutcome::kDone) << answer.message;
    for (const char* const part : {R"("mFrameWidth":720)", R"("mFrameHeight":480)", R"("numerator":16)",
                                   R"("denominator":15)", R"("ticksperframe":10160640000)"})
        EXPECT_THAT(answer.settings, HasSubstr(part));
    // The settings go round: edited again, without a file, and cancelled.
    const auto again = Ask({.file = {}, .settings = answer.settings, .sequence = {}}, {"frameWidthID=64"});
    EXPECT_THAT(again.settings, HasSubstr(R"("mFrameWidth":64)"));
    const auto cancelled =
        Ask({.file = {}, .settings = again.settings, .sequence = {}}, {"frameWidthID=1"}, {}, true);
    EXPECT_EQ(cancelled.outcome, PreferencesOutcome::kCancelled);
    EXPECT_EQ(cancelled.settings, again.settings);
}

TEST_F(PreferencesTest, ASavedFileIsFoundAgainFromTheFirstHalfOfItsPath) {
    // All these paths agree in their first halves; two have the same length. The last one saved to is meant.
    const std::string pathA = folder / "clip-A.synthex", pathB = folder / "clip-B.synthex",
                      longer = folder / "clip-longer.synthex";
    const auto answer = Ask(
        {}, {"saveToPathButtonID", "saveToPathButtonID", "saveToPathButtonID", "useAsCustomImporterID=true"},
        {"save=" + pathA, "save=" + longer, "save=" + pathB});
    EXPECT_EQ(answer.outcome, PreferencesOutcome::kUseFile) << answer.message;
    EXPECT_EQ(answer.file, pathB);
    const auto wide =
        Ask({}, {"useAsCustomImporterID=true"}, {"save=" + (folder / "Schön €.synthex").string()});
    EXPECT_EQ(wide.file, folder / "Schön €.synthex");
}

TEST_F(PreferencesTest, AnswersSayWhyThereAreNoSettings) {
    const auto malformed = Ask({.file = {}, .settings = "{", .sequence = {}}, {});
    EXPECT_EQ(malformed.outcome, PreferencesOutcome::kFailed);
    EXPECT_EQ(malformed.message, "JSON not well-formed");
    const auto tooLong = Ask({.file = {}, .settings = std::string(20000, ' '), .sequence = {}}, {});
    EXPECT_THAT(tooLong.message, HasSubstr("too long"));
    const auto wrongScript = Ask({}, {"frameWidthID=0"});
    EXPECT_EQ(wrongScript.outcome, PreferencesOutcome::kFailed);
    EXPECT_THAT(wrongScript.message, HasSubstr("frameWidthID"));

    // A file that can't be read, for everybody: it is too large for settings.
    const fs::path large = Write("large.synthex", "{}");
    fs::resize_file(large, (16u << 20) + 1);
    const auto unreadable = Ask({.file = large, .settings = {}, .sequence = {}}, {});
    EXPECT_EQ(unreadable.outcome, PreferencesOutcome::kUnreadable);
}

TEST_F(PreferencesTest, AJournalTakesBackWhatWasSaved) {
    const fs::path old = Write("old.synthex", "what was there");
    fs::permissions(old, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(old, folder / "link.synthex");
    const fs::path fresh = folder / "fresh.synthex";
    Ask({}, {"saveToPathButtonID", "saveToPathButtonID", "saveFileButtonID", "frameWidthID=3"},
        {"save=" + fresh.string(), "save=" + (folder / "link.synthex").string()});
    ASSERT_THAT(ReadText(old), HasSubstr("\"mFrameWidth\":3"));
    ASSERT_TRUE(fs::exists(fresh));
    journal.Undo();
    EXPECT_EQ(ReadText(old), "what was there");
    EXPECT_EQ(fs::status(old).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(fs::is_symlink(folder / "link.synthex"));
    EXPECT_FALSE(fs::exists(fresh));
}

} // namespace
