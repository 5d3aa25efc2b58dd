// Faults sought: an exception that reaches the host, a message that is off by a blank, a crash if the host
// refuses a suite or memory, a module that is released twice or never.
#include "PrefsFixture.h"

#include <cstdlib>
#include <new>
#include <stdexcept>

#include <dlfcn.h>

#include <fmt/format.h>

#include "Engine/Clip.h"
#include "Services/Foundation/AlertSink.h"
#include "Services/Frames/FrameBuffers.h"

namespace {

/// Allocations until one fails; negative: none fails. The plug-in's own go through the operator below too.
thread_local long tAllocationsLeft = -1;
thread_local long tBlocks = 0; ///< that were allocated here and not freed yet

} // namespace

// Not inlined: the compiler would see malloc and free in the pairs' halves, and take them for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (tAllocationsLeft == 0) throw std::bad_alloc();
    if (tAllocationsLeft > 0) --tAllocationsLeft;
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    ++tBlocks;
    return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    tBlocks -= block != nullptr;
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace {

using corvane::Answer;
using corvane::HostRecord;

class FailureTest : public PluginTest {
  protected:
    FailureTest() : PluginTest(true) {}
    ~FailureTest() override { corvane::SetSuiteRefusal(nullptr); }

    /// Asks a clip of these settings for its first frame, which it can't make.
    Answer FailFrame(const char* settings) {
        CvVexelHandle handle = nullptr;
        const Answer answer = AskForFrame(settings, 0, handle);
        EXPECT_EQ(answer.result, 3);
        EXPECT_EQ(handle, nullptr);
        return answer;
    }
};

TEST_F(FailureTest, TheMessageToTheLetter) {
    imFileInfoRec8 info;
    const Answer answer = GetInfo(u"/none", "{", nullptr, info);
    EXPECT_EQ(answer.result, 3);
    EXPECT_EQ(answer.alert, "plugin.CvImportModule  importmod:0x0 Threw an EXCEPTION during  selector:37. "
                            "what() returned JSON not well-formed\n");
    EXPECT_EQ(static_cast<void*>(info.mPrivateData), nullptr)
        << "an instance whose first call throws is not stored";

    void* instance = nullptr;
    EXPECT_EQ(Open(Write("clip.synthex", "[]"), instance).alert,
              "plugin.CvImportModule  importmod:0x0 Threw an EXCEPTION during  selector:39. what() returned "
              "boost::bad_any_cast: failed conversion using boost::any_cast\n");
    EXPECT_EQ(instance, nullptr);
}

TEST_F(FailureTest, AFrameNamesItsInstanceInTheMessage) {
    const Answer answer = FailFrame(R"({"mPixelFormat": 305419896, "mFrameWidth": 2, "mFrameHeight": 2})");
    const auto low = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(mInstance));
    EXPECT_EQ(
        answer.alert.find(fmt::format("plugin.CvImportModule  importmod:0x{:x} Threw an EXCEPTION during  "
                                      "selector:47. ",
                                      low)),
        0u)
        << answer.alert;
    EXPECT_NE(answer.alert.find("0x12345678"), std::string::npos) << answer.alert;
}

TEST_F(FailureTest, ARefusedSuiteIsReportedAndTheNextRequestWorks) {
    static const char* sRefused = "Corvane Legacy Suite";
    const auto refuse = [](const char* name, std::int32_t) { return std::strcmp(name, sRefused) == 0; };
    corvane::SetSuiteRefusal(refuse);
    imFileInfoRec8 info;
    EXPECT_EQ(GetInfo(u"/none", kDistinctSettings, nullptr, info).result, 3);
    for (const char* const refused : {kCvVexelCreator2Suite, kCvVexelSuite}) {
        sRefused = refused;
        const Answer answer = FailFrame(kDistinctSettings);
        EXPECT_NE(answer.alert.find(refused), std::string::npos) << answer.alert;
    }
}

// Catches an instance that is never destroyed, and a module that outlives its shutdown.
TEST_F(FailureTest, ClosingAndShutdownFreeWhatWasMade) {
    long before = tBlocks;
    imFileInfoRec8 info;
    GetInfo(u"/none", kDistinctSettings, nullptr, info);
    Close(info.mPrivateData);
    EXPECT_EQ(tBlocks, before);
    { const corvane::Bundle again(mBundle.Path()); }
    EXPECT_LT(tBlocks, before) << "its module is gone, and the one before it, too";
}

/// A call to the plug-in during which an allocation fails after so many. Building the message of the alert
/// needs memory too, and a failure there is not caught by the plug-in: the result is -1 then.
Answer CallWith(long allocations, const corvane::Bundle& bundle, int selector, void* access, void* record) {
    const corvane::AlertCollector quiet;
    Answer answer{.result = -1, .alert = {}};
    try {
        tAllocationsLeft = allocations;
        answer = bundle.Call(selector, access, record);
    } catch (const std::bad_alloc&) {
    }
    tAllocationsLeft = -1;
    return answer;
}

