// Saving from the dialog, and the file as the clip's source. Faults sought: a file that misses the last edit,
// a question that is asked once too often or never, a path that gets lost, a button in the wrong state.
#include "PrefsFixture.h"

#include <set>

namespace {

class PrefsSaveTest : public PrefsTest {
  protected:
    std::string File(const char* name) const { return mFolder / name; }
    std::string Text(const char* name) const { return corvane::testing::ReadFile(mFolder / name); }
    Json Width(const char* name) const { return Json::parse(Text(name))["mFrameWidth"]; }

    const std::string mSave = "save=" + File("clip.synthex");
};

// Each row: answers to the save dialog and the error box, and the state that they lead to.
TEST_F(PrefsSaveTest, TheRetryLoop) {
    const std::string bad = "save=" + File("missing/clip.synthex");
    const std::string there = "save=/proc/version"; // exists, and nothing can be made beside it
    const struct {
        std::string answers;
        std::size_t boxes;
        bool saveButton, saved;
    } kRows[] = {
        {"save=cancel", 0, false, false},
        {mSave, 0, true, true},
        {bad + "; again=no", 1, false, false},
        {bad + "; again=yes; save=cancel", 1, false, false},
        {bad + "; again=yes; " + bad + "; again=yes; " + mSave, 2, true, true},
        {there + "; again=no", 1, false, false},
        {there + "; again=yes; save=cancel", 1, true, false}, // the failed path names a file
    };
    for (const auto& row : kRows) {
        NotingPlatform platform("saveToPathButtonID", row.answers);
        EXPECT_EQ(Edit(kDistinctSettings, platform).result, kResult_Success)
            << "OK closes even where its own save fails";
        EXPECT_EQ(platform.mBoxes.size(), row.boxes) << row.answers;
        EXPECT_EQ(State("saveFileButtonID", "enabled"), row.saveButton) << row.answers;
        EXPECT_EQ(State("saveToPathStaticTextID") == File("clip.synthex"), row.saved) << row.answers;
        EXPECT_EQ(std::filesystem::remove(File("clip.synthex")), row.saved) << row.answers;
        EXPECT_TRUE(mFolder.Names().empty()) << row.answers;
        for (const corvane::MessageBoxRequest& box : platform.mBoxes) {
            EXPECT_EQ(box.title, u"Error saving file");
            EXPECT_EQ(box.message, u"There was a problem saving the file. Choose another path?");
            EXPECT_EQ((std::array<int, 3>{box.buttons, box.defaultButton, box.icon}),
                      (std::array{80, 16, 1}));
        }
    }
}

// The disk fills up while a file is replaced: the old text stays, the person is asked, and the new name is
// offered.
TEST_F(PrefsSaveTest, AFailedWriteLosesNothing) {
    mFolder.Write("clip.synthex", "old");
    NotingPlatform platform("saveToPathButtonID", mSave + "; again=yes; save=cancel");
    {
        const corvane::testing::FullDisk full(16);
        Edit(kDistinctSettings, platform);
    }
    EXPECT_EQ(platform.mBoxes.size(), 1u);
    EXPECT_EQ(platform.mOfferedNames, (std::vector<Mosk::String>{u"Default Frame", u"clip.synthex"}));
    EXPECT_EQ(Text("clip.synthex"), "old");
    EXPECT_EQ(mFolder.Names().size(), 1u);
}

// A failed path stays recorded: OK tries it once more, and by then its folder may be there.
TEST_F(PrefsSaveTest, AFailedPathStaysRecorded) {
    struct Repairing : NotingPlatform {
        using NotingPlatform::NotingPlatform;
        std::int32_t RunMessageBox(const corvane::MessageBoxRequest& request) override {
            std::filesystem::create_directory(mFolder);
            return NotingPlatform::RunMessageBox(request);
        }
        std::string mFolder;
    };
    Repairing platform("saveToPathButtonID", "save=" + File("late/clip.synthex") + "; again=no");
    platform.mFolder = File("late");
    const Outcome outcome = Edit(kDistinctSettings, platform);
    EXPECT_EQ(State("saveFileButtonID", "enabled"), false);
    EXPECT_EQ(Text("late/clip.synthex"), outcome.buffer.data());
}

// In toolkits that raise messages for what the program sets, too, all comes out the same.
TEST_F(PrefsSaveTest, MessagesThatTellOfNoEditChangeNothing) {
    std::vector<std::string> clips{"{}", kDistinctSettings,
                                   Changed({{"mFieldType", 7}, {"mRenderFormat", 9}})};
    clips.push_back(Changed({{"mPixelFormat", 5}, {"mVideoFrameRate", {{"ticksperframe", 12345}}}}));
    for (const auto& entry : std::filesystem::directory_iterator(SYNTHEX_SOURCE_DIR "/Samples"))
        if (entry.path().extension() == ".synthex") clips.push_back(corvane::testing::ReadFile(entry.path()));
    for (const std::string& clip : clips)
        for (const std::string actions :
             {"", "durationFramesTextID=0; frameRatePopupID=3", "fieldTypePopupID=0; frameWidthID=5",
              "colorRenderingTypePopupID=1; colorRenderingTypePopupID=0; useAsCustomImporterID=true"}) {
            std::set<std::string> outcomes;
            for (const bool raise : {false, true}) {
                corvane::RaiseProgramMessages(raise);
                const bool saves = actions.ends_with("true");
                const Outcome outcome = Edit(clip, actions, saves ? mSave : "");
                outcomes.insert(std::to_string(outcome.result) + outcome.buffer.data() + mState.dump() +
                                Text("clip.synthex"));
            }
            corvane::RaiseProgramMessages(false);
            EXPECT_EQ(outcomes.size(), 1u) << actions << clip;
        }
}

// The host gets the first half of the path then, and the buffer is not written.
TEST_F(PrefsSaveTest, TheFileBecomesTheSource) {
    const Mosk::String path = Path("clip.synthex");
    const std::string half(reinterpret_cast<const char*>(path.data()), path.size() + 1);
    const struct {
        std::string actions, answers;
        int result;
        bool checked;
    } kRows[] = {
        {"useAsCustomImporterID=true; frameWidthID=200", mSave, kResult_UseSavedFile, true},
        {"saveToPathButtonID; useAsCustomImporterID=true", mSave, kResult_UseSavedFile, true},
        {"saveToPathButtonID; useAsCustomImporterID=true; useAsCustomImporterID=false", mSave, 0, false},
        {"useAsCustomImporterID=true", "save=cancel", 0, false}, // unchecked again: there is no file
        {"saveToPathButtonID", mSave, 0, false},
        {"useAsCustomImporterID=true; cancel", mSave, kResult_Cancelled, true},
    };
    for (const auto& row : kRows) {
        const bool used = row.result == kResult_UseSavedFile;
        const Outcome outcome = Edit(kDistinctSettings, row.actions, row.answers);
        EXPECT_EQ(outcome.result, row.result) << row.actions;
        EXPECT_EQ(State("useAsCustomImporterID"), row.checked) << row.actions;
        EXPECT_EQ(State("useAsCustomImporterID", "enabled"), true);
        EXPECT_EQ(outcome.path, used ? half : "") << row.actions;
        EXPECT_EQ(std::strcmp(outcome.buffer.data(), kDistinctSettings) == 0, used);
        const imGetPrefsRec untouched = corvane::HostRecord<imGetPrefsRec>();
        EXPECT_EQ(outcome.record.mPrefsLength == untouched.mPrefsLength, used);
        EXPECT_TRUE(!row.actions.ends_with("=200") || Width("clip.synthex") == 200);
    }
}

} // namespace
