// The preferences request around the dialog, and the dialog's entry. Faults sought: a dialog where none is
// due or the other way round, settings from the wrong source, a buffer written on failure, a reference that
// is never released.
#include "PrefsFixture.h"

#include "ImporterSynthexPrefsDialog/DataExchange.h"
#include "ImporterSynthexPrefsDialog/ImporterSynthexPrefsDialog.h"

namespace {

// A file's settings have width 111, the buffer's 47, the sequence's 1440.
TEST_F(PrefsTest, SettingsComeFromTheFileTheSequenceOrTheBuffer) {
    const std::u16string file = Write("clip.synthex", Changed({{"mFrameWidth", 111}}));
    const struct {
        bool file, firstTime, dialog;
        int width;
    } kRows[] = {{true, true, false, 111},
                 {true, false, true, 111},
                 {false, true, true, 1440},
                 {false, false, true, 47}};
    for (const auto& row : kRows) {
        NotingPlatform platform;
        const corvane::ScopedPlatform scope(platform);
        const Outcome outcome = Request(row.file ? file : u"/none", row.firstTime, kDistinctSettings);
        EXPECT_EQ(outcome.result, kResult_Success) << outcome.alert;
        EXPECT_EQ(platform.CountDialogs(), row.dialog) << row.file << row.firstTime;
        EXPECT_EQ(outcome.Settings()["mFrameWidth"], row.width);
        EXPECT_EQ(outcome.record.mPrefsLength, 10240);
    }
}

TEST_F(PrefsTest, ANewClipHasTheSequencesFormat) {
    NotingPlatform platform("cancel");
    const corvane::ScopedPlatform scope(platform);
    const Outcome outcome = Request(u"/none", true, "not looked at");
    EXPECT_EQ(outcome.result, kResult_Cancelled);
    const Json settings = outcome.Settings();
    EXPECT_EQ(settings["mFrameHeight"], 1080);
    EXPECT_EQ(settings["mFramePAR"], Json({{"numerator", 4}, {"denominator", 3}}));
    EXPECT_EQ(settings["mVideoFrameRate"]["ticksperframe"], 8475667200);
    EXPECT_EQ(settings["mVideoDuration"]["ticks"], 15240960000000) << "a cancelled dialog aligns nothing";
    EXPECT_EQ(settings["mFieldType"], 2) << "all else is at its default";
}

TEST_F(PrefsTest, FailuresLeaveTheBufferAlone) {
    const std::u16string none = u"/none", broken = Write("broken.synthex", "{"),
                         large = Write("large.synthex", "");
    std::filesystem::resize_file(mFolder / "large.synthex", Mosk::File::kSizeLimit + 1);
    const struct {
        std::u16string path;
        std::string prefs, actions;
        int result;
        const char* reason;
    } kRows[] = {
        {broken, "x", "", kResult_Unsupported, "JSON not well-formed"},
        {large, "x", "", kResult_FileUnreadable, ""},
        {none, "[1", "", kResult_Unsupported, "JSON not well-formed"},
        {none, R"({"mFrameWidth": "wide"})", "", kResult_Unsupported, "bad_any_cast"},
        {none, "{}", "frameWidthID=100; frameWidthID=none", kResult_Unsupported, "\"frameWidthID\" accepts"},
        {none, "{}", "frameWidthID=100; saveToPathButtonID", kResult_Unsupported, "no answer is left"},
    };
    for (const auto& row : kRows) {
        NotingPlatform platform(row.actions);
        const corvane::ScopedPlatform scope(platform);
        const Outcome outcome = Request(row.path, false, row.prefs);
        EXPECT_EQ(outcome.result, row.result) << row.reason;
        EXPECT_NE(outcome.alert.find(row.reason), std::string::npos) << outcome.alert;
        EXPECT_STREQ(outcome.buffer.data(), row.prefs.c_str());
    }
    const Outcome outcome = Request(none, false, "{}");
    EXPECT_EQ(outcome.result, kResult_Unsupported);
    EXPECT_NE(outcome.alert.find("without a user interface"), std::string::npos) << outcome.alert;
}

// A bundle whose layout is missing shows nothing and says nothing; one whose layout is broken says where.
TEST_F(PrefsTest, MissingAndBrokenLayouts) {
    const std::filesystem::path copy = mFolder / "Copy.bundle",
                                layout = copy / "Contents/Resources/ImporterSynthexPrefs.loom";
    std::filesystem::copy(BundlePath(), copy, std::filesystem::copy_options::recursive);
    const struct {
        const char* layout; ///< null: the file is removed
        int result;
        const char* reason;
    } kRows[] = {
        {"<dialog title='t' default='okButton' cancel='okButton'>\n<nonsense/></dialog>", kResult_Unsupported,
         "layout ImporterSynthexPrefs, line 2: expected an element of the layout script, found <nonsense>"},
        {"<dialog title='t' default='okButton' cancel='okButton'><button id='okButton' text='OK'/></dialog>",
         kResult_Unsupported, "Invalid type conversion."},
        {"", kResult_Success, ""},
        {nullptr, kResult_Success, ""},
    };
    for (const auto& row : kRows) {
        std::filesystem::remove(layout);
        if (row.layout) std::ofstream(layout) << row.layout;
        const corvane::Bundle bundle(copy);
        NotingPlatform platform;
        const corvane::ScopedPlatform scope(platform);
        const Outcome outcome = Request(u"/none", false, "{}", bundle);
        EXPECT_EQ(outcome.result, row.result) << outcome.alert;
        EXPECT_NE(outcome.alert.find(row.reason), std::string::npos) << outcome.alert;
        EXPECT_EQ(platform.CountDialogs(), 0);
    }
}

/// An exchange that tells when it goes.
class WatchedExchange : public ImporterSynthexPrefsDialogDataExchange {
  public:
    explicit WatchedExchange(int& alive) : mAlive(alive) { ++mAlive; }
    ~WatchedExchange() override { --mAlive; }

