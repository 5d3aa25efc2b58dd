// Faults sought: one cause told twice, frames counted from the wrong end, frames called missing that can't be
// read, steady times called uneven by their rounding, colors of a gradient taken for another frame's.
#include <cmath>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Compare/FrameSet.h"
#include "Compare/GradientReader.h"
#include "Compare/Timeline.h"
#include "lummediatypes.h"

namespace {

using namespace corvane;

constexpr double kUnread = -1;
constexpr double kForeign = -2;

// Frames from one to another one.
std::vector<double> Frames(int first, int last, int each = 1) {
    std::vector<double> frames;
    for (int frame = first; frame <= last; ++frame)
        frames.insert(frames.end(), static_cast<std::size_t>(each), frame);
    return frames;
}

std::vector<double> operator+(std::vector<double> a, const std::vector<double>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct Shown {
    std::vector<double> frames; // of 40
    double rate = 25;           // of pictures, in milliseconds
    double lower = 0;           // what odd rows are behind
    int late = -1;              // a picture that comes 7 ms late
    std::int64_t duration = 0;  // as the video tells it, in milliseconds; 0 if it does not
    std::uint32_t told = 0;     // the rate as the video tells it; 0 if it does not
    bool leavesTime = false;    // frames that are missing leave their time free
};

std::string FindingsOf(const Shown& shown) {
    TimelineFacts facts{.frames = {0, 39},
                        .clipFrames = 40,
                        .ticksPerFrame = lummediatypes::kTicksPerSecond / 25,
                        .video = {}};
    facts.video.timeBase = {1, 1000};
    if (shown.duration != 0) facts.video.duration = shown.duration;
    if (shown.told != 0) facts.video.averageRate = {shown.told, 1};
    Timeline timeline(facts);
    FrameReading reading;
    for (const double frame : shown.frames) {
        const double at = shown.leavesTime ? frame : static_cast<double>(reading.picture);
        reading.time = std::llround(at * 1000 / shown.rate) + (reading.picture == shown.late ? 7 : 0);
        reading.foreign = frame == kForeign;
        reading.frame = {};
        if (frame >= 0) reading.frame = {frame, frame - shown.lower};
        if (frame >= 0 && frame < shown.lower) reading.frame[1].reset();
        timeline.Add(reading);
        ++reading.picture;
    }
    std::string text;
    for (const Finding& finding : timeline.Findings(true)) {
        text += fmt::format("{}{}", text.empty() ? "" : "; ", finding.kind);
        if (!finding.frames.empty()) text += " " + NameFrames(finding.frames);
        if (!finding.cause.empty()) text += ": " + finding.cause;
    }
    return text;
}

TEST(Timeline, OneCauseGivesOneFinding) {
    const std::vector<double> all = Frames(0, 39);
    std::vector<double> turned(all.rbegin(), all.rend()), everySecond, sixOfSeven, pulledDown, oneInFive,
        exchanged = all;
    std::swap(exchanged[12], exchanged[13]);
    for (int frame = 0; frame < 40; ++frame) {
        if (frame % 2 == 0) everySecond.push_back(frame);
        if (frame % 7 != 3) sixOfSeven.push_back(frame);
        pulledDown = pulledDown + Frames(frame, frame, 2 + frame % 2);
        oneInFive = oneInFive + Frames(frame, frame, frame % 5 == 4 ? 2 : 1);
    }
    const std::pair<Shown, const char*> kRows[] = {
        {{all}, ""},
        {{all, 25, 1}, ""}, // fields of two frames are somebody else's affair
        {{Frames(0, 9) + Frames(13, 39)}, "frames.missing frames 10 to 12"},
        {{Frames(5, 29)},
         "frames.missing frames 0 to 4: its start was cut off; frames.missing frames 30 to 39: its end was "
         "cut off"},
        {{Frames(0, 9) + std::vector{kUnread, kUnread} + Frames(12, 38) + std::vector{kUnread}}, ""},
        {{Frames(0, 20) + std::vector{20., 20.} + Frames(21, 39)}, "frames.repeated frame 20"},
        {{Frames(0, 20) + std::vector{20., 20.} + Frames(23, 39)},
         "frames.repeated frame 20: in place of frames 21 to 22"},
        {{Frames(0, 39, 2), 50}, "frames.repeated frames 0 to 39: every frame is shown twice"},
        {{pulledDown, 62.5},
         "frames.repeated frames 0 to 39: frames are shown for two and for three pictures in turn, as 3:2 "
         "pulldown does"},
        {{oneInFive, 30},
         "frames.repeated frames 4, 9, 14, 19 and 4 more: one frame in 5 is shown again, as a conversion to "
         "a higher "
         "rate does"},
        {{everySecond, 12.5}, "frames.missing frames 1, 3, 5, 7 and 15 more: every second frame was dropped"},
        {{sixOfSeven, 25 * 6 / 7.0},
         "frames.missing frames 3, 10, 17, 24 and 2 more: one frame in 7 was dropped, as a conversion to a "
         "lower "
         "rate does"},
        {{exchanged}, "frames.order frames 12 to 13"},
        {{turned}, "frames.order frames 0 to 39: the video is played backwards"},
        {{all + Frames(0, 4)}, "frames.repeated frames 0 to 4: a part of the clip is played again"},
        {{Frames(0, 9) + std::vector{kForeign, kForeign} + Frames(12, 39)},
         "frames.foreign frames 10 to 11: in place of frames 10 to 11"},
        {{Frames(0, 9) + std::vector{77.} + Frames(10, 39)}, "frames.foreign frame 10: inserted"},
        {{all, 24}, "time.rate"},
        {{all, 30}, "time.rate"},
        {{all, 25, 0, 17}, "time.jitter"},
        {{all, 25.01}, ""}, // no more than rounding can make of it
        {{all, 25, 0, -1, 1620}, ""},
        {{all, 25, 0, -1, 1800}, "time.duration"},
        {{all, 25, 0, -1, 0, 50}, ""}, // of fields
        {{all, 25, 0, -1, 0, 30}, "tags.rate"},
        {{Frames(0, 9) + Frames(13, 39), 25, 0, -1, 0, 0, true}, "frames.missing frames 10 to 12"},
    };
    for (const auto& [shown, findings] : kRows) EXPECT_EQ(FindingsOf(shown), findings);
}

// Rows of a gradient that moves over 100 frames, by at most `pace` steps a frame.
std::array<std::vector<double>, 3> GradientAt(double frame, double pace) {
    std::array<std::vector<double>, 3> rows;
    for (int y = 0; y < 60; ++y) {
        rows[0].push_back(40 + y + pace * frame * (1 - y / 120.0));
        rows[1].push_back(90 + y / 2.0 + pace * frame * y / 90.0);
        rows[2].push_back(190 - y / 3.0 - pace * frame * 0.4);
    }
    return rows;
}

TEST(GradientReader, TellsFramesByColorsThatWereChanged) {
    constexpr double kPace = 0.8;
    std::vector<KeyFrame> keys;
    for (const std::int64_t frame : {0, 25, 50, 75, 99}) {
        KeyFrame key{.frame = frame, .rows = {}, .colors = {}};
        const auto rows = GradientAt(static_cast<double>(frame), kPace);
        for (std::size_t plane = 0; plane < 3; ++plane)
            for (const double value : rows[plane])
                key.rows[plane].push_back(static_cast<std::uint16_t>(std::lround(value)));
        for (std::size_t y = 0; y < 60; ++y)
            key.colors.push_back({rows[0][y] / 255, rows[1][y] / 255, rows[2][y] / 255, 1});
        keys.push_back(std::move(key));
    }
    const SampleCoding coding{false, kMatrix709, true, 8};
    const GradientChanges known{{[](const Color& color) { return ToGammaCoded(color, Transfer::kGamma22); },
                                 [](const Color& color) { return ToLinear(color, Transfer::kGamma22); }}};
    struct Change {
        double own, next, offset; // what is added of each plane, and of the next one, and what to
        double gamma = 1;
        bool flipped = false;
        int from = 0; // the first picture that is told
    };
    const Change kRows[] = {{1, 0, 0},
                            {219 / 255.0, 0, 16, 1, false, 24},
                            {0.95, 0.12, -9, 1, false, 24},
                            {1, 0, 0, 1, true, 3},
                            {1, 0, 0, 2.2, true, 3}};
    for (const auto& [own, next, offset, gamma, flipped, from] : kRows) {
        GradientReader reader(keys, 8, coding, known);
        for (int frame = 0; frame < 100; ++frame) {
            const auto colors = GradientAt(frame, kPace);
            PictureRows rows;
            for (std::size_t plane = 0; plane < 3; ++plane)
                for (std::size_t row = 0; row < 60; ++row) {
                    const std::size_t y = flipped ? 59 - row : row;
                    const double value = own * colors[plane][y] + next * colors[(plane + 1) % 3][y] + offset;
                    rows.plane[plane].push_back(
                        {.mean = static_cast<float>(std::round(255 * std::pow(value / 255, gamma)))});
                }
            FrameReading reading;
            reader.Read(rows, 0, reading);
            ASSERT_EQ(reading.frame[0].has_value(), frame >= from) << frame;
            if (!reading.frame[0]) continue;
            EXPECT_NEAR(*reading.frame[0], frame, std::max(reading.margin, 0.5));
            EXPECT_LT(reading.margin, 4);
        }
        EXPECT_EQ(reader.IsFlipped(), flipped);
        PictureRows foreign;
        for (auto& plane : foreign.plane) plane.assign(60, {.mean = 128});
        FrameReading reading;
        reader.Read(foreign, 0, reading);
        EXPECT_TRUE(reading.foreign);
        EXPECT_FALSE(reading.frame[0]);
    }
}

} // namespace
