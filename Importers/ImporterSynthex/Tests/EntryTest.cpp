// Faults sought: a selector that answers the wrong thing or tests the wrong parameter, a byte written where
// none belongs.
#include "PluginFixture.h"

#include <map>
#include <set>

namespace {

using corvane::HostRecord;
using namespace std::string_view_literals;

class EntryTest : public PluginTest {};

TEST_F(EntryTest, SelectorsWithoutARecordOfTheirOwnAnswerTheirFixedResults) {
    // The results with an instance in the first parameter's record only, and in the second's only; otherwise
    // 3.
    std::map<int, std::pair<int, int>> expected = {{8, {0, 0}}, {28, {100, 100}}, {36, {101, 101}}};
    for (const int needsFirst : {46, 56, 59, 60}) expected[needsFirst] = {3, 5};
    for (const int needsSecond : {58, 61, 62, 63, 64}) expected[needsSecond] = {5, 3};
    const std::set<int> withRecords = {0, 1, 9, 14, 27, 37, 38, 39, 45, 47};
    for (int selector = -3; selector <= 70; ++selector) {
        if (withRecords.contains(selector)) continue;
        void* present[2] = {this, this};
        void* absent[2] = {nullptr, nullptr};
        const auto results = expected.contains(selector) ? expected[selector] : std::pair(3, 3);
        EXPECT_EQ(std::pair(mBundle.Call(selector, present, absent).result,
                            mBundle.Call(selector, absent, present).result),
                  results)
            << selector;
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
    const std::string_view name = "Synthex\0"sv, extension = "synthex\0"sv;
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

} // namespace
