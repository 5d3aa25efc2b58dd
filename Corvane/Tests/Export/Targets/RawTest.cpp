// Faults sought: row padding in the file, a wrong order of components, a full disk seen only at the end.
#include "Export/Targets/RawTarget.h"

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Export/Files/OutputFile.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

using corvane::testing::ReadFile;
using corvane::testing::TestFolder;
using corvane::testing::TestFrame;

std::string WriteFrame(TestFrame& frame, bool native) {
    TestFolder folder;
    const auto target = corvane::MakeRawTarget(folder / "a.raw", native, frame.Facts());
    const auto packet = target->NewPacket();
    target->Prepare(frame.View(), 0, *packet);
    target->Consume(*packet);
    EXPECT_EQ(target->Finish(), "");
    return ReadFile(folder / "a.raw");
}

TEST(Raw, NativeIsTheBytesAsDeliveredWithoutPadding) {
    for (const RK_PixelFormat format :
         {kRK_4444 | kRK_YCbCr, kRK_4444 | kRK_AlphaFirst, kRK_4444 | kRK_Float}) {
        TestFrame frame(47, 33, format);
        frame.Draw(3, 3, 20, 20);
        std::string expected;
        for (std::uint32_t y = 0; y < 33; ++y)
            expected.append(reinterpret_cast<const char*>(frame.Pixel(0, y)),
                            47 * corvane::BytesPerPixel(format));
        EXPECT_TRUE(WriteFrame(frame, true) == expected) << format;
    }
}

TEST(Raw, OtherwiseOneOrderForAllFormats) {
    TestFrame bytes(47, 33, kRK_4444 | kRK_AlphaFirst);
    bytes.Draw(3, 3, 20, 20);
    const std::string bgra = WriteFrame(bytes, false);
    ASSERT_EQ(bgra.size(), 47u * 33 * 4);
    for (std::uint32_t i = 0; i < 47 * 33; ++i)
        for (std::uint32_t part = 0; part < 4; ++part)
            ASSERT_EQ(static_cast<std::byte>(bgra[i * 4 + part]), bytes.Pixel(i % 47, i / 47)[3 - part]);

    TestFrame floats(5, 2, kRK_4444 | kRK_Float);
    for (std::uint32_t i = 0; i < 10; ++i) floats.SetFloats(i % 5, i / 5, {0.0f, 0.5f, 1.0f, 0.25f});
    const std::string words = WriteFrame(floats, false);
    ASSERT_EQ(words.size(), 5u * 2 * 8);
    std::array<std::uint16_t, 4> pixel;
    std::memcpy(pixel.data(), words.data() + 72, 8);
    EXPECT_THAT(pixel, ::testing::Pointwise(::testing::FloatNear(1), {65535, 32768, 0, 16384}));
}

TEST(Raw, AFullDiskShowsBeforeTheFirstFrame) {
    TestFolder folder;
    EXPECT_THROW(corvane::OutputFile(folder / "huge").Reserve(std::uint64_t{1} << 52), corvane::Failure);
    EXPECT_TRUE(folder.Names().empty());
}

} // namespace