  private:
    int& mAlive;
};

TEST(DataExchange, EveryWayOfHoldingItGivesItsOneCountBack) {
    int alive = 0;
    {
        Mosk::MoskUnknownRef first(new WatchedExchange(alive));
        Mosk::MoskUnknownRef second = first, third = std::move(first);
        second = third;
        third = Mosk::MoskUnknownRef();
        second = *&second;
        EXPECT_EQ(Mosk::QueryInterface<IImporterSynthexPrefsDialogDataExchange>(second)->AddRef(), 3);
        second->Release();
        EXPECT_EQ(alive, 1);
        // NOLINTNEXTLINE(bugprone-use-after-move): that it is null is what is seen here.
        EXPECT_THROW(first->GetMoskUnknown(), Mosk::NullInterfaceException);
    }
    EXPECT_EQ(alive, 0);
}

TEST(DataExchange, AnswersItsOwnIdentifierAndForgetsOnlyCancellation) {
    const auto exchange = ImporterSynthexPrefsDialogDataExchange::Create();
    CFUUIDBytes identifier{0x51, 0x3E, 0xBD, 0xA4, 0x56, 0x8E, 0x46, 0x3F,
                           0xAD, 0xC7, 0x94, 0x3C, 0xA3, 0xA6, 0x19, 0x23};
    void* found = nullptr;
    EXPECT_EQ(exchange->QueryMap(identifier, &found), 0);
    EXPECT_EQ(found, static_cast<IImporterSynthexPrefsDialogDataExchange*>(exchange.Get()));
    for (std::size_t byte = 0; byte < 16; ++byte) {
        reinterpret_cast<unsigned char*>(&identifier)[byte] ^= 1;
        EXPECT_EQ(static_cast<std::uint32_t>(exchange->QueryMap(identifier, &found)), 0xA00A0001u);
        EXPECT_EQ(std::exchange(found, &found), nullptr);
        reinterpret_cast<unsigned char*>(&identifier)[byte] ^= 1;
    }
    exchange->UserCancelled();
    exchange->SetUseSavedFrameFileAsSource(true);
    EXPECT_TRUE(exchange->WasCancelled());
    exchange->SetPrefs({});
    EXPECT_FALSE(exchange->WasCancelled());
    EXPECT_TRUE(exchange->UsesSavedFrameFileAsSource());
}

/// The dialog's entry.
class DialogEntryTest : public PrefsTest {
  protected:
    ~DialogEntryTest() override {
        EXPECT_EQ(mExchange->AddRef(), 2) << "the dialog kept a reference";
        mExchange->Release();
        mExchange = {};
        EXPECT_EQ(mAlive, 0);
    }

    Mosk::MoskUnknownRef Unknown() const { return *mExchange.Get(); }

