#include "Services/Raster/PixelFormats.h"

#include <set>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "ExpectedFormats.h"

using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

// How a renderer tells from a raster code in which format frames of that kind are delivered.
std::uint32_t Delivered(std::uint32_t raster) {
    if (raster < 0x1000000) return raster;
    const std::uint32_t family = raster >> 24;
    const bool is8Bit601 =
        (raster & 1) && family >= 0x09 && family <= 0x0C && (raster & 0x30) == 0x30 && !(raster & 0x800);
    return is8Bit601 ? 12 : 2061;
}

// Catches a swapped row, a mistyped name or code, and a format delivered in the wrong matrix or depth.
TEST(PixelFormatsTest, TableIsTheHostsInItsOrder) {
    const auto table = corvane::PixelFormatTable();
    ASSERT_EQ(table.size(), kExpectedFormats.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        const ExpectedFormat& expected = kExpectedFormats[i];
        EXPECT_EQ(table[i].name, std::string("CvPixelFormat_") + expected.name);
        EXPECT_EQ(table[i].code, expected.code) << expected.name;
        EXPECT_EQ(Delivered(table[i].raster), expected.delivered) << expected.name;
        EXPECT_EQ(table[i].raster >= 0x1000000, expected.isExtended) << expected.name;
    }
}

// Catches two formats that share a raster code: the way back would give the wrong one.
TEST(PixelFormatsTest, ConversionsAreOneToOne) {
    std::set<std::uint32_t> engineCodes, rasterCodes;
    for (const ExpectedFormat& expected : kExpectedFormats) {
        const BEPixelFormat engine = SDKToBEPixelFormat(expected.code);
        const RK_PixelFormat raster = BEPixelFormatToRKPixelFormat(engine);
        EXPECT_EQ(BEToSDKPixelFormat(engine), expected.code) << expected.name;
        EXPECT_EQ(RKPixelFormatToBEPixelFormat(raster), engine) << expected.name;
        EXPECT_TRUE(engineCodes.insert(engine).second && rasterCodes.insert(raster).second) << expected.name;
    }
}

// Catches a conversion that reads outside the table or hands an unknown code on, and a message that a person
// can't use.
TEST(PixelFormatsTest, UnknownCodesAreNamed) {
    const auto names = [](const char* hex, const char* characters) {
        return ThrowsMessage<std::invalid_argument>(testing::AllOf(HasSubstr(hex), HasSubstr(characters)));
    };
    EXPECT_THAT([] { SDKToBEPixelFormat(0x30425941); }, names("0x30425941", "'AYB0'"));
    EXPECT_THAT([] { SDKToBEPixelFormat(0); }, names("0x00000000", R"('\x00\x00\x00\x00')"));
    EXPECT_THAT([] { SDKToBEPixelFormat(0xFF275C0A); }, names("0xFF275C0A", R"('\x0A\x5C\x27\xFF')"));
    EXPECT_THAT([] { RKPixelFormatToBEPixelFormat(14); }, names("0x0000000E", R"(\x0E)"));
    const BEPixelFormat first = SDKToBEPixelFormat(kExpectedFormats.front().code);
    for (const BEPixelFormat unknown : {BEPixelFormat{0}, first - 1, first + 48, ~BEPixelFormat{0}}) {
        EXPECT_THROW(BEToSDKPixelFormat(unknown), std::invalid_argument) << unknown;
        EXPECT_THROW(BEPixelFormatToRKPixelFormat(unknown), std::invalid_argument) << unknown;
    }
}

} // namespace
