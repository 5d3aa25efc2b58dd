#include "Services/Raster/PixelFormats.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "ExpectedFormats.h"

using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

// Catches a swapped row, a mistyped code, a raster code that says something else than the name, and a way
// back that is not the way there.
TEST(PixelFormatsTest, RowsAreWhatTheirNamesSay) {
    ASSERT_EQ(kExpectedFormats.size(), 48u);
    for (std::size_t i = 0; i < kExpectedFormats.size(); ++i) {
        const corvane::PixelFormatRow& row = corvane::PixelFormatTable()[i];
        const ExpectedFormat& expected = kExpectedFormats[i];
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(row.code, expected.code);
        EXPECT_EQ(row.raster >= kRK_FirstExtended, expected.isExtended);
        EXPECT_EQ(corvane::IsConcrete(row.raster), !expected.isExtended);
        EXPECT_TRUE(expected.isExtended || row.raster == expected.delivered);
        const BEPixelFormat engine = SDKToBEPixelFormat(row.code);
        EXPECT_EQ(BEPixelFormatToRKPixelFormat(engine), row.raster);
        EXPECT_EQ(RKPixelFormatToBEPixelFormat(row.raster), engine);
        EXPECT_EQ(BEToSDKPixelFormat(engine), row.code);
    }
}

// Catches a conversion that reads outside the table or hands an unknown code on, and a message that a person
// can't use.
TEST(PixelFormatsTest, UnknownCodesAreNamed) {
    const auto names = [](const char* hex, const char* characters) {
        return ThrowsMessage<std::invalid_argument>(testing::AllOf(HasSubstr(hex), HasSubstr(characters)));
    };
    EXPECT_THAT([] { SDKToBEPixelFormat(0x30425941); }, names("0x30425941", "'AYB0'"));
    EXPECT_THAT([] { corvane::RasterFormatOf(0xFF7E200A); }, names("0xFF7E200A", "'..~.'"));
    EXPECT_THAT([] { RKPixelFormatToBEPixelFormat(14); }, names("0x0000000E", "'....'"));
    const BEPixelFormat first = SDKToBEPixelFormat(kExpectedFormats.front().code);
    for (const BEPixelFormat unknown : {BEPixelFormat{0}, first - 1, first + 48, ~BEPixelFormat{0}}) {
        EXPECT_THROW(BEToSDKPixelFormat(unknown), std::invalid_argument) << unknown;
        EXPECT_THROW(BEPixelFormatToRKPixelFormat(unknown), std::invalid_argument) << unknown;
    }
}

} // namespace
