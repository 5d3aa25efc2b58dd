#include "OneCause.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "FieldAnalysis.h"
#include "FrameSequence.h"

namespace corvane {

void KeepCauses(std::vector<Finding>& findings) {
    constexpr std::array<std::string_view, 2> kOfMorePictures{"frames.repeated", "time.rate"};
    // Deinterlacing that blends may make a picture of each field, too: two a frame.
    const bool isDoubled = std::ranges::any_of(findings, [](const Finding& finding) {
        return finding.kind == "frames.repeated" && finding.cause == kEachFrameTwice;
    });
    const bool addsPictures = std::ranges::any_of(findings, [&](const Finding& finding) {
        return finding.kind == "fields.pulldown" || (finding.kind == "fields.blended" && isDoubled) ||
               (finding.kind == "fields.dropped" && finding.cause == kFieldsInTurn);
    });
    if (!addsPictures) return;
    std::erase_if(findings, [&](const Finding& finding) {
        return std::ranges::find(kOfMorePictures, finding.kind) != kOfMorePictures.end();
    });
}

} // namespace corvane
