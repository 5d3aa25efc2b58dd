// Saving from the dialog, and the file as the clip's source. Faults sought: a file that misses the last edit,
// a question that is asked once too often or never, a path that gets lost, a button in the wrong state.
#include "PrefsFixture.h"

#include <csignal>
#include <fstream>
#include <iterator>

#include <sys/resource.h>

namespace {

class PrefsSaveTest : public PrefsTest {
  protected:
    std::string File(const char* name) const { return (mFolder / name).string(); }
    std::string Save(const char* name) const { return "save=" + File(name); }
    std::string Text(const char* name) const {
        std::ifstream file(File(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    Json State(const char* id, const char* key) const { return mState[id][key]; }
    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(mFolder), {}));
    }
};

TEST_F(PrefsSaveTest, TheFileHoldsWhatTheDialogClosedWith) {
    NotingPlatform platform(Script({"frameWidthID=100", "saveToPathButtonID", "frameWidthID=200",
                                    "saveToPathButtonID", "frameWidthID=300"},
                                   {Save("ä b.synthex"), "save=cancel"}));
    const Outcome outcome = Edit(kDistinctSettings, platform);
    EXPECT_EQ(outcome.result, kResult_Success);
    EXPECT_EQ(Text("ä b.synthex"), outcome.buffer.data())
        << "OK saves once more; no mark, no terminator, no more and no less";
    EXPECT_EQ(outcome.Settings()["mFrameWidth"], 300);
    EXPECT_EQ(platform.mOfferedNames, (std::vector<Mosk::String>{u"Default Frame", u"ä b.synthex"}));
    EXPECT_EQ(State("saveToPathStaticTextID", "value"), File("ä b.synthex"));
    EXPECT_EQ(State("saveFileButtonID", "enabled"), true);
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(PrefsSaveTest, CancelLeavesTheSettingsButNotTheFile) {
    std::ofstream(File("clip.synthex")) << std::string(5000, ' ') << "an old and longer text";
    const Outcome outcome =
        Edit(kDistinctSettings, Script({"frameWidthID=100", "saveToPathButtonID", "frameWidthID=200",
                                        "saveFileButtonID", "frameWidthID=300", "cancel"},
                                       {Save("clip.synthex")}));
    EXPECT_EQ(outcome.result, kResult_Cancelled);
    EXPECT_EQ(outcome.Settings()["mFrameWidth"], 47)
        << "a cancelled dialog writes the settings back as they were";
    EXPECT_EQ(Json::parse(Text("clip.synthex"))["mFrameWidth"], 200) << "the save button's last save";
}

TEST_F(PrefsSaveTest, CheckingTheSourceBoxSaves) {
    const Outcome outcome =
        Edit(kDistinctSettings, Script({"frameWidthID=100", "saveToPathButtonID", "frameWidthID=200",
                                        "useAsCustomImporterID=true", "frameWidthID=300", "cancel"},
                                       {Save("clip.synthex")}));
    EXPECT_EQ(outcome.result, kResult_Cancelled);
    EXPECT_EQ(Json::parse(Text("clip.synthex"))["mFrameWidth"], 200);
}

// Each row: answers to the save dialog and the error box, and the state that they lead to.
TEST_F(PrefsSaveTest, TheRetryLoop) {
    const std::string bad = "save=" + File("missing/clip.synthex");
    const std::string there = "save=/proc/version"; // exists, and nothing can be made beside it
    const struct {
        std::vector<std::string> answers;
        std::size_t boxes;
        bool saveButton;
        bool shown, saved;
    } kRows[] = {
        {{"save=cancel"}, 0, false, false, false},
        {{Save("clip.synthex")}, 0, true, true, true},
        {{bad, "again=no"}, 1, false, false, false},
        {{bad, "again=yes", "save=cancel"}, 1, false, false, false},
        {{bad, "again=yes", bad, "again=yes", Save("clip.synthex")}, 2, true, true, true},
        {{there, "again=no"}, 1, false, false, false},
        {{there, "again=yes", "save=cancel"}, 1, true, false, false}, // the failed path names a file
    };
    for (const auto& row : kRows) {
        NotingPlatform platform(Script({"saveToPathButtonID"}, row.answers));
        EXPECT_EQ(Edit(kDistinctSettings, platform).result, kResult_Success)
            << "OK closes even where its own save fails";
        const std::string name = row.answers.front() + " ... " + row.answers.back();
        EXPECT_EQ(platform.mBoxes.size(), row.boxes) << name;
        EXPECT_EQ(State("saveFileButtonID", "enabled"), row.saveButton) << name;
        EXPECT_EQ(State("saveToPathStaticTextID", "value") == File("clip.synthex"), row.shown) << name;
        EXPECT_EQ(std::filesystem::remove(File("clip.synthex")), row.saved) << name;
        EXPECT_EQ(FilesInFolder(), 0u) << name;
    }
}

TEST_F(PrefsSaveTest, TheErrorBoxAsksForAnotherPath) {
    NotingPlatform platform(
        Script({"saveToPathButtonID"}, {"save=" + File("missing/clip.synthex"), "again=no"}));
    Edit(kDistinctSettings, platform);
    ASSERT_EQ(platform.mBoxes.size(), 1u);
    const corvane::MessageBoxRequest& box = platform.mBoxes[0];
    EXPECT_EQ(box.title, u"Error saving file");
    EXPECT_EQ(box.message, u"There was a problem saving the file. Choose another path?");
    EXPECT_EQ(box.buttons, 80);
    EXPECT_EQ(box.defaultButton, 16);
    EXPECT_EQ(box.icon, 1);
}

/// Lets no file grow beyond a few bytes, as a full disk would, for the length of a scope.
class FullDisk {
  public:
    FullDisk() : mHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &mLimit);
        const rlimit few{16, mLimit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &few);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &mLimit);
        std::signal(SIGXFSZ, mHandler);
    }

  private:
    rlimit mLimit{};
    void (*mHandler)(int);
};

