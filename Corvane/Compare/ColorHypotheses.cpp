#include "ColorHypotheses.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "Engine/ClipText.h"
#include "Services/Raster/NumberPrint.h"

namespace corvane {
namespace {

using Hypotheses = std::vector<ColorHypothesis>;

Color Held(const Color& color) {
    Color held;
    std::ranges::transform(color, held.begin(), [](double part) { return std::clamp(part, 0.0, 1.0); });
    return held;
}

// Adds a hypothesis as it is, and with its colors held to what integers of R'G'B' have.
void AddBoth(Hypotheses& all, ColorHypothesis hypothesis) {
    all.push_back(hypothesis);
    hypothesis.change = [change = hypothesis.change](const Color& color) { return Held(change(color)); };
    all.push_back(std::move(hypothesis));
}

// The color that samples of one coding show to those who take them for another.
std::function<Color(const Color&)> Mistaken(const SampleCoding& made, const SampleCoding& taken) {
    return [made, taken](const Color& color) { return Decode(Encode(color, made), taken); };
}

void AddMatrices(Hypotheses& all, const CodingFacts& facts) {
    for (const int made : kMatrices)
        for (const int taken : kMatrices) {
            if (made == taken) continue;
            const bool tag = facts.told.yCbCr && taken == facts.told.matrix && made == facts.exported;
            AddBoth(all, {tag ? "tags.matrix" : "color.matrix", MatrixName(made), MatrixName(taken),
                          tag && !facts.saysMatrix
                              ? fmt::format("the video doesn't say that its samples are {}", MatrixName(made))
                          : tag ? fmt::format("the tag says {}, and the samples are {}", MatrixName(taken),
                                              MatrixName(made))
                                : fmt::format("{} was taken for {}", MatrixName(made), MatrixName(taken)),
                          Mistaken({true, made, false, 8}, {true, taken, false, 8}), tag});
        }
}

// Range is mistaken in Y'CbCr, which has another range for chroma, or in R'G'B'.
void AddRanges(Hypotheses& all, const CodingFacts& facts) {
    for (const bool yCbCr : {true, false})
        for (const bool full : {false, true})
            for (const bool twice : {false, true}) {
                const int matrix = facts.told.yCbCr ? facts.told.matrix : facts.exported;
                const auto once = Mistaken({yCbCr, matrix, full, 8}, {yCbCr, matrix, !full, 8});
                const bool tag = facts.told.yCbCr && yCbCr && !twice && !full && facts.told.fullRange;
                const char *const made = full ? "full" : "limited", *const taken = full ? "limited" : "full";
                AddBoth(all, {tag ? "tags.range" : "color.range", fmt::format("{} range", made),
                              fmt::format("taken for {} range{}", taken, twice ? " twice" : ""),
                              tag ? "the tag says full range, and the samples are of limited range"
                                  : fmt::format("{} range was taken for {} range{}", made, taken,
                                                twice ? " twice" : ""),
                              twice ? [once](const Color& color) { return once(once(color)); } : once, tag});
            }
}

void AddChannels(Hypotheses& all, const CodingFacts& facts) {
    constexpr std::array<std::array<std::size_t, 3>, 5> kOrders{
        {{2, 1, 0}, {1, 0, 2}, {0, 2, 1}, {1, 2, 0}, {2, 0, 1}}};
    constexpr const char kNames[] = "RGB";
    for (const auto& order : kOrders) {
        const std::string found =
            fmt::format("{}, {}, {}", kNames[order[0]], kNames[order[1]], kNames[order[2]]);
        all.push_back({"color.channels", "R, G, B", found,
                       fmt::format("the channels R, G, B are in the order {}", found),
                       [order](const Color& color) {
                           return Color{color[order[0]], color[order[1]], color[order[2]], color[3]};
                       }});
    }
    const SampleCoding coding{true, facts.told.yCbCr ? facts.told.matrix : facts.exported, false, 8};
    AddBoth(all,
            {"color.channels", "Cb, Cr", "Cr, Cb", "Cb and Cr are exchanged", [coding](const Color& color) {
                 Codes codes = Encode(color, coding);
                 std::swap(codes[1], codes[2]);
                 return Decode(codes, coding);
             }});
    all.push_back({"color.channels", "Cb, Cr", "none", "only Y' was kept", [coding](const Color& color) {
                       Codes codes = Encode(color, coding);
                       codes[1] = codes[2] = 128;
                       return Decode(codes, coding);
                   }});
}

constexpr std::array kTransfers{Transfer::kBT709, Transfer::kSrgb, Transfer::kGamma22, Transfer::kGamma24};

void AddTransfers(Hypotheses& all) {
    for (const Transfer made : kTransfers) {
        const char* const name = TransferName(made);
        all.push_back({"color.transfer", "gamma-coded", "linear",
                       fmt::format("linear light was taken for gamma-coded color ({})", name),
                       [made](const Color& color) { return ToLinear(color, made); }});
        all.push_back({"color.transfer", "gamma-coded", "gamma-coded twice",
                       fmt::format("gamma-coded color was taken for linear light ({})", name),
                       [made](const Color& color) { return ToGammaCoded(color, made); }});
    }
}

void AddAlphas(Hypotheses& all, bool alpha) {
    const auto add = [&all](const char* found, const char* cause, std::function<Color(const Color&)> change) {
        AddBoth(all, {"color.alpha", "straight color and its alpha", found, cause, std::move(change)});
    };
    const auto scaled = [](const Color& color, double factor, double alphaThen) {
        return Color{color[0] * factor, color[1] * factor, color[2] * factor, alphaThen};
    };
    add("multiplied by alpha", "color was multiplied by alpha once too often",
        [scaled](const Color& color) { return scaled(color, color[3], color[3]); });
    add("divided by alpha", "color was divided by alpha once too often", [scaled](const Color& color) {
        return scaled(color, 1.0 / std::max(color[3], 1.0 / 255.0), color[3]);
    });
    add("blended over white", "the clip was blended over white", [](const Color& color) {
        const double rest = 1.0 - color[3];
        return Color{color[0] * color[3] + rest, color[1] * color[3] + rest, color[2] * color[3] + rest, 1.0};
    });
    if (!alpha) return; // what else differs in alpha alone
    add("blended over black", "the clip was blended over black",
        [scaled](const Color& color) { return scaled(color, color[3], 1.0); });
    add("opaque", "the alpha plane was lost",
        [scaled](const Color& color) { return scaled(color, 1.0, 1.0); });
    add("inverted", "alpha was inverted",
        [scaled](const Color& color) { return scaled(color, 1.0, 1.0 - color[3]); });
}

// Bounds of what is found in each plane, or in each channel of the colors.
struct Bounds {
    Codes least{1e9, 1e9, 1e9, 1e9}, most{-1e9, -1e9, -1e9, -1e9};

