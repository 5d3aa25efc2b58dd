#include "CompareText.h"

#include <cstddef>

#include <fmt/format.h>

#include "Services/Foundation/QuotedText.h"

namespace corvane {

std::vector<ComparedPlane> ComparedPlanes(const CompareReport& report) {
    constexpr const char* kText[2][4] = {{"R'", "G'", "B'", "alpha"}, {"Y'", "Cb", "Cr", "alpha"}};
    constexpr const char* kKeys[2][4] = {{"r", "g", "b", "a"}, {"y", "cb", "cr", "a"}};
    std::vector<ComparedPlane> planes;
    for (std::size_t i = 0; i < report.errors.size(); ++i)
        if (report.errors[i].measured)
            planes.push_back(
                {kText[report.format.yCbCr][i], kKeys[report.format.yCbCr][i], report.errors[i]});
    return planes;
}

std::string MatchedText(const CompareReport& report) {
    return fmt::format("{} of {} pictures show a frame of the clip{}", report.framesMatched,
                       report.framesCompared, report.cancelled ? "; the rest was not compared" : "");
}

std::string PSNRText(const CompareReport& report) {
    std::string text;
    for (const ComparedPlane& plane : ComparedPlanes(report)) {
        text += fmt::format("{}{} ", text.empty() ? "" : ", ", plane.text);
        text += plane.errors.psnr ? fmt::format("{:.1f} dB", *plane.errors.psnr) : "exact";
    }
    return text;
}

std::string LargestErrorText(const CompareReport& report) {
    std::string text;
    for (const ComparedPlane& plane : ComparedPlanes(report))
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", plane.text, plane.errors.largest);
    return text.empty() ? text : fmt::format("{} of {}", text, (1u << report.format.bits) - 1);
}

std::string EscapedText(std::string_view text) {
    std::string escaped;
    for (const char character : Quoted(text)) {
        switch (character) {
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '&': escaped += "&amp;"; break;
        case '"': escaped += "&quot;"; break;
        default: escaped += character;
        }
    }
    return escaped;
}

} // namespace corvane
