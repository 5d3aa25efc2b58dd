#include "ColorVerdict.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <string_view>

namespace corvane {
namespace {

// What is left after rounding colors to 8 bits and then samples to 8 bits, with a margin.
constexpr double kRounding = 1.5;
// An explanation leaves at most this share of the difference.
constexpr double kExplained = 0.4;

struct Rated {
    const ColorHypothesis* hypothesis = nullptr;
    double residual = 0;
};

// Some samples, evenly chosen.
std::vector<ColorSample> Fewer(const std::vector<ColorSample>& samples, std::size_t enough) {
    if (samples.size() <= enough) return samples;
    std::vector<ColorSample> fewer;
    for (std::size_t i = 0; i < enough; ++i) fewer.push_back(samples[i * samples.size() / enough]);
    return fewer;
}

bool HasManyColors(const std::vector<ColorSample>& samples) {
    constexpr std::size_t kMany = 8;
    std::set<Color> colors;
    for (std::size_t i = 0; i < samples.size() && colors.size() < kMany; ++i)
        colors.insert(samples[i].expected);
    return colors.size() >= kMany;
}

std::vector<Rated> Ranked(const std::vector<ColorHypothesis>& hypotheses,
                          const std::vector<ColorSample>& samples) {
    std::vector<Rated> rated;
    for (const ColorHypothesis& hypothesis : hypotheses)
        rated.push_back({&hypothesis, RootMeanSquareOff(samples, hypothesis.change)});
    std::ranges::stable_sort(rated, {}, &Rated::residual);
    return rated;
}

// "matrix" of both "color.matrix" and "tags.matrix".
std::string_view SubjectOf(const ColorHypothesis& hypothesis) {
    return std::string_view(hypothesis.kind).substr(hypothesis.kind.find('.') + 1);
}

// What another explanation leaves at most if it is nearly as good as one that leaves so much.
double RivalOf(double residual) {
    return std::max(1.7 * residual, residual + 0.5);
}

// Takes the best explanation, or tells the candidates if one of another subject is nearly as good. Samples
// that are as an export makes them are the tag's fault.
void Choose(const std::vector<Rated>& rated, double allowed, ColorVerdict& verdict) {
    const Rated& best = rated.front();
    if (best.residual > std::min(allowed, kExplained * verdict.off)) return;
    const double rival = RivalOf(best.residual);
    const ColorHypothesis* chosen = best.hypothesis;
    std::set<std::string_view> subjects;
    for (const Rated& other : rated) {
        if (other.residual > rival) break;
        const std::string_view subject = SubjectOf(*other.hypothesis);
        if (other.hypothesis->fitted && subject != SubjectOf(*chosen)) continue;
        if (subject == SubjectOf(*chosen) && other.hypothesis->tagAtFault) chosen = other.hypothesis;
        if (subjects.insert(subject).second) verdict.candidates.push_back(other.hypothesis->cause);
    }
    verdict.residual = best.residual;
    if (subjects.size() > 1) return;
    verdict.candidates.clear();
    verdict.explanation = *chosen;
}

// One thing that happened after another one.
struct Pair {
    const ColorHypothesis* first = nullptr;
    const ColorHypothesis* second = nullptr;
    double residual = 0;