// A frame that could not be finished, as for a digit there was no memory, is given back.
TEST_F(FailureTest, EveryFailedAllocationGivesItsFrameBack) {
    const auto clip = corvane::Clip::OpenPrefs(std::make_shared<corvane::Bundle>(mBundle.Path()), "clip",
                                               kDistinctSettings);
    const auto live = corvane::GetFrameStatistics().liveFrames;
    int failures = 0;
    for (bool done = false; !done; ++failures) {
        try {
            tAllocationsLeft = failures;
            const corvane::Frame frame = clip->GetFrame(0);
            tAllocationsLeft = -1;
            done = true;
        } catch (const std::exception&) {
            tAllocationsLeft = -1;
        }
    }
    EXPECT_GT(failures, 3);
    EXPECT_EQ(corvane::GetFrameStatistics().liveFrames, live);
}

// The same for the dialog: it is never left half open, and the clip keeps its settings.
TEST_F(PrefsTest, EveryFailedAllocationInTheDialogIsAnswered) {
    auto script =
        corvane::testing::Script("frameWidthID=100; pixelAspectPopupID=12; drawFrameNumberCBID=false");
    script.dump = false; // the JSON library's destructors ask for memory, and end the process without it
    auto access = HostRecord<imFileAccessRec8>();
    access.mFilePath = u"/none";
    long failures = 0;
    for (bool done = false; !done; ++failures) {
        corvane::ScriptedPlatform platform(script);
        const corvane::ScopedPlatform scope(platform);
        std::string buffer(kPrefsBufferSize, 0);
        buffer.replace(0, 2, "{}");
        auto record = HostRecord<imGetPrefsRec>();
        record.mPrefs = buffer.data();
        record.mFirstTime = 0;
        const Answer answer = CallWith(failures, mBundle, kSelector_GetPrefs, &access, &record);
        ASSERT_EQ(corvane::CountLiveNodes(), 0) << failures;
        ASSERT_LT(failures, 100000) << "with memory again, the dialog lacks what it could not get before";
        done = answer.result == 0 && buffer[2] != 0;
        ASSERT_TRUE(done || std::strcmp(buffer.c_str(), "{}") == 0) << failures;
    }
    EXPECT_GT(failures, 100);
}

TEST_F(FailureTest, ShutdownReleasesTheModuleOnceAndInitMakesItAnew) {
    EXPECT_EQ(mBundle.Call(kSelector_Shutdown, nullptr, nullptr).result, 0);
    EXPECT_EQ(mBundle.Call(kSelector_Shutdown, nullptr, nullptr).result, 0);
    // Without a module the format is registered all the same.
    auto format = HostRecord<imIndFormatRec>();
    EXPECT_EQ(mBundle.Call(kSelector_GetIndFormat, nullptr, &format).result, 0);
    for (int i = 0; i < 3; ++i) {
        imImportInfoRec record;
        EXPECT_EQ(mBundle.Call(kSelector_Init, &record, nullptr).result, 400);
    }
}

// Initialization succeeds even if the host does not know the bundle.
TEST_F(FailureTest, InitAnswersAllTheSameWithoutABundle) {
    const auto copy = CopyBundle("other.bundle");
    std::ofstream(copy / "Contents/Info.plist")
        << "<plist><dict><key>CFBundleIdentifier</key><string>org.other</string>"
           "<key>CFBundleExecutable</key><string>ImporterSynthex</string></dict></plist>";
    const corvane::Bundle bundle(copy); // throws if the answer is not 400
    auto format = HostRecord<imIndFormatRec>();
    EXPECT_EQ(bundle.Call(kSelector_GetIndFormat, nullptr, &format).result, 0);
}

class Sink : public corvane::AlertSink {
  public:
    explicit Sink(Reply reply) : mReply(reply) {}
    Reply OnAlert(const std::string&) override {
        ++mCount;
        return mReply;
    }
    int mCount = 0;

  private:
    Reply mReply;
};

TEST_F(FailureTest, TheHostMayAskForTheExceptionOrForSilence) {
    void* const library = ::dlopen((mBundle.Path() / "Contents/Linux/ImporterSynthex").c_str(), RTLD_NOW);
    ASSERT_NE(library, nullptr) << ::dlerror();
    const auto entry = reinterpret_cast<CvImportEntry>(::dlsym(library, kCvImportEntryName));
    const std::u16string path = Write("clip.synthex", "{");
    const auto open = [&] {
        auto record = HostRecord<imFileOpenRec8>();
        record.mFilePath = path.c_str();
        record.mPrivateData = nullptr;
        return entry(kSelector_OpenFile8, corvane::StandardParameters(), nullptr, &record);
    };
    {
        const Sink rethrow(Sink::Reply::kRethrow);
        EXPECT_THROW(open(), std::runtime_error);
        EXPECT_EQ(rethrow.mCount, 1);
    }
    {
        const Sink silence(Sink::Reply::kSilence);
        EXPECT_EQ(open(), 3);
        EXPECT_EQ(open(), 3);
        EXPECT_EQ(silence.mCount, 1);
    }
    ::dlclose(library);
}

} // namespace
