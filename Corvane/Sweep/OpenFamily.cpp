#include "OpenFamily.h"

#include <algorithm>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "Engine/Clip.h"
#include "Entry.h"
#include "Export/Export.h"

namespace corvane {
namespace {

// Asks only for what is wrong whatever the clip is.
void CheckExports(const Family& family, const std::shared_ptr<Bundle>& bundle) {
    constexpr std::int64_t kTick = 10160640000; // of 25 frames a second
    const std::string settings = WriteSettings({.pixelFormat = CvPixelFormat_BGRA_4444_8u,
                                                .size = {64, 48},
                                                .ticksPerFrame = kTick,
                                                .durationTicks = kTick});
    const auto clip = Clip::OpenPrefs(bundle, "clip", settings);
    std::set<std::pair<std::string, std::string>> seen;
    for (std::int64_t number = 0; number < family.Count(); ++number) {
        const Member member = family.At(number);
        ExportOptions options;
        options.output = member.output;
        options.format = member.spec.container.empty() ? member.output.extension().string().substr(1)
                                                       : member.spec.container;
        options.codec = member.spec.codec;
        if (!seen.emplace(options.format, options.codec).second) continue;
        const ExportPreview preview = PreviewExport(*clip, options);
        if (preview.wrongUsage) throw UsageFailure(fmt::format("member {}: {}", number, preview.whyNot));
    }
}

void ListAsJSON(const Family& family, const std::function<void(const std::string&)>& print) {
    ClipSettings settings;
    std::string text = WriteSettings(settings); // the slowest part of it, and codecs share it
    for (std::int64_t number = 0; number < family.Count(); ++number) {
        const Member member = family.At(number);
        if (member.spec.settings != settings) text = WriteSettings(settings = member.spec.settings);
        print(EntryStart(family, member, text) + "}\n");
    }
}

} // namespace

Family OpenFamily(const Plan& plan, const std::shared_ptr<Bundle>& bundle) {
    Family family(plan, ReadSettings(Clip::OpenFile(bundle, plan.base)->Settings()));
    CheckExports(family, bundle);
    return family;
}

void ListFamily(const Family& family, bool json, const std::function<void(const std::string&)>& print) {
    if (json) return ListAsJSON(family, print);
    std::vector<std::size_t> widths;
    for (const AxisRow* const axis : family.Axes()) widths.push_back(std::string_view(axis->name).size());
    for (std::int64_t number = 0; number < family.Count(); ++number) {
        const Member member = family.At(number);
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], member.words[i].size());
    }
    std::string line = fmt::format("{:<7}", "Member");
    for (std::size_t i = 0; i < widths.size(); ++i)
        line += fmt::format("  {:<{}}", family.Axes()[i]->name, widths[i]);
    print(line + "  Frames  Output\n");
    for (std::int64_t number = 0; number < family.Count(); ++number) {
        const Member member = family.At(number);
        line = fmt::format("{:<7}", number);
        for (std::size_t i = 0; i < widths.size(); ++i)
            line += fmt::format("  {:<{}}", member.words[i], widths[i]);
        print(fmt::format("{}  {:<6}  {}\n", line, member.Frames(),
                          (family.Folder() / member.output).string()));
    }
}

} // namespace corvane
