/// The host's media types: time, frame rate, pixel aspect ratio, field order.
///
/// All are small value types, usable in constant expressions and from any thread. Nothing here traps:
/// every operation is defined for every value, INT64_MIN, zero rates and zero denominators included.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>

namespace lummediatypes {

/// The host's time unit: ticks per second. Divisible by every rate in use, the 1001-based ones included.
inline constexpr std::int64_t kTicksPerSecond = 254016000000;

/// A frame rate, kept as the duration of one frame in ticks. Zero and negative values are possible
/// (they arrive from settings files) and mean "no rate".
class FrameRate {
  public:
    constexpr FrameRate() = default;
    constexpr explicit FrameRate(std::int64_t ticksPerFrame) : mTicksPerFrame(ticksPerFrame) {}

    /// The duration of one frame in ticks.
    constexpr std::int64_t GetTicksPerFrame() const { return mTicksPerFrame; }

    friend constexpr bool operator==(FrameRate, FrameRate) = default;

  private:
    std::int64_t mTicksPerFrame = 0;
};

/// The rate of `numerator / denominator` frames per second; the numerator is not 0. Exact for the rates named
/// below.
constexpr FrameRate FramesPerSecond(std::int64_t numerator, std::int64_t denominator = 1) {
    return FrameRate(kTicksPerSecond / numerator * denominator);
}

inline constexpr FrameRate kFrameRate_Video10 = FramesPerSecond(10);
inline constexpr FrameRate kFrameRate_Video12 = FramesPerSecond(12);
inline constexpr FrameRate kFrameRate_Video12_5 = FramesPerSecond(25, 2);
inline constexpr FrameRate kFrameRate_Video15 = FramesPerSecond(15);
inline constexpr FrameRate kFrameRate_23976 = FramesPerSecond(24000, 1001);
inline constexpr FrameRate kFrameRate_Film24 = FramesPerSecond(24);
inline constexpr FrameRate kFrameRate_VideoPAL = FramesPerSecond(25);
inline constexpr FrameRate kFrameRate_VideoNTSC = FramesPerSecond(30000, 1001);
inline constexpr FrameRate kFrameRate_Video30 = FramesPerSecond(30);
inline constexpr FrameRate kFrameRate_VideoPAL_HD = FramesPerSecond(50);
inline constexpr FrameRate kFrameRate_VideoNTSC_HD = FramesPerSecond(60000, 1001);
inline constexpr FrameRate kFrameRate_Video60 = FramesPerSecond(60);
inline constexpr FrameRate kFrameRate_Video100 = FramesPerSecond(100);
inline constexpr FrameRate kFrameRate_Video1000 = FramesPerSecond(1000);

static_assert(kFrameRate_Video12_5.GetTicksPerFrame() == 20321280000);
static_assert(kFrameRate_23976.GetTicksPerFrame() == 10594584000);
static_assert(kFrameRate_VideoNTSC.GetTicksPerFrame() == 8475667200);
static_assert(kFrameRate_VideoNTSC_HD.GetTicksPerFrame() == 4237833600);

/// A point in time or a duration, in ticks. Signed; negative times are valid.
class TickTime {
  public:
    constexpr TickTime() = default;
    constexpr explicit TickTime(std::int64_t ticks) : mTicks(ticks) {}

    /// The ticks, as they were given.
    constexpr std::int64_t GetTicks() const { return mTicks; }

    /// The index of the frame that holds this time: ticks divided by the frame duration, rounded towards
    /// minus infinity (one tick before zero lies in frame -1). A rate of 0 gives frame 0.
    constexpr std::int64_t ToFrame64(FrameRate rate) const;

    /// `ToFrame64` with the low 32 bits kept.
    constexpr std::int32_t ToFrame32(FrameRate rate) const {
        return static_cast<std::int32_t>(static_cast<std::uint64_t>(ToFrame64(rate)));
    }

    /// Moves this time to the nearest frame boundary; a time half-way between two goes to the later one.
    /// Nearest, not lower: seconds are shown as a double and read back, and the lower boundary could shorten
    /// a clip by one frame each time its settings are opened. A rate of 0 leaves the time as it is.
    constexpr TickTime& AlignToFrame(FrameRate rate);

    /// Moves this time by `count` frames; saturates at the ends of the 64-bit range.
    constexpr TickTime& AddFrames(std::int64_t count, FrameRate rate);

