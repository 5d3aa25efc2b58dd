#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "Calls.h"
#include "Engine/Preferences.h"
#include "Engine/SettingsText.h"
#include "Engine/TextFile.h"
#include "Handles.h"
#include "Services/Raster/PixelFormats.h"
#include "Sweep/Axes.h"
#include "lummediatypes.h"

using namespace corvane;
using bindings::Call;
using bindings::Given;
using bindings::Opened;

namespace {

corvane_clip* HandOver(std::unique_ptr<Clip> clip) {
    return new corvane_clip{std::move(clip)};
}

ClipSettings UsualSettings() {
    constexpr std::int64_t kSeconds = 10;
    const Rate rate = kDefaultSequence.rate;
    return {.pixelFormat = CvPixelFormat_BGRA_4444_8u,
            .size = kDefaultSequence.size,
            .aspect = kDefaultSequence.aspect,
            .ticksPerFrame = lummediatypes::kTicksPerSecond / rate.scale * rate.sampleSize,
            .durationTicks = kSeconds * lummediatypes::kTicksPerSecond};
}

/// Applies `given` in the order of the axes, so that a number of frames is one at the rate that is told.
ClipSettings SettingsOf(const char* name, std::span<const corvane_setting> given) {
    const char* const function = "corvane_clip_create";
    for (const corvane_setting& setting : given) {
        Given(setting.name, function, "a setting's name");
        Given(setting.value, function, "a setting's value");
        const AxisRow* const axis = FindAxis(setting.name);
        if (axis == nullptr || !axis->ofClip)
            throw UsageFailure(fmt::format("{}: there is no setting '{}'; choose one of {}.", name,
                                           setting.name, ListAxes(true)));
    }
    const auto ofGradient = [](const corvane_setting& setting) {
        const std::string_view word = setting.name;
        return word.starts_with("top-") || word.starts_with("bottom-");
    };
    MemberSpec spec{.name = name, .settings = UsualSettings(), .codec = {}, .container = {}};
    spec.settings.renderFormat = std::ranges::any_of(given, ofGradient);
    for (const AxisRow& axis : AxisTable())
        for (const corvane_setting& setting : given) {
            if (setting.name != std::string_view(axis.name)) continue;
            const std::string whyNot = axis.read(setting.value, spec);
            if (!whyNot.empty())
                throw UsageFailure(fmt::format("{}: {} '{}' is not understood; {}.", name, setting.name,
                                               setting.value, whyNot));
        }
    return spec.settings;
}

} // namespace

corvane_importer* corvane_importer_load(const char* bundle) {
    return Call<corvane_importer*>(
        nullptr, [&] { return new corvane_importer{Bundle::Shared(bundle == nullptr ? "" : bundle)}; });
}

void corvane_importer_release(corvane_importer* importer) {
    delete importer;
}

uint32_t corvane_importer_delivered_format(const corvane_importer* importer, uint32_t code) {
    return Call<uint32_t>(0, [&] {
        const auto& given = Opened(importer, "corvane_importer_delivered_format", "the importer");
        return DeliveredFormat(given.bundle, code).value_or(0);
    });
}

corvane_clip* corvane_clip_open_file(const corvane_importer* importer, const char* path) {
    return Call<corvane_clip*>(nullptr, [&] {
        const char* const function = "corvane_clip_open_file";
        const auto& bundle = Opened(importer, function, "the importer").bundle;
        return HandOver(Clip::OpenFile(bundle, &Given(path, function, "the path")));
    });
}

corvane_clip* corvane_clip_open_text(const corvane_importer* importer, const char* name,
                                     const char* settings) {
    return Call<corvane_clip*>(nullptr, [&] {
        const char* const function = "corvane_clip_open_text";
        const auto& bundle = Opened(importer, function, "the importer").bundle;
        const char* const text = &Given(settings, function, "the settings text");
        return HandOver(Clip::OpenPrefs(bundle, &Given(name, function, "the name"), text));
    });
}

corvane_clip* corvane_clip_create(const corvane_importer* importer, const char* name,
                                  const corvane_setting* settings, size_t count) {
    return Call<corvane_clip*>(nullptr, [&] {
        const char* const function = "corvane_clip_create";
        const auto& bundle = Opened(importer, function, "the importer").bundle;
        Given(name, function, "the name");
        if (count > 0) Given(settings, function, "the array of settings");
        return HandOver(Clip::OpenPrefs(bundle, name, WriteSettings(SettingsOf(name, {settings, count}))));
    });
}

void corvane_clip_release(corvane_clip* clip) {
    delete clip;
}

int corvane_clip_get_info(const corvane_clip* clip, corvane_clip_info* info) {
    return Call(-1, [&] {
        const char* const function = "corvane_clip_get_info";
        const ClipInfo& facts = Opened(clip, function, "the clip").clip->Info();
        const ClipFormat& format = facts.format;
        corvane_clip_info full{};
        full.width = format.size.width;
        full.height = format.size.height;
        full.aspect_numerator = format.aspect.numerator;
        full.aspect_denominator = format.aspect.denominator;
        full.rate_numerator = format.rate.scale;
        full.rate_denominator = format.rate.sampleSize;
        full.field_order = static_cast<int32_t>(format.order);
        full.format = facts.pixelFormat;
        if (const PixelFormatRow* const row = FindPixelFormatOf(format.raster))
            full.delivered_format = row->code;
        full.frames = facts.frames;
        full.ticks_per_frame = facts.ticksPerFrame;
        full.duration_ticks = facts.durationTicks;
        bindings::Hand(full, Given(info, function, "the info"));
        return 0;
    });
}

const char* corvane_clip_settings(const corvane_clip* clip) {
    return Call<const char*>(
        nullptr, [&] { return Opened(clip, "corvane_clip_settings", "the clip").clip->Settings().c_str(); });
}

int corvane_clip_save(const corvane_clip* clip, const char* path) {
    return Call(-1, [&] {
        const char* const function = "corvane_clip_save";
        const std::string& settings = Opened(clip, function, "the clip").clip->Settings();
        std::ignore = WriteTextFile(&Given(path, function, "the path"), settings);
        return 0;
    });
}
