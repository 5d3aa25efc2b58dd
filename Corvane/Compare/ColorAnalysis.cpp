#include "ColorAnalysis.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace corvane {
namespace {

// Units of a picture that are looked at. Odd, so that no pattern of rows is in step with it.
constexpr std::uint32_t kUnits = 47;
// Units of rows in which two fields are mixed: each is an average over many rows.
constexpr std::uint32_t kMixedUnits = 8;
// What a color may be outside of 0..1 and still be held by integers.
constexpr double kOutside = 0.002;
// Alpha below which color says nothing.
constexpr double kTransparent = 0.02;
// Alpha from which no plane is needed for it.
constexpr double kOpaque = 1.0 - 1.5 / 255.0;
// Gaps in the frames that are off are told apart up to this number.
constexpr std::size_t kMostRanges = 1024;

bool SaysSomething(const Color& color) {
    const auto held = [](double part) { return part > -kOutside && part < 1.0 + kOutside; };
    return std::ranges::all_of(color, held) && color[3] > kTransparent;
}

bool IsScaled(const Placement& placement, std::uint32_t height) {
    return placement.quarterTurns % 2 != 0 || std::abs(placement.height - height) > 0.25;
}

// Where a row of the picture lies in the frame, in rows from the middle of the first one.
double RowInFrame(double row, const Placement& placement, std::uint32_t height) {
    const double at = (row + 0.5 - placement.top) / placement.height * height - 0.5;
    return placement.IsUpsideDown() ? height - 1.0 - at : at;
}

// How much of their own field rows show; of the upper one, if they are of both.
double OwnShare(Parity parity, const std::array<double, 2>& shares) {
    switch (parity) {
    case Parity::kEven: return shares[0];
    case Parity::kOdd: return 1.0 - shares[1];
    default: return (shares[0] + shares[1]) / 2.0;
    }
}

// Codecs that keep the color of an area, or nearly so, at every rate in use. The others quantize it.
bool KeepsColors(std::string_view codec) {
    constexpr std::string_view kCodecs[] = {"ffv1",     "rawvideo", "wrapped_avframe",
                                            "huffyuv",  "ffvhuff",  "utvideo",
                                            "magicyuv", "png",      "apng",
                                            "tiff",     "exr",      "dpx",
                                            "targa",    "bmp",      "qtrle",
                                            "ppm",      "pam",      "v210",
                                            "v210x",    "v308",     "v408",
                                            "v410",     "r210",     "r10k",
                                            "prores",   "dnxhd",    "cfhd",
                                            "jpeg2000"};
    return std::ranges::find(kCodecs, codec) != std::end(kCodecs);
}

} // namespace

ColorAnalysis::ColorAnalysis(const StreamFacts& clip, const VideoFacts& video, double tolerance)
    : mClip(clip), mTolerance(tolerance), mCodecNoise(KeepsColors(video.codec) ? 0.0 : 2.0) {}

void ColorAnalysis::Add(const PictureRows& rows, const VideoTags& tags, const Placement& placement,
                        std::int64_t frame, const ExpectedRows& expected, const FieldShares& shares) {
    const bool scaled = IsScaled(placement, mClip.size.height), solid = expected.FieldsAreSolid();
    const bool mixed = mClip.Interlaced() && solid && scaled;
    if (placement.quarterTurns % 2 != 0 && !solid) return;
    mTags = tags;
    const SampleCoding coding = CodingOf(rows.format, tags, static_cast<std::uint32_t>(rows.plane[0].size()));
    std::vector<ColorSample> samples;
    for (const Unit& unit : ChooseUnits(rows, placement, mixed)) {
        ColorSample sample = SampleOf(rows, unit, coding, placement, expected);
        sample.frame = frame;
        sample.ownLuma = OwnShare(sample.parity, shares.luma);
        sample.ownChroma = OwnShare(sample.parity, shares.chroma);
        mLacksAlpha = mLacksAlpha || (!sample.alpha && sample.expected[3] < kOpaque);
        if (!SaysSomething(sample.expected) || !SaysSomething(sample.other)) continue;
        samples.push_back(sample);
        if (placement.IsPlain() && !scaled) AddLevels(rows, unit, coding, expected);
    }
    if (samples.empty()) return;
    ++mPictures;
    const auto keep = [&samples](ColorSamples& kept) {
        if (kept.WantsNext())
            for (const ColorSample& sample : samples) kept.Add(sample);
    };
    keep(mAll);
    if (RootMeanSquareOff(samples, {}) <= mTolerance) return;
    ++mOffPictures;
    keep(mOff);
    if (mOffFrames.Get().size() < kMostRanges) mOffFrames.Add(frame);
}

void ColorAnalysis::AddPrint(const PrintLevels& print) {
    mPrint.black += print.black;
    mPrint.white += print.white;
    ++mPrints;
}

