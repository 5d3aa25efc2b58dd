#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ColorHypotheses.h"

namespace corvane {

/// The code values that a row would have if `change` had been made to its colors; none was if it is empty.
/// Held to what 8 bits have. Any thread.
Codes PredictedCodes(const ColorSample& sample, const std::function<Color(const Color&)>& change);

/// How far a row is from what is predicted: the worst plane, in steps of 8 bits. Any thread.
double StepsOff(const ColorSample& sample, const Codes& predicted);

/// The root of the mean square of `StepsOff` from what `change` predicts. Any thread.
double RootMeanSquareOff(const std::vector<ColorSample>& samples,
                         const std::function<Color(const Color&)>& change);

/// What explains that colors differ.
struct ColorVerdict {
    double off = 0;      ///< what samples are off, as the root of the mean square, in steps of 8 bits
    double allowed = 0;  ///< what they may be off: the tolerance, and what the codec's noise explains
    double residual = 0; ///< what is left if the explanation holds
    /// None if nothing is off, and if nothing explains it, or several things.
    std::optional<ColorHypothesis> explanation;
    /// What happened besides, if one thing alone does not explain it, and two do.
    std::optional<ColorHypothesis> second;
    std::vector<std::string> candidates; ///< causes, if several explain it equally well

    bool IsOff() const { return off > allowed || explanation; }
};

/// Judges samples that are all taken by `facts.told`. `codecNoise` is what the codec may put all samples of a
/// color off, in steps of 8 bits. Throws `std::bad_alloc`. Any thread.
ColorVerdict JudgeColors(const std::vector<ColorSample>& samples, const CodingFacts& facts, double tolerance,
                         double codecNoise);

/// How much rows that lie beside each other in a picture differ in what they are off, in steps of 8 bits:
/// what happened to colors changes slowly with them, and a codec's noise doesn't. Any thread.
double NoiseOf(const std::vector<ColorSample>& samples);

} // namespace corvane
