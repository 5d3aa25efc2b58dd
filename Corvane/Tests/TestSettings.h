#pragma once

#include <filesystem>
#include <string>

namespace corvane::testing {

/// The bundle that was built with the tests.
inline std::filesystem::path BundlePath() {
    return SYNTHEX_BUILD_DIR "/lib/ImporterSynthex.bundle";
}

/// Settings of a small clip of 10 frames, with more members (", ..." or nothing); of two members with one
/// name the later counts.
inline std::string SettingsText(const std::string& members = {}) {
    return R"({"mPixelFormat":1634887522,"mFrameWidth":64,"mFrameHeight":48,"mFieldType":1,)"
           R"("mVideoDuration":{"ticks":84672000000},"mVideoFrameRate":{"ticksperframe":8467200000})" +
           members + "}";
}

} // namespace corvane::testing
