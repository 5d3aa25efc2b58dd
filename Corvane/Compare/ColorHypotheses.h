#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ColorSamples.h"
#include "Export/Picture/StreamFacts.h"
#include "Video.h"

namespace corvane {

/// Something that can have happened to the colors of a clip.
struct ColorHypothesis {
    std::string kind;     ///< of the finding: "color.matrix"
    std::string expected; ///< what should have been done, in a few words; may be empty
    std::string found;    ///< what was done instead
    std::string cause;    ///< as a clause
    /// The color that a viewer sees for one of the clip.
    std::function<Color(const Color&)> change;
    /// Whether the samples would be as an export of the clip makes them, so that the tag is at fault.
    bool tagAtFault = false;
    /// Whether its parameters come from the samples, so that it fits anything a little.
    bool fitted = false;
};

/// Black and white as the print of numbers shows them: luma, or green of R'G'B', in steps of 8 bits.
struct PrintLevels {
    double black = 0;
    double white = 0;
};

/// What can be said of a clip's samples by its export and by the video's tags.
struct CodingFacts {
    SampleCoding told;                  ///< how viewers take the samples
    int exported = kMatrix709;          ///< the matrix that an export of the clip has; its range is limited
    bool saysMatrix = false;            ///< whether the video has such a tag
    bool alpha = false;                 ///< whether the video has an alpha plane
    std::optional<PrintLevels> print{}; ///< of clips whose numbers were read
};

/// Gathers that of samples that viewers take by `told`, which comes from `tags`. Any thread.
CodingFacts CodingFactsOf(const StreamFacts& clip, const SampleCoding& told, const VideoTags& tags,
                          bool alpha);

/// The changes that have no parameters: matrix, range, channels, transfer, alpha. Throws `std::bad_alloc`.
/// Any thread.
std::vector<ColorHypothesis> FixedHypotheses(const CodingFacts& facts);

/// The changes that only samples of many colors tell: levels that are cut, moved or of fewer bits, and one
/// transfer taken for another. Throws `std::bad_alloc`. Any thread.
std::vector<ColorHypothesis> FittedHypotheses(const CodingFacts& facts,
                                              const std::vector<ColorSample>& samples);

/// Levels that are cut, of samples of few colors: those to which black and white were cut tell them, as far
/// as they are known. Throws `std::bad_alloc`. Any thread.
std::vector<ColorHypothesis> CutHypotheses(const CodingFacts& facts, const std::vector<ColorSample>& samples);

} // namespace corvane
