#include "ReportFigures.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

#include "FindingKinds.h"

namespace corvane {
namespace {

constexpr std::uint32_t kLongest = 400; // pixels of a side of a picture in a strip of three

const ComparedPicture* PointerTo(const std::optional<ComparedPicture>& picture) {
    return picture ? &*picture : nullptr;
}

bool IsOfPictures(const Finding& finding) {
    for (const char* const kind : {"frames", "time", "tags.rate", "tags.aspect", "tags.order"})
        if (NamesKind(kind, finding.kind)) return finding.kind == "frames.foreign";
    return true;
}

bool Covers(const Finding& finding, const ComparedPicture& compared) {
    const std::int64_t at = CountsPictures(finding) ? compared.picture : compared.frame.value_or(-1);
    const auto holds = [at](const FrameRange& range) { return range.first <= at && at <= range.last; };
    return finding.frames.empty() || std::ranges::any_of(finding.frames, holds);
}

/// The picture that shows best what was found; none if there is none.
const ComparedPicture* PictureFor(const Finding& finding, const CompareReport& report) {
    if (!IsOfPictures(finding)) return nullptr;
    const auto& [usual, twoFrames, foreign, otherSize] = report.examples;
    std::vector<const ComparedPicture*> candidates;
    if (CountsPictures(finding)) candidates = {PointerTo(foreign), PointerTo(otherSize)};
    if (finding.kind == "fields.order" || finding.kind == "fields.pulldown")
        candidates = {PointerTo(twoFrames)};
    for (const ComparedPicture& worst : report.worst) candidates.push_back(&worst);
    candidates.push_back(PointerTo(usual));
    const auto shows = [&](const ComparedPicture* at) { return at != nullptr && Covers(finding, *at); };
    const auto found = std::ranges::find_if(candidates, shows);
    return found == candidates.end() ? nullptr : *found;
}

std::uint32_t StepFor(Size size) {
    const std::uint32_t side = std::max(size.width, size.height);
    // An odd one keeps both fields.
    return side > kLongest ? (side + kLongest - 1) / kLongest | 1 : 1;
}

/// The found picture beside what is expected, if that is known, and their difference, if they have one size.
CaptionedImage Strip(const std::optional<ReportImage>& expected, const ReportImage& found, const char* what) {
    std::vector<ReportImage> images{found};
    if (!expected) return {found, fmt::format("Found{}", what)};
    images.insert(images.begin(), *expected);
    std::string caption = fmt::format("Expected and found{}", what);
    if (expected->size == found.size) {
        const int gain = GainFor(*expected, found);
        images.push_back(DifferenceOf(*expected, found, gain));
        caption = gain == 1
                      ? fmt::format("Expected, found, and their difference{}", what)
                      : fmt::format("Expected, found, and their difference {} times as strong{}", gain, what);
    }
    return {Beside(images), caption};
}

/// A part at the top left, where the boxes of numbers begin, so large that each row can be seen.
ReportImage Detail(const ReportImage& image) {
    constexpr std::uint32_t kAcross = 360; // pixels, about
    const auto [width, height] = image.size;
    const std::uint32_t partWidth = std::clamp(width / 8, 32u, 120u);
    const std::uint32_t left = width / 50, top = height / 40;
    const Box part{left, top, left + partWidth, top + std::clamp(height / 6, 24u, 90u)};
    return Enlarged(image, part, kAcross / partWidth);
}

} // namespace

std::vector<ReportFigure> FiguresFor(const CompareReport& report) {
    std::vector<ReportFigure> figures;
    const auto figureOf = [&figures](const ComparedPicture* compared) -> ReportFigure& {
        const auto found = std::ranges::find(figures, compared, &ReportFigure::compared);
        if (found != figures.end()) return *found;
        return figures.emplace_back(ReportFigure{compared, {}, false});
    };
    for (const Finding& finding : report.findings)
        if (const ComparedPicture* const compared = PictureFor(finding, report))
            figureOf(compared).findings.push_back(&finding);
    for (const ComparedPicture& worst : report.worst) figureOf(&worst).isWorst = true;
    return figures;
}

std::string TitleOf(const ComparedPicture& compared, bool isWorst) {
    std::string title = fmt::format("Picture {}", compared.picture);
    if (compared.frame) title += fmt::format(", frame {}", *compared.frame);
    return title + (isWorst ? ": one of those that are furthest off" : "");
}

FigureImages ImagesOf(const Clip& clip, const ComparedPicture& compared) {
    const StreamFacts facts = FactsOf(clip, clip.Info().frames);
    const auto expected = [&](std::uint32_t step) -> std::optional<ReportImage> {
        if (!compared.frame) return std::nullopt;
        return ImageOf(clip.GetFrame(*compared.frame).View(), facts, step);
    };
    const auto found = [&](std::uint32_t step) { return ImageOf(compared.pixels, facts.tags.matrix, step); };
    FigureImages images;
    const std::uint32_t step = std::max(StepFor(facts.size), StepFor(compared.pixels.size));
    const std::optional<ReportImage> frame = expected(step);
    const ReportImage picture = found(step);
    images.strips.push_back(Strip(frame, picture, ""));
    if (frame) images.rows = RowsDrawing(*frame, picture, facts.Interlaced());
    if (!facts.Interlaced()) return images;
    std::optional<ReportImage> detail = expected(1);
    if (detail) detail = Detail(*detail);
    images.strips.push_back(Strip(detail, Detail(found(1)), ", a part enlarged"));
    return images;
}

} // namespace corvane