    ColorHypothesis Both() const {
        ColorHypothesis both = *second;
        both.change = [first = first->change, second = second->change](const Color& color) {
            return second(first(color));
        };
        return both;
    }
    /// Whether both are about the same as those of another pair, in either order.
    bool IsAbout(const Pair& other) const {
        const auto subject = SubjectOf(*first), next = SubjectOf(*second);
        const auto otherSubject = SubjectOf(*other.first), otherNext = SubjectOf(*other.second);
        return (subject == otherSubject && next == otherNext) ||
               (subject == otherNext && next == otherSubject);
    }
    int Tags() const { return int{first->tagAtFault} + int{second->tagAtFault}; }
};

// Pairs of things that explain some samples, the best first.
std::vector<Pair> PairsThatExplain(const std::vector<ColorHypothesis>& hypotheses,
                                   const std::vector<ColorSample>& samples, double allowed) {
    constexpr std::size_t kFew = 48;
    const std::vector<ColorSample> few = Fewer(samples, kFew);
    std::vector<Pair> pairs;
    for (const ColorHypothesis& first : hypotheses)
        for (const ColorHypothesis& second : hypotheses) {
            if (SubjectOf(first) == SubjectOf(second)) continue;
            Pair pair{&first, &second};
            const auto both = pair.Both().change;
            if (RootMeanSquareOff(few, both) > 1.5 * allowed) continue;
            pair.residual = RootMeanSquareOff(samples, both);
            if (pair.residual <= allowed) pairs.push_back(pair);
        }
    std::ranges::stable_sort(pairs, {}, &Pair::residual);
    return pairs;
}

// Takes the pair that explains the samples, if none of other subjects does so nearly as well.
void ChoosePair(const std::vector<Pair>& pairs, ColorVerdict& verdict) {
    if (pairs.empty()) return;
    const double rival = RivalOf(pairs.front().residual);
    const Pair* chosen = &pairs.front();
    for (const Pair& other : pairs) {
        if (other.residual > rival) break;
        if (!other.IsAbout(*chosen)) return;
        if (other.Tags() > chosen->Tags()) chosen = &other;
    }
    verdict.residual = pairs.front().residual;
    verdict.explanation = *chosen->first;
    verdict.second = *chosen->second;
}

} // namespace

Codes PredictedCodes(const ColorSample& sample, const std::function<Color(const Color&)>& change) {
    const auto codesOf = [&](const Color& color) {
        return Encode(change ? change(color) : color, sample.coding);
    };
    Codes codes = codesOf(sample.expected);
    if (sample.expected != sample.other) {
        const Codes other = codesOf(sample.other);
        for (std::size_t i = 0; i < 4; ++i) {
            const bool chroma = sample.coding.yCbCr && (i == 1 || i == 2);
            const double own = chroma ? sample.ownChroma : sample.ownLuma;
            codes[i] = own * codes[i] + (1.0 - own) * other[i];
        }
    }
    for (double& code : codes) code = std::clamp(code, 0.0, 255.0);
    return codes;
}

double StepsOff(const ColorSample& sample, const Codes& predicted) {
    double most = 0;
    for (std::size_t i = 0; i < (sample.alpha ? 4u : 3u); ++i)
        most = std::max(most, std::abs(sample.found[i] - predicted[i]));
    return most;
}

double RootMeanSquareOff(const std::vector<ColorSample>& samples,
                         const std::function<Color(const Color&)>& change) {
    double sum = 0;
    for (const ColorSample& sample : samples) {
        const double off = StepsOff(sample, PredictedCodes(sample, change));
        sum += off * off;
    }
    return samples.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

double NoiseOf(const std::vector<ColorSample>& samples) {
    std::array<const ColorSample*, 3> last{};
    double sum = 0;
    std::int64_t count = 0;
    for (const ColorSample& sample : samples) {
        const ColorSample*& before = last[static_cast<std::size_t>(sample.parity)];
        if (before != nullptr && before->frame == sample.frame) {
            const Codes here = PredictedCodes(sample, {}), there = PredictedCodes(*before, {});
            double most = 0;
            for (std::size_t i = 0; i < 3; ++i)
                most = std::max(most, std::abs(sample.found[i] - here[i] - (before->found[i] - there[i])));
            sum += most * most;
            ++count;
        }
        before = &sample;
    }
    return count == 0 ? 0.0 : std::sqrt(sum / static_cast<double>(count) / 2.0);
}

ColorVerdict JudgeColors(const std::vector<ColorSample>& samples, const CodingFacts& facts, double tolerance,
                         double codecNoise) {
    constexpr std::size_t kEnough = 512; // to tell explanations apart
    const std::vector<ColorSample> some = Fewer(samples, kEnough);
    const double noise = NoiseOf(samples);
    const bool many = HasManyColors(some);
    ColorVerdict verdict;
    verdict.off = RootMeanSquareOff(some, {});
    verdict.allowed = tolerance + noise + codecNoise;
    // A codec's noise can look like anything in one or two colors, but not all along a gradient.
    if (verdict.off <= (many ? tolerance : verdict.allowed)) return verdict;
    const double left = kRounding + std::max(noise, codecNoise / 2.0);
    const std::vector<ColorHypothesis> fixed = FixedHypotheses(facts);
    std::vector<ColorHypothesis> all = fixed;
    std::ranges::move(many ? FittedHypotheses(facts, some) : CutHypotheses(facts, some),
                      std::back_inserter(all));
    Choose(Ranked(all, some), left, verdict);
    if (!verdict.explanation && verdict.candidates.empty())
        ChoosePair(PairsThatExplain(fixed, some, std::min(left, kExplained * verdict.off)), verdict);
    return verdict;
}

} // namespace corvane