// The disk fills up while a file is replaced: the old text stays, the person is asked, and the new name is
// offered.
TEST_F(PrefsSaveTest, AFailedWriteLosesNothing) {
    std::ofstream(File("clip.synthex")) << "old";
    NotingPlatform platform(
        Script({"saveToPathButtonID"}, {Save("clip.synthex"), "again=yes", "save=cancel"}));
    {
        const FullDisk full;
        Edit(kDistinctSettings, platform);
    }
    EXPECT_EQ(platform.mBoxes.size(), 1u);
    EXPECT_EQ(platform.mOfferedNames, (std::vector<Mosk::String>{u"Default Frame", u"clip.synthex"}));
    EXPECT_EQ(Text("clip.synthex"), "old");
    EXPECT_EQ(FilesInFolder(), 1u);
}

// A failed path stays recorded: OK tries it once more, and by then its folder may be there.
TEST_F(PrefsSaveTest, AFailedPathStaysRecorded) {
    class Repairing : public NotingPlatform {
      public:
        Repairing(const corvane::DialogScript& script, std::filesystem::path folder)
            : NotingPlatform(script), mFolder(std::move(folder)) {}
        std::int32_t RunMessageBox(const corvane::MessageBoxRequest& request) override {
            std::filesystem::create_directory(mFolder);
            return NotingPlatform::RunMessageBox(request);
        }
        std::filesystem::path mFolder;
    };
    Repairing platform(Script({"saveToPathButtonID"}, {"save=" + File("late/clip.synthex"), "again=no"}),
                       File("late"));
    const Outcome outcome = Edit(kDistinctSettings, platform);
    EXPECT_EQ(State("saveFileButtonID", "enabled"), false);
    EXPECT_EQ(Text("late/clip.synthex"), outcome.buffer.data());
}

TEST_F(PrefsSaveTest, TheFileBecomesTheSource) {
    const struct {
        std::vector<std::string> actions, answers;
        int result;
        bool checked;
    } kRows[] = {
        {{"useAsCustomImporterID=true"}, {Save("clip.synthex")}, kResult_UseSavedFile, true},
        {{"saveToPathButtonID", "useAsCustomImporterID=true"},
         {Save("clip.synthex")},
         kResult_UseSavedFile,
         true},
        {{"saveToPathButtonID", "useAsCustomImporterID=true", "useAsCustomImporterID=false"},
         {Save("clip.synthex")},
         0,
         false},
        {{"useAsCustomImporterID=true"}, {"save=cancel"}, 0, false}, // unchecked again: there is no file
        {{"saveToPathButtonID"}, {Save("clip.synthex")}, 0, false},
        {{"useAsCustomImporterID=true", "cancel"}, {Save("clip.synthex")}, kResult_Cancelled, true},
    };
    for (const auto& row : kRows) {
        const Outcome outcome = Edit(kDistinctSettings, Script(row.actions, row.answers));
        EXPECT_EQ(outcome.result, row.result) << row.actions[0];
        EXPECT_EQ(State("useAsCustomImporterID", "value"), row.checked) << row.actions[0];
        EXPECT_EQ(State("useAsCustomImporterID", "enabled"), true);
        EXPECT_EQ(outcome.path.empty(), row.result != kResult_UseSavedFile);
    }
}

TEST_F(PrefsSaveTest, TheHostGetsTheFirstHalfOfThePath) {
    const Outcome outcome =
        Edit(kDistinctSettings, Script({"frameWidthID=100", "useAsCustomImporterID=true", "frameWidthID=200"},
                                       {Save("é.synthex")}));
    const Mosk::String path = Mosk::FromUTF8(File("é.synthex"));
    EXPECT_EQ(outcome.path, std::string(reinterpret_cast<const char*>(path.data()), path.size() + 1));
    EXPECT_EQ(Json::parse(Text("é.synthex"))["mFrameWidth"], 200);
    EXPECT_STREQ(outcome.buffer.data(), kDistinctSettings) << "the buffer is not written";
    EXPECT_EQ(outcome.record.mPrefsLength, corvane::HostRecord<imGetPrefsRec>().mPrefsLength);
}

} // namespace
