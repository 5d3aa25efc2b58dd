// What ColorAnalysis has to say in the end.
#include <algorithm>
#include <cctype>
#include <cmath>

#include <fmt/format.h>

#include "Engine/ClipText.h"

#include "ColorAnalysis.h"

namespace corvane {
namespace {

std::string ColorText(const Color& color, bool alpha) {
    const auto steps = [](double part) { return std::lround(std::clamp(part, 0.0, 1.0) * 255.0); };
    std::string text = fmt::format("{}, {}, {}", steps(color[0]), steps(color[1]), steps(color[2]));
    return alpha ? fmt::format("{}, alpha {}", text, steps(color[3])) : text;
}

std::string FiguresText(const ColorFigures& figures) {
    return fmt::format(
        "colors are off by {:.1f} steps of 255 on average and {:.1f} at most (delta E {:.1f} and {:.1f})",
        figures.meanSteps, figures.mostSteps, figures.meanDeltaE, figures.mostDeltaE);
}

std::string Capitalized(std::string text) {
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}

std::string Sentence(const std::string& cause, const ColorFigures& figures) {
    return fmt::format("{}: {}.", Capitalized(cause.empty() ? "nothing known explains the colors" : cause),
                       FiguresText(figures));
}

void Explain(const ColorHypothesis& hypothesis, Finding& finding) {
    finding.kind = hypothesis.kind;
    finding.cause = hypothesis.cause;
    if (!hypothesis.expected.empty()) finding.expected = hypothesis.expected;
    if (!hypothesis.found.empty()) finding.found = hypothesis.found;
}

// The sample that is off most.
const ColorSample& WorstOf(const std::vector<ColorSample>& samples) {
    const auto off = [](const ColorSample& sample) { return StepsOff(sample, PredictedCodes(sample, {})); };
    return *std::ranges::max_element(samples, {}, off);
}

Finding ErrorOf(const ColorVerdict& verdict, const std::vector<ColorSample>& samples) {
    const ColorSample& worst = WorstOf(samples);
    Finding finding;
    finding.kind = "color.error";
    finding.expected = ColorText(Decode(PredictedCodes(worst, {}), worst.coding), worst.alpha);
    finding.found = ColorText(Decode(worst.found, worst.coding), worst.alpha);
    if (!verdict.candidates.empty())
        finding.cause = fmt::format("either {}", fmt::join(verdict.candidates, ", or "));
    return finding;
}

Finding LostAlpha() {
    return {"color.alpha",
            "The clip is not opaque, and the video has no alpha plane.",
            {},
            "an alpha plane",
            "dropped",
            "the alpha plane was dropped",
            0.4};
}

// The samples as they count if rows show so much of their own field: all if the fields are clear, nothing if
// they are exchanged. None if they count so already.
std::optional<std::vector<ColorSample>> WithFields(const std::vector<ColorSample>& samples, double own) {
    const auto differs = [own](const ColorSample& sample) {
        return sample.expected != sample.other && sample.parity != Parity::kBoth &&
               (sample.ownLuma != own || sample.ownChroma != own);
    };
    if (std::ranges::none_of(samples, differs)) return std::nullopt;
    std::vector<ColorSample> changed = samples;
    for (ColorSample& sample : changed)
        if (sample.parity != Parity::kBoth) sample.ownLuma = sample.ownChroma = own;
    return changed;
}

} // namespace

ColorFigures FiguresOf(const std::vector<ColorSample>& samples) {
    ColorFigures figures;
    for (const ColorSample& sample : samples) {
        const Color found = Decode(sample.found, sample.coding);
        const Color meant = Decode(PredictedCodes(sample, {}), sample.coding);
        double steps = 0;
        for (std::size_t i = 0; i < (sample.alpha ? 4u : 3u); ++i)
            steps = std::max(steps, 255.0 * std::abs(found[i] - meant[i]));
        const double deltaE = DeltaE2000(ToLab(meant), ToLab(found));
        figures.meanSteps += steps / static_cast<double>(samples.size());
        figures.meanDeltaE += deltaE / static_cast<double>(samples.size());
        figures.mostSteps = std::max(figures.mostSteps, steps);
        figures.mostDeltaE = std::max(figures.mostDeltaE, deltaE);
    }
    return figures;
}

const std::vector<ColorSample>& ColorAnalysis::Telling() const {
    return MostlyOff() ? mAll.Get() : mOff.Get();
}

Finding ColorAnalysis::DepthFinding(const ColorLevels::Lost& lost) const {
    constexpr const char* kNames[2][3] = {{"R'", "G'", "B'"}, {"Y'", "Cb", "Cr"}};
    const bool yCbCr = mAll.Get().front().coding.yCbCr;
    Finding finding;
    finding.kind = "color.depth";
    finding.expected = fmt::format("{} levels", lost.expected);
    finding.found = fmt::format("{} levels", lost.found);
    const auto bits = std::lround(std::log2(double(lost.expected) / double(lost.found)));
    finding.cause = fmt::format("{} {} lost", CountText(bits, "bit"), bits == 1 ? "was" : "were");
    finding.sentence = fmt::format("{} has {} distinct levels of {}: {}.", kNames[yCbCr][lost.plane],
                                   lost.found, lost.expected, finding.cause);
    finding.weight = 0.3;
    return finding;
}

std::vector<Finding> ColorAnalysis::FindingsOf(const ColorVerdict& verdict,
                                               const std::vector<ColorSample>& samples) const {
    std::vector<Finding> findings{ErrorOf(verdict, samples)};
    const ColorFigures figures = FiguresOf(samples);
    findings[0].weight = std::min(1.0, 0.3 + figures.meanDeltaE / 30.0);
    if (!MostlyOff()) findings[0].frames = mOffFrames.Get();
    if (verdict.second) findings.push_back(findings[0]);
    if (verdict.explanation) Explain(*verdict.explanation, findings[0]);
    findings[0].sentence = Sentence(findings[0].cause, figures);
    if (verdict.second) {
        Explain(*verdict.second, findings[1]);
        findings[0].sentence = Sentence(findings[0].cause + ", and " + findings[1].cause, figures);
        findings[1].sentence = Capitalized(findings[1].cause) + ", besides the other fault of colors.";
    }
    return findings;
}

ColorReport ColorAnalysis::Report() const {
    ColorReport report;
    const auto lost = mLevels.Worst();
    if (IsOff()) {
        std::vector<ColorSample> samples = Telling();
        CodingFacts facts = CodingFactsOf(mClip, samples.front().coding, mTags, samples.front().alpha);
        const auto prints = static_cast<double>(mPrints);
        if (mPrints > 0) facts.print = {mPrint.black / prints, mPrint.white / prints};
        ColorVerdict verdict = JudgeColors(samples, facts, mTolerance, mCodecNoise);
        const auto tryFields = [&](double own, FieldsByColor fields) {
            const auto changed = WithFields(samples, own);
            if (!verdict.IsOff() || !changed) return;
            const ColorVerdict other = JudgeColors(*changed, facts, mTolerance, mCodecNoise);
            const bool better = !verdict.explanation || other.residual < verdict.residual;
            if (!other.explanation || !better) return;
            verdict = other;
            samples = *changed;
            report.fields = fields;
        };
        tryFields(1, FieldsByColor::kClear);
        if (!verdict.explanation && verdict.candidates.empty()) tryFields(0, FieldsByColor::kSwapped);
        const bool unexplained = !verdict.explanation && verdict.candidates.empty();
        if (verdict.IsOff() && !(unexplained && lost)) report.findings = FindingsOf(verdict, samples);
    }
    if (lost && report.findings.empty()) report.findings.push_back(DepthFinding(*lost));
    if (mLacksAlpha && std::ranges::count(report.findings, "color.alpha", &Finding::kind) == 0)
        report.findings.push_back(LostAlpha());
    return report;
}

} // namespace corvane
