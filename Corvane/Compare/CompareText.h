#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Comparison.h"

namespace corvane {

/// A plane that was compared.
struct ComparedPlane {
    const char* text;   ///< its name for people: "Y'"
    const char* key;    ///< its name for programs: "y"
    PlaneErrors errors; ///< what was measured
};

// What a report says in a line, the same in the command line, the window and the page. Any thread; they fail
// only for want of memory.

/// The planes that were compared, in their order.
std::vector<ComparedPlane> ComparedPlanes(const CompareReport& report);

/// "98 of 100 pictures show a frame of the clip", and that the rest was not compared if so, without a period.
std::string MatchedText(const CompareReport& report);

/// "Y' 41.2 dB, Cb exact, Cr 38.0 dB"; empty if no plane was compared.
std::string PSNRText(const CompareReport& report);

/// "Y' 3, Cb 0, Cr 2 of 255": the largest error of each plane, and the largest code value that there is;
/// empty if no plane was compared.
std::string LargestErrorText(const CompareReport& report);

/// The text, as one line, for pages of HTML.
std::string EscapedText(std::string_view text);

/// What is said in place of findings if there are none.
inline constexpr const char* kNothingFoundText = "Nothing beyond the tolerance was found.";

} // namespace corvane
