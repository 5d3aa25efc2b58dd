// Faults sought: a selector that answers the wrong thing or tests the wrong parameter, a byte written where
// none belongs, a module that is released twice or never.
#include "PluginFixture.h"

#include <map>

#include "Services/Bundles.h"

namespace {

using corvane::HostRecord;

class EntryTest : public PluginTest {};

TEST_F(EntryTest, SelectorsWithoutARecordOfTheirOwnAnswerTheirFixedResults) {
    void* const null = nullptr;
    const std::map<int, int> fixed = {{8, 0}, {28, 100}, {36, 101}};
    const std::map<int, int> needParam1 = {{46, 3}, {56, 3}, {59, 3}, {60, 3}};
    const std::map<int, int> needParam2 = {{58, 3}, {61, 3}, {62, 3}, {63, 3}, {64, 3}};
    const std::map<int, int> withRecords = {{0, 0},  {1, 0},  {9, 0},  {14, 0}, {27, 0},
                                            {37, 0}, {38, 0}, {39, 0}, {45, 0}, {47, 0}};
    for (int selector = -3; selector <= 70; ++selector) {
        if (withRecords.contains(selector)) continue;
        // A record that begins with an instance, and one that begins with none.
        void* present[2] = {this, this};
        void* absent[2] = {null, null};
        const auto call = [&](void* param1, void* param2) {
            return mBundle.Call(selector, param1, param2).result;
        };
        const int with1 = call(present, absent), with2 = call(absent, present);
        if (fixed.contains(selector)) {
            EXPECT_EQ(with1, fixed.at(selector)) << selector;
            EXPECT_EQ(with2, fixed.at(selector)) << selector;
        } else if (needParam1.contains(selector)) {
            EXPECT_EQ(with1, 3) << selector;
            EXPECT_EQ(with2, 5) << selector;
        } else if (needParam2.contains(selector)) {
            EXPECT_EQ(with1, 5) << selector;
            EXPECT_EQ(with2, 3) << selector;
        } else {
            EXPECT_EQ(call(nullptr, nullptr), 3) << selector;
            EXPECT_EQ(with1, 3) << selector;
        }
        EXPECT_EQ(present[1], this);
    }
}

TEST_F(EntryTest, InitWritesSixFieldsAndNothingElse) {
    auto record = HostRecord<imImportInfoRec>();
    EXPECT_EQ(mBundle.Call(kSelector_Init, &record, nullptr).result, 400);
    ExpectedBytes expected(64);
    for (const std::size_t offset : {28u, 32u, 36u, 44u, 52u, 60u}) expected.Put<std::int32_t>(offset, 1);
    EXPECT_EQ(Bytes(record), expected);
}

TEST_F(EntryTest, OneFormatIsRegistered) {
    auto record = HostRecord<imIndFormatRec>();
    for (const std::intptr_t index : {std::intptr_t{1}, std::intptr_t{-1}}) {
        EXPECT_EQ(mBundle.Call(kSelector_GetIndFormat, reinterpret_cast<void*>(index), &record).result, 301);
        EXPECT_EQ(Bytes(record), ExpectedBytes(764));
    }
    EXPECT_EQ(mBundle.Call(kSelector_GetIndFormat, nullptr, &record).result, 0);
    const std::string_view name("Synthex", 8), extension("synthex", 8);
    EXPECT_EQ(Bytes(record), ExpectedBytes(764)
                                 .PutText(0, "XNYS")
                                 .Put<std::uint32_t>(4, 0xE008)
                                 .Put<std::uint32_t>(8, 0)
                                 .PutText(12, name)
                                 .PutText(268, name)
                                 .PutText(300, extension)
                                 .Put<std::uint32_t>(760, 0));
}

TEST_F(EntryTest, IndexPixelFormatNeedsAnInstanceAndLooksAtTheLowBitsOfTheIndex) {
    auto record = HostRecord<imIndPixelFormatRec>();
    const auto call = [&](std::uintptr_t index) {
        return mBundle.Call(kSelector_GetIndPixelFormat, reinterpret_cast<void*>(index), &record).result;
    };
    record.mPrivateData = nullptr;
    EXPECT_EQ(call(1), 5);
    record.mPrivateData = this;
    EXPECT_EQ(call(1), 301);
    EXPECT_EQ(CvPixelFormat(record.mPixelFormat), 0xCDCDCDCDu);
    EXPECT_EQ(call(std::uintptr_t{1} << 32), 0);
    EXPECT_EQ(CvPixelFormat(record.mPixelFormat), 0u);
}

TEST_F(EntryTest, CloseAndVideoNeedAnInstance) {
    EXPECT_EQ(Close(nullptr), 3);
    auto record = HostRecord<imSourceVideoRec>();
    record.mPrivateData = nullptr;
    EXPECT_EQ(mBundle.Call(kSelector_GetSourceVideo, nullptr, &record).result, 5);
    auto expected = HostRecord<imSourceVideoRec>();
    expected.mPrivateData = nullptr;
    EXPECT_EQ(Bytes(record), Bytes(expected));
}

TEST_F(EntryTest, ShutdownReleasesTheModuleOnceAndInitMakesItAnew) {
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

// Where the host does not know the bundle, initialisation answers as ever.
TEST(EntryWithoutBundle, InitAnswersAllTheSame) {
    const auto source = std::filesystem::path(SYNTHEX_BUILD_DIR) / "lib/ImporterSynthex.bundle";
    const auto copy =
        std::filesystem::path(testing::TempDir()) / ("other" + std::to_string(::getpid()) + ".bundle");
    std::filesystem::create_directories(copy / "Contents/Linux");
    std::filesystem::copy_file(source / "Contents/Linux/ImporterSynthex",
                               copy / "Contents/Linux/ImporterSynthex");
    std::ofstream(copy / "Contents/Info.plist")
        << "<plist><dict><key>CFBundleIdentifier</key><string>org.other</string>"
           "<key>CFBundleExecutable</key><string>ImporterSynthex</string></dict></plist>";
    {
        const corvane::Bundle bundle(copy); // throws where the answer is not 400
        auto format = HostRecord<imIndFormatRec>();
        EXPECT_EQ(bundle.Call(kSelector_GetIndFormat, nullptr, &format).result, 0);
    }
    std::filesystem::remove_all(copy);
}

} // namespace