// Rows of one field, if the clip has fields, as many as share a row of chroma; all along the picture, others
// in every picture.
std::vector<ColorAnalysis::Unit> ColorAnalysis::ChooseUnits(const PictureRows& rows,
                                                            const Placement& placement, bool mixed) const {
    const std::uint32_t each = 1u << (rows.format.yCbCr ? rows.format.subsampleH : 0);
    const std::uint32_t margin = placement.IsPlain() && !mClip.Interlaced() ? 0 : 2,
                        fields = mClip.Interlaced() && !mixed ? 2 : 1;
    const std::uint32_t top = (placement.active.top + each - 1) / each + margin;
    const auto height = static_cast<std::uint32_t>(rows.plane[0].size());
    const std::uint32_t bottom = std::min(placement.active.bottom, height) / (each * fields) * fields;
    std::vector<Unit> units;
    if (bottom < top + margin + fields) return units;
    const std::uint32_t count = bottom - margin - top, chosen = mixed ? kMixedUnits : kUnits;
    const double start = std::fmod(static_cast<double>(mPictures) * 0.6180339887, 1.0);
    for (std::uint32_t i = 0; i < chosen; ++i) {
        if (mixed) {
            const std::uint32_t first = top + count * i / chosen, end = top + count * (i + 1) / chosen;
            // Pictures of very few rows have none for some units.
            if (first == end) continue;
            units.push_back({first * each, (end - first) * each, first, end - first, 1, Parity::kBoth});
            continue;
        }
        auto unit = top + std::min(static_cast<std::uint32_t>((i + start) / chosen * count), count - 1);
        if (fields == 2) unit = std::min(unit / 2 * 2 + i % 2, bottom - margin - 1);
        const std::uint32_t parity = fields == 2 ? unit % 2 : 0;
        units.push_back({(unit / fields * each) * fields + parity, each, unit, 1, fields,
                         parity == 0 ? Parity::kEven : Parity::kOdd});
    }
    return units;
}

ColorSample ColorAnalysis::SampleOf(const PictureRows& rows, const Unit& unit, const SampleCoding& coding,
                                    const Placement& placement, const ExpectedRows& expected) const {
    ColorSample sample;
    sample.parity = unit.parity;
    sample.alpha = rows.format.alpha;
    Codes codes{0, 0, 0, std::ldexp(1.0, coding.bits) - 1.0};
    for (std::size_t plane = 0; plane < std::size_t(rows.format.Planes()); ++plane) {
        const bool chroma = coding.yCbCr && (plane == 1 || plane == 2);
        const std::uint32_t first = chroma ? unit.chroma : unit.luma;
        const std::uint32_t count = chroma ? unit.chromaRows : unit.lumaRows;
        double sum = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::vector<RowSamples>& all = rows.plane[plane];
            sum += double{all[std::min<std::size_t>(first + i * unit.step, all.size() - 1)].mean};
        }
        codes[plane] = sum / count;
    }
    sample.coding = coding;
    sample.coding.bits = 8;
    sample.found = Encode(Decode(codes, coding), sample.coding);

    const double middle = unit.luma + (unit.lumaRows - 1) * unit.step / 2.0;
    const double at = RowInFrame(middle, placement, mClip.size.height);
    sample.place = (at + 0.5) / mClip.size.height;
    const int parity = !mClip.Interlaced() ? -1 : unit.parity == Parity::kOdd ? 1 : 0;
    sample.expected = expected.Between(at, parity);
    sample.other =
        parity < 0 || !expected.FieldsAreSolid() ? sample.expected : expected.Between(at, 1 - parity);
    return sample;
}

// Counts levels of as many bits as the clip has: a picture of more has no more to lose.
void ColorAnalysis::AddLevels(const PictureRows& rows, const Unit& unit, const SampleCoding& coding,
                              const ExpectedRows& expected) {
    const int dropped = mClip.IsFloat() ? 0 : std::max(coding.bits - 8, 0);
    for (int plane = 0; plane < 3; ++plane) {
        const auto at = static_cast<std::size_t>(plane);
        const bool chroma = coding.yCbCr && plane != 0;
        const double middle = unit.luma + (chroma ? (unit.lumaRows - 1) * unit.step / 2.0 : 0.0);
        const Color color = expected.Between(middle, mClip.Interlaced() ? int(unit.luma % 2) : -1);
        const RowSamples& row = rows.plane[at][chroma ? unit.chroma : unit.luma];
        mLevels.Add(plane, std::ldexp(Encode(color, coding)[at], -dropped), row.least >> dropped,
                    row.most >> dropped);
    }
}

bool ColorAnalysis::IsOff() const {
    return mOffPictures * 50 >= mPictures && (mOffPictures >= 3 || MostlyOff());
}

} // namespace corvane
