#include <algorithm>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "CommandLine/OptionForms.h"
#include "Engine/NumberPair.h"
#include "Engine/SettingsCheck.h"
#include "ManPages.h"
#include "Services/Raster/PixelFormats.h"
#include "lummediatypes.h"

namespace corvane::commandline {

namespace {

constexpr char kAbout[] = R"(.SH DESCRIPTION
A file
.IR NAME .synthex
describes one generated video clip: the size of its frames, their timing, and the colors they are filled with.
It is JSON text in UTF\-8, an object with the keys below, in any order. Whole numbers have no fraction and no
exponent. A file has at most 1 MiB.
.PP
All keys should be there. A missing key counts as 0, square pixels or opaque black, and an unknown one is
passed over in silence; mind the spelling
.BR Gradiant .
.B synthex info \-\-strict
says both, and
.B synthex schema
prints a schema by which editors find them.
)";

constexpr char kColors[] = R"(.SH COLORS
A color is an object of four numbers,
.BR "{}" ,
of which 0 is none and 1 is full: R'G'B' as on a screen, and not multiplied
by alpha. Formats of 8 bits clamp what is beyond, float formats carry it. Of a color that is there, a missing
part counts as 0, alpha too.
)";

/// What values a member may have that is no color's.
std::string ValuesOf(const SettingsMember& member) {
    if (member.codes == SettingsCodes::kPixelFormats) return "a number of PIXEL FORMATS";
    if (member.codes == SettingsCodes::kNone && member.most > INT32_MAX)
        return fmt::format("a whole number from {}", member.least);
    if (member.codes == SettingsCodes::kNone)
        return fmt::format("a whole number from {} to {}", member.least, member.most);
    std::string values;
    for (const SettingsCode& code : CodesOf(member.codes))
        values += fmt::format("{}{} ({})", values.empty() ? "" : ", ", code.number, code.words);
    return values;
}

std::string KeysSection() {
    std::string section = ".SH KEYS\n";
    const ClipSettings settings;
    std::string_view last;
    VisitMembers(settings, [&]<class Number>(const SettingsMember& member, const Number&) {
        const bool isNew = member.key != last;
        last = member.key;
        if (isNew)
            section += fmt::format(".TP\n.B {}\n{}{}\n", member.key, PageText(member.about),
                                   kIsFraction<Number> ? ": a color" : ":");
        if (kIsFraction<Number>) return;
        const std::string values = PageText(ValuesOf(member));
        section += member.part == nullptr ? values + "\n"
                                          : fmt::format(".br\n\\fB{}\\fR, {}\n", member.part, values);
    });
    return section;
}

std::string ColorsSection() {
    std::vector<std::string_view> parts;
    const ClipSettings settings;
    VisitMembers(settings, [&]<class Number>(const SettingsMember& member, const Number&) {
        if (kIsFraction<Number> && std::ranges::find(parts, member.part) == parts.end())
            parts.emplace_back(member.part);
    });
    return fmt::format(kColors, fmt::join(parts, ", "));
}

std::string ExampleSection() {
    const ClipSettings settings{.pixelFormat = PixelFormatTable().front().code,
                                .size = {1920, 1080},
                                .ticksPerFrame = lummediatypes::kFrameRate_VideoPAL.GetTicksPerFrame(),
                                .durationTicks = 10 * lummediatypes::kTicksPerSecond,
                                .upper = {0.25, 0.5, 1, 1}};
    std::string lines;
    const auto tree = nlohmann::ordered_json::parse(WriteSettings(settings));
    for (const auto& [key, value] : tree.items())
        lines += fmt::format("{}    \"{}\": {}", lines.empty() ? "" : ",\n", key, value.dump());
    return ".SH EXAMPLE\nTen seconds of orange:\n.PP\n.nf\n" + PageText("{\n" + lines + "\n}\n") + ".fi\n";
}

std::string TimeSection() {
    std::string section = fmt::format(
        ".SH TIME\nTime is counted in ticks, {} a second. A clip has as many frames as\n.B ticksperframe\n"
        "goes into\n.BR ticks ,\nrounded down. Usual rates, in frames a second, and their\n.BR ticksperframe "
        ":\n"
        ".PP\n.nf\n",
        lummediatypes::kTicksPerSecond);
    for (const char* const rate : kUsualRates) {
        const auto pair = ReadPair(rate, {'/', 1, INT32_MAX, true}).value();
        section += fmt::format(
            "{:<14}{}\n", rate,
            lummediatypes::FramesPerSecond(pair.first, pair.second.value_or(1)).GetTicksPerFrame());
    }
    return section + ".fi\n";
}

std::string FormatsSection() {
    std::string section =
        ".SH PIXEL FORMATS\nThe number, the characters that it stands for, and the name:\n.PP\n.nf\n";
    for (const PixelFormatRow& row : PixelFormatTable())
        section += PageText(
            fmt::format("{:<12}{}  {}\n", row.code, PixelFormatCharacters(row.code), ShortName(row)));
    return section + ".fi\n";
}

} // namespace

std::string SettingsPage() {
    return PageHead("synthex", 5, "settings of a generated video clip") + kAbout + KeysSection() +
           ColorsSection() + TimeSection() + FormatsSection() + ExampleSection() +
           ".SH SEE ALSO\n.BR synthex (1),\n.BR synthex\\-info (1),\n.BR "
           "synthex\\-schema (1)\n";
}

} // namespace corvane::commandline
