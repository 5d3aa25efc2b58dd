#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include <fmt/format.h>

#include "CheckedRecord.h"
#include "ChecksShared.h"
#include "Engine/Frame.h"
#include "Rasterkit.h"
#include "Services/Frames/FrameBuffers.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane {

namespace {

/// Frames that were made and not given back.
std::int64_t LiveFrames() {
    return GetFrameStatistics().liveFrames;
}

/// Asks for frame `index` of a clip. Empty if none came, which is noted.
Frame AskForFrame(CheckRun& run, const Bundle& bundle, void* instance, const ClipSettings& settings,
                  std::int64_t index) {
    CvVexelHandle handle = nullptr;
    CheckedRecord<imSourceVideoRec> record;
    record->mPrivateData = instance;
    record->mFrameTime = index * settings.ticksPerFrame;
    record->mFrame = &handle;
    record.Arm();
    const Answer answer = bundle.CallForFrame(*record.Get());
    run.Expect("the result", answer.result, +kResult_Success);
    run.FailIf(record.Touched());
    if (handle == nullptr) {
        run.Fail("no frame came");
        return {};
    }
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 0;
    VexelSuite()->GetPixelAspectRatio(handle, &numerator, &denominator);
    run.Expect("the frame's pixel aspect numerator", numerator, settings.aspect.numerator);
    run.Expect("the frame's pixel aspect denominator", denominator, settings.aspect.denominator);
    Frame frame(handle);
    run.Expect("the frame's width", frame.View().width, settings.size.width);
    run.Expect("the frame's height", frame.View().height, settings.size.height);
    return frame;
}

std::size_t RowSize(const FrameView& view) {
    return std::size_t{view.width} * BytesPerPixel(view.format);
}

/// A row of one color (blue, green, red, alpha), made by the host.
std::vector<std::byte> RowOf(const FrameView& view, const SettingsColor& color) {
    std::vector<std::byte> row(RowSize(view));
    RK_FillWithColor(row.data(), static_cast<std::int32_t>(row.size()), view.width, 1, view.format,
                     color.data(), kRK_FillReplace);
    return row;
}

void ExpectRow(CheckRun& run, const FrameView& view, std::uint32_t row,
               const std::vector<std::byte>& wanted) {
    if (std::memcmp(view.At(0, row), wanted.data(), wanted.size()) != 0)
        run.Fail(fmt::format("row {} is not of the color that the settings ask for", row));
}

/// Overwrites a frame before it is given back: the pool hands the same memory out next, and what the plug-in
/// does not write then shows.
void Spoil(const Frame& frame) {
    const FrameView& view = frame.View();
    for (std::uint32_t row = 0; row < view.height; ++row)
        std::memset(const_cast<std::byte*>(view.At(0, row)), kUndefinedByte, RowSize(view));
}

/// The frame's bytes without what lies between the rows.
std::vector<std::byte> Pixels(const Frame& frame) {
    const FrameView& view = frame.View();
    std::vector<std::byte> bytes;
    for (std::uint32_t row = 0; row < view.height; ++row)
        bytes.insert(bytes.end(), view.At(0, row), view.At(0, row) + RowSize(view));
    return bytes;
}

/// The concrete format in which a format is to be delivered.
bool IsRightFormat(const PixelFormatRow& asked, RK_PixelFormat delivered) {
    if (IsConcrete(asked.raster)) return delivered == asked.raster;
    return delivered == kRK_VUYA_8u_601 || delivered == kRK_VUYA_32f_709;
}

} // namespace

void CheckFrames(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    for (const PixelFormatRow& format : PixelFormatTable()) {
        const ClipSettings settings = With(&ClipSettings::pixelFormat, format.code);
        const CheckedInstance instance(bundle, settings);
        run.Doing(fmt::format("asking for a frame of {}", format.name));
        for (int time = 0; time < 2; ++time) {
            const Frame frame = AskForFrame(run, bundle, instance.Get(), settings, 3);
            if (!frame) break;
            const FrameView& view = frame.View();
            if (!IsRightFormat(format, view.format))
                run.Fail("the frame arrives in format " + PixelFormatHex(frame.Format()));
            const std::vector<std::byte> wanted = RowOf(view, settings.upper);
            for (std::uint32_t row = 0; row < view.height; ++row) ExpectRow(run, view, row, wanted);
            Spoil(frame);
        }
    }
}

void CheckFields(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    for (const std::int32_t fieldType : {1, 2}) {
        const ClipSettings settings = With(&ClipSettings::fieldType, fieldType);
        const CheckedInstance instance(bundle, settings);
        run.Doing(fmt::format("asking for a frame of field type {}", fieldType));
        const Frame frame = AskForFrame(run, bundle, instance.Get(), settings, 0);
        if (!frame) return;
        const FrameView& view = frame.View();
        // The number is printed over the upper rows.
        for (std::uint32_t row = view.height / 2; row < view.height; ++row)
            ExpectRow(run, view, row, RowOf(view, row % 2 == 0 ? settings.upper : settings.lower));
        if (Pixels(frame) == Pixels(AskForFrame(run, bundle, instance.Get(), settings, 1)))
            run.Fail("frames 0 and 1 are alike: no frame number is printed");
    }
}

