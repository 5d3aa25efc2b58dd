#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include <fmt/format.h>

#include "Engine/Clip.h"
#include "Tests/TestSettings.h"

namespace corvane::testing {

/// Settings that differ per test. The colors are saturated and unlike in all channels.
struct Settings {
    std::uint32_t pixelFormat = CvPixelFormat_BGRA_4444_8u;
    std::uint32_t width = 720, height = 576;
    std::uint32_t parNumerator = 40, parDenominator = 33;
    int fieldType = 1;
    std::int64_t ticksPerFrame = 10160640000;
    int frames = 5;
    double alpha = 1;      ///< of the upper field
    bool gradient = false; ///< from black at the top to white, in the first frame
};

inline std::string TextOf(const Settings& settings) {
    return fmt::format(
        R"({{"mPixelFormat":{},"mFrameWidth":{},"mFrameHeight":{},"mFramePAR":{{"numerator":{},"denominator":{}}},)"
        R"("mFieldType":{},"mRenderFormat":{},"mVideoFrameRate":{{"ticksperframe":{}}},"mVideoDuration":{{"ticks":{}}},)"
        R"("mUpperFieldColor":{{"mAlphaPart":{},"mRedPart":0.95,"mGreenPart":0.1,"mBluePart":0.3}},)"
        R"("mLowerFieldColor":{{"mAlphaPart":1.0,"mRedPart":0.05,"mGreenPart":0.8,"mBluePart":0.55}},)"
        R"("mBottomGradiantColorStart":{{"mAlphaPart":1,"mRedPart":1,"mGreenPart":1,"mBluePart":1}}}})",
        settings.pixelFormat, settings.width, settings.height, settings.parNumerator, settings.parDenominator,
        settings.fieldType, settings.gradient ? 1 : 0, settings.ticksPerFrame,
        settings.ticksPerFrame * settings.frames, settings.alpha);
}

inline std::shared_ptr<Bundle> LoadBundle() {
    return std::make_shared<Bundle>(BundlePath());
}

inline std::unique_ptr<Clip> MakeClip(const Settings& settings) {
    return Clip::OpenPrefs(LoadBundle(), "clip", TextOf(settings));
}

inline std::string OutputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    char part[65536];
    while (const std::size_t size = fread(part, 1, sizeof part, pipe.get())) output.append(part, size);
    return output;
}

/// What ffprobe says of a video file.
inline std::map<std::string, std::string> Probe(const std::filesystem::path& file,
                                                const std::string& entries) {
    std::istringstream lines(OutputOf(fmt::format(
        "ffprobe -v error -select_streams v:0 -count_frames -show_entries {} -of default=nw=1 '{}'", entries,
        file.string())));
    std::map<std::string, std::string> values;
    for (std::string line; std::getline(lines, line);)
        values.emplace(line.substr(0, line.find('=')), line.substr(line.find('=') + 1));
    return values;
}

} // namespace corvane::testing
