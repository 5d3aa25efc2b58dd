// Faults sought: a header that tells another rate, order or aspect than the clip's, planes of the wrong size,
// and so all frames after the first in the wrong place.
#include "Export/Targets/Y4mTarget.h"

#include <gtest/gtest.h>

#include "Export/Export.h"
#include "Tests/Export/Picture/TestFrames.h"

namespace {

using corvane::FieldOrder;
using corvane::testing::TestFolder;
using corvane::testing::TestFrame;

std::string Write(TestFrame& frame, const std::string& sampling, int frames) {
    TestFolder folder;
    const auto target = corvane::MakeY4mTarget(folder / "a.y4m", sampling, frame.Facts());
    const auto packet = target->NewPacket();
    for (int i = 0; i < frames; ++i) {
        target->Prepare(frame.View(), i, *packet);
        target->Consume(*packet);
    }
    EXPECT_EQ(target->Finish(), "");
    return corvane::testing::ReadFile(folder / "a.y4m");
}

TEST(Y4m, HeaderAndPlanesHaveTheirPlaces) {
    struct Row {
        const char* sampling;
        RK_PixelFormat format;
        FieldOrder order;
        const char* interlacing;
        std::string colors;
        std::size_t frameBytes;
    };
    const Row rows[] = {
        {"", kRK_4444, FieldOrder::kProgressive, "p", "C420mpeg2 XYSCSS=420MPEG2", 47 * 33 + 2 * 24 * 17},
        {"422", kRK_4444, FieldOrder::kUpperFirst, "t", "C422 XYSCSS=422", 47 * 33 + 2 * 24 * 33},
        {"444p10", kRK_4444, FieldOrder::kLowerFirst, "b", "C444p10 XYSCSS=444p10", 2 * 3 * 47 * 33},
        {"", kRK_4444 | kRK_Float, FieldOrder::kUpperFirst, "t", "C420p16 XYSCSS=420p16",
         2 * (47 * 33 + 2 * 24 * 17)}};
    for (const Row& row : rows) {
        TestFrame frame(47, 33, row.format);
        frame.Facts().rate = {30000, 1001};
        frame.Facts().aspect = {40, 33};
        frame.Facts().order = row.order;
        frame.Draw(5, 5, 30, 20);
        const std::string file = Write(frame, row.sampling, 3);
        const std::size_t head = file.find('\n') + 1;
        EXPECT_EQ(file.substr(0, head - 1), "YUV4MPEG2 W47 H33 F30000:1001 I" + std::string(row.interlacing) +
                                                " A40:33 " + row.colors + " XCOLORRANGE=LIMITED");
        const std::size_t step = 6 + row.frameBytes;
        ASSERT_EQ(file.size(), head + 3 * step) << row.colors;
        EXPECT_EQ(file.substr(head, 6), "FRAME\n");
        EXPECT_EQ(file.substr(head + step, step), file.substr(head, step));
        EXPECT_EQ(file.substr(head + 2 * step), file.substr(head, step));
    }
}

} // namespace