void CheckGradient(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const ClipSettings settings =
        With(&ClipSettings::pixelFormat, CvPixelFormat_ARGB_4444_32f, With(&ClipSettings::renderFormat, 1u));
    const CheckedInstance instance(bundle, settings);
    const std::int64_t frames = settings.durationTicks / settings.ticksPerFrame;
    // The last one lies after the end: it extrapolates.
    for (const std::int64_t index : {std::int64_t{0}, std::int64_t{7}, frames - 1, frames + 5}) {
        run.Doing(fmt::format("asking for frame {} of a gradient", index));
        const Frame frame = AskForFrame(run, bundle, instance.Get(), settings, index);
        if (!frame) return;
        const auto t = static_cast<float>(static_cast<double>(index) / static_cast<double>(frames));
        for (std::uint32_t row = 0; row < settings.size.height; ++row) {
            const float s = static_cast<float>(row) / static_cast<float>(settings.size.height);
            SettingsColor color;
            for (std::size_t part = 0; part < color.size(); ++part) {
                const auto blend = [&](const SettingsColor& start, const SettingsColor& end) {
                    return start[part] + (end[part] - start[part]) * t;
                };
                const float top = blend(settings.topStart, settings.topEnd);
                const float bottom = blend(settings.bottomStart, settings.bottomEnd);
                color[part] = top + (bottom - top) * s;
            }
            ExpectRow(run, frame.View(), row, RowOf(frame.View(), color));
        }
    }
    for (const Size size : {Size{46, 0}, Size{0, 34}}) {
        const ClipSettings none =
            With(&ClipSettings::fieldType, 1, With(&ClipSettings::size, size, settings));
        run.Doing(fmt::format("asking for a gradient of {} x {} pixels", size.width, size.height));
        AskForFrame(run, bundle, CheckedInstance(bundle, none).Get(), none, 0);
    }
}

void CheckRepeatedFrame(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const std::int64_t inUse = LiveFrames();
    for (const std::uint32_t renderFormat : {0u, 1u}) {
        const ClipSettings settings =
            With(&ClipSettings::fieldType, 1, With(&ClipSettings::renderFormat, renderFormat));
        const CheckedInstance instance(bundle, settings);
        run.Doing(fmt::format("asking for a frame of render format {} twice", renderFormat));
        std::vector<std::byte> first;
        for (int time = 0; time < 2; ++time) {
            const Frame frame = AskForFrame(run, bundle, instance.Get(), settings, 12);
            if (!frame) return;
            if (time == 0)
                first = Pixels(frame);
            else if (Pixels(frame) != first)
                run.Fail("the second frame differs from the first");
            Spoil(frame);
        }
        if (LiveFrames() != inUse)
            run.Fail(fmt::format("{} frames are still in use afterwards", LiveFrames() - inUse));
    }
}

void CheckImpossibleFrames(CheckRun& run) {
    struct Row {
        const char* what;
        ClipSettings settings;
        std::int32_t result;
    };
    const Row kRows[] = {
        {"an unknown pixel format", With(&ClipSettings::pixelFormat, FourCC("zzzz")), kResult_Unsupported},
        {"4294967295 rows", With(&ClipSettings::size, {46, 4294967295}), kResult_NoInstance},
        {"70000 x 70000 pixels", With(&ClipSettings::size, {70000, 70000}), kResult_NoInstance},
        // In 32 bits its size wraps to a plausible one.
        {"46341 x 46341 pixels", With(&ClipSettings::size, {46341, 46341}), kResult_NoInstance},
    };
    const Bundle bundle(run.BundlePath());
    const std::int64_t inUse = LiveFrames();
    for (const Row& row : kRows) {
        const CheckedInstance instance(bundle, row.settings);
        CvVexelHandle handle = nullptr;
        CheckedRecord<imSourceVideoRec> record;
        record->mPrivateData = instance.Get();
        record->mFrameTime = 0;
        record->mFrame = &handle;
        record.Arm();
        run.Doing(fmt::format("asking for a frame of {}", row.what));
        run.Expect("the result", bundle.CallForFrame(*record.Get()).result, row.result);
        run.FailIf(record.Touched());
        if (handle != nullptr) {
            run.Fail("a frame came");
            VexelSuite()->Dispose(handle);
        }
    }
    if (LiveFrames() != inUse)
        run.Fail(fmt::format("{} frames are still in use afterwards", LiveFrames() - inUse));
}

} // namespace corvane
