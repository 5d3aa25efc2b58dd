#include <atomic>

#include "Calls.h"
#include "Export/Loader/ExportLoader.h"
#include "Handles.h"

using namespace corvane;
using bindings::Call;
using bindings::Given;
using bindings::Opened;

namespace {

std::string Word(const char* text) {
    return text == nullptr ? "" : text;
}

ExportOptions OptionsOf(const corvane_render_options& asked) {
    ExportOptions options;
    options.output = &Given(asked.output, "corvane_clip_render", "the output");
    options.format = Word(asked.format);
    options.codec = Word(asked.codec);
    options.jobs = asked.jobs;
    options.memory = asked.memory;
    options.native = asked.native != 0;
    if (asked.has_frames != 0) options.frames = {asked.first_frame, asked.last_frame};
    return options;
}

} // namespace

int corvane_clip_render(const corvane_clip* clip, const corvane_render_options* options,
                        corvane_render_report* report) {
    return Call(-1, [&] {
        const char* const function = "corvane_clip_render";
        const Clip& given = *Opened(clip, function, "the clip").clip;
        const corvane_render_options asked = bindings::Taken(Given(options, function, "the options"));
        std::atomic<bool> cancel{false};
        const auto tell = [&](std::int64_t done, std::int64_t total) {
            if (asked.progress != nullptr && asked.progress(asked.user, done, total) != 0) cancel = true;
        };
        const ExportReport made = LoadAndExportClip(given, OptionsOf(asked), tell, cancel);
        if (report == nullptr) return 0;
        corvane_render_report full{};
        full.frames = made.frames;
        full.bytes = made.bytes;
        full.cancelled = made.cancelled;
        full.loses_alpha = made.losesAlpha;
        bindings::Hand(full, *report);
        return 0;
    });
}