    friend constexpr bool operator==(TickTime, TickTime) = default;
    friend constexpr auto operator<=>(TickTime, TickTime) = default;

  private:
    /// 128 bits hold every product and sum of two 64-bit values.
    using Wide = __int128;

    static constexpr std::int64_t Saturate(Wide value) {
        constexpr Wide kLowest = std::numeric_limits<std::int64_t>::min();
        constexpr Wide kHighest = std::numeric_limits<std::int64_t>::max();
        return static_cast<std::int64_t>(value < kLowest ? kLowest : value > kHighest ? kHighest : value);
    }

    static constexpr Wide FloorDivide(Wide dividend, Wide divisor) {
        const Wide quotient = dividend / divisor;
        return quotient - ((dividend % divisor != 0) && ((dividend < 0) != (divisor < 0)));
    }

    std::int64_t mTicks = 0;
};

/// The start of a clip.
inline constexpr TickTime kTime_Zero{0};

constexpr std::int64_t TickTime::ToFrame64(FrameRate rate) const {
    return rate.GetTicksPerFrame() == 0 ? 0 : Saturate(FloorDivide(mTicks, rate.GetTicksPerFrame()));
}

constexpr TickTime& TickTime::AlignToFrame(FrameRate rate) {
    Wide ticksPerFrame = rate.GetTicksPerFrame();
    if (ticksPerFrame == 0) return *this;
    if (ticksPerFrame < 0) ticksPerFrame = -ticksPerFrame;
    const Wide nearest = FloorDivide(Wide(mTicks) * 2 + ticksPerFrame, ticksPerFrame * 2);
    mTicks = Saturate(nearest * ticksPerFrame);
    return *this;
}

constexpr TickTime& TickTime::AddFrames(std::int64_t count, FrameRate rate) {
    mTicks = Saturate(Wide(mTicks) + Saturate(Wide(count) * rate.GetTicksPerFrame()));
    return *this;
}

/// The shape of a pixel: its width over its height, as two unsigned 32-bit terms that are kept as given.
class PixelAspectRatio {
  public:
    /// Square pixels, 1/1.
    constexpr PixelAspectRatio() = default;
    constexpr PixelAspectRatio(std::uint32_t numerator, std::uint32_t denominator)
        : mNumerator(numerator), mDenominator(denominator) {}

    /// The term for the width, as it was given.
    constexpr std::uint32_t GetNumerator() const { return mNumerator; }
    /// The term for the height, as it was given.
    constexpr std::uint32_t GetDenominator() const { return mDenominator; }

    /// Compares the ratios (10/11 equals 20/22); if a denominator is 0, there is no ratio, and the terms
    /// themselves are compared.
    friend constexpr bool operator==(PixelAspectRatio a, PixelAspectRatio b) {
        if (a.mDenominator == 0 || b.mDenominator == 0)
            return a.mNumerator == b.mNumerator && a.mDenominator == b.mDenominator;
        return std::uint64_t{a.mNumerator} * b.mDenominator == std::uint64_t{b.mNumerator} * a.mDenominator;
    }

  private:
    std::uint32_t mNumerator = 1;
    std::uint32_t mDenominator = 1;
};

// Sample aspect ratios of ITU-T H.264, Table E-1.
inline constexpr PixelAspectRatio kPixelAspectRatio_Square{1, 1};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVNTSC{10, 11};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVNTSCWide{40, 33};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVPAL{12, 11};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVPALWide{16, 11};
inline constexpr PixelAspectRatio kPixelAspectRatio_Anamorphic{2, 1};
inline constexpr PixelAspectRatio kPixelAspectRatio_HDAnamorphic1080{4, 3};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVCProHD{3, 2};

// Older approximations that projects in the field still carry.
inline constexpr PixelAspectRatio kPixelAspectRatio_DVNTSC_Incorrect{9, 10};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVNTSCWide_Incorrect{6, 5};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVPAL_Incorrect{16, 15};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVPAL_TooPrecise{128, 117};
inline constexpr PixelAspectRatio kPixelAspectRatio_DVPALWide_Incorrect{64, 45};

/// Field order of a clip. Other values can arrive from settings files; every non-zero one is interlaced.
enum FieldType : std::int32_t {
    kFieldType_Progressive = 0,
    kFieldType_UpperFirst = 1,
    kFieldType_LowerFirst = 2,
};

} // namespace lummediatypes