    void Add(const Codes& values) {
        for (std::size_t i = 0; i < 4; ++i) {
            least[i] = std::min(least[i], values[i]);
            most[i] = std::max(most[i], values[i]);
        }
    }
    Codes Hold(Codes values, std::size_t planes) const {
        for (std::size_t i = 0; i < planes; ++i) values[i] = std::clamp(values[i], least[i], most[i]);
        return values;
    }
};

// From one transfer to another: small differences, which one or two colors don't tell from others.
void AddTransferConversions(Hypotheses& all) {
    for (const Transfer made : kTransfers)
        for (const Transfer taken : kTransfers) {
            if (made == taken) continue;
            all.push_back(
                {"color.transfer", TransferName(made), TransferName(taken),
                 fmt::format("the transfer {} was converted to {}", TransferName(made), TransferName(taken)),
                 [made, taken](const Color& color) { return ToGammaCoded(ToLinear(color, made), taken); }});
        }
}

// Whether bounds cut some colors that the clip has, and are no single color, which explains anything.
bool CutsSome(const Bounds& bounds, std::size_t planes, const std::vector<ColorSample>& samples,
              const std::function<Codes(const Color&)>& valuesOf, double step) {
    constexpr double kSpan = 5;
    std::size_t cut = 0;
    for (const ColorSample& sample : samples) {
        const Codes values = valuesOf(sample.expected), held = bounds.Hold(values, planes);
        bool moved = false;
        for (std::size_t i = 0; i < planes; ++i) moved = moved || std::abs(values[i] - held[i]) > step;
        cut += moved;
    }
    double span = 0;
    for (std::size_t i = 0; i < planes; ++i) span = std::max(span, bounds.most[i] - bounds.least[i]);
    return cut * 20 > samples.size() && span > kSpan * step;
}

ColorHypothesis Clipping(const char* name, double least, double most,
                         std::function<Color(const Color&)> change) {
    const std::string found = fmt::format("{:.0f} to {:.0f}", least, most);
    ColorHypothesis clipping{"color.clipped", "", found,
                             fmt::format("levels were cut ({} has {})", name, found), std::move(change)};
    clipping.fitted = true;
    return clipping;
}

// Y' alone, or each of R', G' and B'.
void AddClipping(Hypotheses& all, const SampleCoding& coding, const std::vector<ColorSample>& samples) {
    Bounds luma, colors;
    for (const ColorSample& sample : samples) {
        luma.Add(sample.found);
        colors.Add(Decode(sample.found, coding));
    }
    const auto add = [&](const char* name, const Bounds& bounds, std::size_t planes, double scale,
                         const std::function<Codes(const Color&)>& valuesOf,
                         std::function<Color(const Color&)> change) {
        if (!CutsSome(bounds, planes, samples, valuesOf, 1.5 / scale)) return;
        all.push_back(Clipping(name, scale * bounds.least[0], scale * bounds.most[0], std::move(change)));
    };
    const auto encode = [coding](const Color& color) { return Encode(color, coding); };
    if (coding.yCbCr)
        add("Y'", luma, 1, 1.0, encode, [luma, coding](const Color& color) {
            return Decode(luma.Hold(Encode(color, coding), 1), coding);
        });
    add(
        "R'", colors, 3, 255.0, [](const Color& color) { return color; },
        [colors](const Color& color) { return colors.Hold(color, 3); });
}

// A level to which a number's black or white was cut, exactly if a sample that was cut to it is found.
double CutTo(double printed, const std::vector<double>& found) {
    constexpr double kNear = 8;
    const auto nearest =
        std::ranges::min_element(found, {}, [printed](double level) { return std::abs(level - printed); });
    return nearest != found.end() && std::abs(*nearest - printed) < kNear ? *nearest : printed;
}

double LevelOf(double gray, const SampleCoding& coding) {
    return Encode({gray / 255, gray / 255, gray / 255, 1}, coding)[0];
}

// The first planes of `coding`, if they are cut to the levels that numbers have.
void AddCut(Hypotheses& all, const char* name, const SampleCoding& coding, std::ptrdiff_t planes,
            const PrintLevels& print, const std::vector<ColorSample>& samples) {
    constexpr double kCut = 4; // of what codecs leave of thin strokes
    const bool cutsBlack = print.black > LevelOf(raster::kBoxGray, coding) + kCut;
    const bool cutsWhite = print.white < LevelOf(raster::kGlyphGray, coding) - kCut;
    if (!cutsBlack && !cutsWhite) return;
    std::vector<double> found;
    for (const ColorSample& sample : samples) {
        const Codes codes = Encode(Decode(sample.found, sample.coding), coding);
        found.insert(found.end(), codes.begin(), codes.begin() + planes);
    }
    const double least = cutsBlack ? CutTo(print.black, found) : LevelOf(0, coding);
    const double most = cutsWhite ? CutTo(print.white, found) : LevelOf(255, coding);
    if (least < most)
        all.push_back(Clipping(name, least, most, [=](const Color& color) {
            Codes codes = Encode(color, coding);
            std::for_each(codes.begin(), codes.begin() + planes,
                          [=](double& code) { code = std::clamp(code, least, most); });
            return Decode(codes, coding);
        }));
}

// Fewer bits, either of the samples or of R'G'B', rounded down or to the nearest.
void AddDepths(Hypotheses& all, const SampleCoding& told) {
    const SampleCoding rgb{false, told.matrix, true, 8};
    const auto cut = [](const SampleCoding& coding, std::size_t planes, double step, double rounding) {
        return [=](const Color& color) {
            Codes codes = Encode(color, coding);
            for (std::size_t i = 0; i < planes; ++i)
                codes[i] = std::floor((codes[i] + rounding) / step) * step;
            return Decode(codes, coding);
        };
    };
    for (int bits = 1; bits < 7; ++bits) {
        const double step = std::ldexp(1.0, 8 - bits);
        const auto add = [&](const SampleCoding& coding, std::size_t planes, const char* what) {
            for (const double rounding : {0.5, step / 2.0})
                all.push_back({"color.depth", "8 bits", CountText(bits, "bit"),
                               fmt::format("only {} of {} {} kept", CountText(bits, "bit"), what,
                                           bits == 1 ? "was" : "were"),
                               cut(coding, planes, step, rounding)});
        };
        add(told, 3, "each sample");
        if (told.yCbCr) add(told, 1, "Y'");
        if (told.yCbCr) add(rgb, 3, "R', G' and B'");
    }
}

// All samples of a plane moved by as much.
void AddShift(Hypotheses& all, const SampleCoding& coding, const std::vector<ColorSample>& samples) {
    Codes shift{};
    for (const ColorSample& sample : samples) {
        const Codes meant = Encode(sample.expected, coding);
        for (std::size_t i = 0; i < 3; ++i)
            shift[i] += (sample.found[i] - meant[i]) / static_cast<double>(samples.size());
    }
    const std::string found = fmt::format("{:+.0f}, {:+.0f}, {:+.0f}", shift[0], shift[1], shift[2]);
    all.push_back({"color.error", "", found,
                   fmt::format("all levels of {} were moved by {} steps",
                               coding.yCbCr ? "Y', Cb, Cr" : "R', G', B'", found),
                   [shift, coding](const Color& color) {
                       Codes codes = Encode(color, coding);
                       for (std::size_t i = 0; i < 3; ++i) codes[i] += shift[i];
                       return Decode(codes, coding);
                   }});
    all.back().fitted = true;
}

} // namespace

CodingFacts CodingFactsOf(const StreamFacts& clip, const SampleCoding& told, const VideoTags& tags,
                          bool alpha) {
    return {told, TagsFor(clip).matrix == kH273_709 ? kMatrix709 : kMatrix601, tags.matrix != 2, alpha};
}

Hypotheses FixedHypotheses(const CodingFacts& facts) {
    Hypotheses all;
    AddMatrices(all, facts);
    AddRanges(all, facts);
    AddChannels(all, facts);
    AddTransfers(all);
    AddAlphas(all, facts.alpha);
    return all;
}

Hypotheses CutHypotheses(const CodingFacts& facts, const std::vector<ColorSample>& samples) {
    Hypotheses all;
    if (!facts.print) return all;
    const SampleCoding &told = facts.told, rgb{false, told.matrix, true, 8};
    if (told.yCbCr) AddCut(all, "Y'", told, 1, *facts.print, samples);
    const auto gray = [&told](double level) {
        const double other = told.yCbCr ? 128 : level;
        return 255.0 * Decode({level, other, other, 255}, told)[1];
    };
    AddCut(all, "R'", rgb, 3, {gray(facts.print->black), gray(facts.print->white)}, samples);
    return all;
}

Hypotheses FittedHypotheses(const CodingFacts& facts, const std::vector<ColorSample>& samples) {
    Hypotheses all;
    AddClipping(all, facts.told, samples);
    AddDepths(all, facts.told);
    AddShift(all, facts.told, samples);
    AddTransferConversions(all);
    return all;
}

} // namespace corvane