    /// Runs the dialog; returns what it wrote to standard error.
    std::string Run(const Mosk::String& id, Mosk::MoskUnknownRef unknown, corvane::UI_Platform& platform) {
        const corvane::ScopedPlatform scope(platform);
        testing::internal::CaptureStderr();
        try {
            HandleImporterSynthexPrefsDialog(id, std::move(unknown), nullptr, nullptr);
        } catch (...) {
            mFailure = std::current_exception();
        }
        return testing::internal::GetCapturedStderr();
    }
    /// The settings that a dialog hands over.
    SynthexInfo HandedOver(const std::string& actions, const std::string& answers = {}) {
        NotingPlatform platform(actions, answers);
        Run(mID, Unknown(), platform);
        mState = Json::parse(platform.GetDump());
        SynthexInfo info;
        mExchange->GetPrefs(info);
        return info;
    }

    int mAlive = 0;
    Mosk::InterfaceRef<WatchedExchange> mExchange{new WatchedExchange(mAlive)};
    std::exception_ptr mFailure;
    const Mosk::String mID = Mosk::FromUTF8(SYNTHEX_BUNDLE_IDENTIFIER ".prefs");
};

TEST_F(DialogEntryTest, ContractsAreReportedByExpressionAndLine) {
    const struct {
        Mosk::String id;
        Mosk::MoskUnknownRef unknown;
        const char *line, *expression;
    } kRows[] = {
        {mID.substr(0, mID.size() - 1), Unknown(), ":347:", "inDialogID == kImporterSynthexPrefsDialogID"},
        {mID + u"x", Unknown(), ":347:", "inDialogID == kImporterSynthexPrefsDialogID"},
        {mID, {}, ":350:", "dataExchange != NULL"},
    };
    for (const auto& row : kRows) {
        NotingPlatform platform;
        const std::string report = Run(row.id, row.unknown, platform);
        for (const char* const part :
             {"Importers/ImporterSynthex/Src/ImporterSynthexPrefsDialog:", row.line, row.expression,
              "void HandleImporterSynthexPrefsDialog(const Mosk::String &, Mosk::MoskUnknownRef, const "
              "lumui::drawbot::SupplierInterface *, lumui::ui::UI_Node *)"})
            EXPECT_NE(report.find(part), std::string::npos) << report;
        EXPECT_EQ(platform.CountDialogs(), 0);
        ASSERT_TRUE(mFailure);
        try {
            std::rethrow_exception(std::exchange(mFailure, nullptr));
        } catch (const lumcore::config::Error& error) {
            EXPECT_STREQ(
                error.what(),
                "$$$/lumcore/utility/Error/Contract/InputContractViolation=An input contract violation "
                "has occurred!");
            EXPECT_EQ((std::array{error.GetLevel(), error.GetModule(), error.GetNumber()}),
                      (std::array{0, 105, 25}));
        }
    }
}

// Settings that have a file already: the clip stays bound to it, and OK saves there.
TEST_F(DialogEntryTest, ARecordWithAFileOpensBoundToIt) {
    SynthexInfo info;
    info.mSavedFilePath = Path("clip.synthex");
    info.mDrawFrameNumber = false;
    mExchange->SetPrefs(info);
    corvane::RaiseProgramMessages(true); // a box that is shown checked is not one that somebody checks
    EXPECT_EQ(HandedOver("").mClipName, u"clip.synthex") << "OK hands over the name of the file it saved";
    EXPECT_EQ(State("saveToPathStaticTextID"), (mFolder / "clip.synthex").string());
    EXPECT_EQ(Json({State("useAsCustomImporterID"), State("useAsCustomImporterID", "enabled")}),
              Json({true, false}));
    EXPECT_EQ(State("saveFileButtonID", "enabled"), true);
    EXPECT_EQ(State("drawFrameNumberCBID"), false);
    EXPECT_TRUE(std::filesystem::exists(mFolder / "clip.synthex"));
    EXPECT_FALSE(mExchange->UsesSavedFrameFileAsSource());
    corvane::RaiseProgramMessages(false);
    EXPECT_TRUE(HandedOver("drawFrameNumberCBID=true").mDrawFrameNumber) << "what has no place in the text";
}

TEST_F(DialogEntryTest, CancelAfterASaveLeavesThatSaveInTheExchange) {
    const SynthexInfo info = HandedOver(
        "frameWidthID=100; saveToPathButtonID; drawFrameNumberCBID=false; frameWidthID=200; cancel",
        "save=" + (mFolder / "clip.synthex").string());
    EXPECT_TRUE(mExchange->WasCancelled());
    EXPECT_EQ(info.mFrameWidth, 100u);
    EXPECT_EQ(info.mClipName, u"Default Frame")
        << "a save hands over the settings before it renames the clip";
    EXPECT_EQ(info.mSavedFilePath, Path("clip.synthex"));
    EXPECT_TRUE(info.mDrawFrameNumber);
}

} // namespace
