#include "Tags.h"

#include <cmath>
#include <string>

#include <fmt/format.h>

#include "Engine/ClipText.h"

namespace corvane {
namespace {

std::string MatrixText(int matrix) {
    switch (matrix) {
    case 0: return "R'G'B'";
    case 1: return "BT.709";
    case 5:
    case 6: return "BT.601";
    case 9:
    case 10: return "BT.2020";
    default: return fmt::format("matrix {} of H.273", matrix);
    }
}

std::string RangeText(bool full) {
    return full ? "full range" : "limited range";
}

/// Two code points stand for the matrix of BT.601, and two for that of BT.2020. What is not told differs from
/// nothing.
bool IsSameMatrix(int told, int measured) {
    return told == 2 || MatrixText(told) == MatrixText(measured);
}

bool IsSameRate(Rate a, Rate b) {
    if (a.sampleSize == 0 || b.sampleSize == 0) return true;
    const double ratio =
        static_cast<double>(a.scale) * b.sampleSize / (static_cast<double>(b.scale) * a.sampleSize);
    return std::abs(ratio - 1) < 1e-3;
}

class Findings {
  public:
    /// Adds a finding if both are known and `same(told, measured)` is false.
    template <class Value, class Same, class Text>
    void Compare(const char* kind, const char* what, const std::optional<Value>& told,
                 const std::optional<Value>& measured, const Same& same, const Text& text) {
        if (!told || !measured || same(*told, *measured)) return;
        Finding finding;
        finding.kind = kind;
        finding.expected = text(*measured);
        finding.found = text(*told);
        finding.cause = "the tag is wrong, or what made the pictures did not heed it";
        finding.sentence = fmt::format("The video says that {} {}, but its pictures are {}.", what,
                                       finding.found, finding.expected);
        finding.weight = 0.5;
        findings.push_back(std::move(finding));
    }

    std::vector<Finding> findings;
};

} // namespace

std::vector<Finding> TagFindings(const VideoFacts& video, const VideoTags& tags, const Measured& measured) {
    const auto equal = [](const auto& a, const auto& b) { return a == b; };
    const auto sameAspect = [](PixelAspect a, PixelAspect b) { return Reduced(a) == Reduced(b); };
    Findings all;
    all.Compare("tags.aspect", "its pixels are", video.aspect, measured.aspect, sameAspect, AspectText);
    all.Compare("tags.order", "it is", video.order, measured.order, equal, FieldOrderText);
    all.Compare("tags.rate", "it has", std::optional(video.nominalRate), measured.rate, IsSameRate, RateText);
    all.Compare("tags.matrix", "it is", std::optional(tags.matrix), measured.matrix, IsSameMatrix,
                MatrixText);
    all.Compare("tags.range", "it is", tags.fullRange, measured.fullRange, equal, RangeText);
    return std::move(all.findings);
}

} // namespace corvane
