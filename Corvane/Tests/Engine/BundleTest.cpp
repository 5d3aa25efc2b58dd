// Faults sought: a bundle that is no bundle and crashes the host, a sentence that does not name it, a library
// that stays.
#include "Engine/Bundle.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Engine/Failure.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path kBundle = fs::path(SYNTHEX_BUILD_DIR) / "lib/ImporterSynthex.bundle";

std::string WhyNotLoaded(const fs::path& path) {
    try {
        const corvane::Bundle bundle(path);
    } catch (const corvane::Failure& failure) {
        return failure.what();
    }
    return "loaded";
}

TEST(Bundle, WhatIsNoBundleIsRefusedWithItsName) {
    const fs::path folder = fs::path(testing::TempDir()) / ("bundles" + std::to_string(::getpid()));
    const fs::path broken = folder / "Broken.bundle";
    fs::create_directories(broken / "Contents/Linux");
    EXPECT_THAT(WhyNotLoaded(folder / "none"),
                HasSubstr((folder / "none").string() + ": there is no bundle here"));
    EXPECT_THAT(WhyNotLoaded(broken), HasSubstr("this is no plug-in bundle"));
    std::ofstream(broken / "Contents/Info.plist") << "<plist><dict/></plist>";
    EXPECT_THAT(WhyNotLoaded(broken), HasSubstr("CFBundleIdentifier"));
    std::ofstream(broken / "Contents/Info.plist")
        << "<plist><dict><key>CFBundleIdentifier</key><string>org.broken</string>"
           "<key>CFBundleExecutable</key><string>Broken</string></dict></plist>";
    EXPECT_THAT(WhyNotLoaded(broken), HasSubstr("does not load"));
    // A library without the entry point: the bench's own.
    fs::copy_file(fs::path(SYNTHEX_BUILD_DIR) / "lib/libcorvane.so", broken / "Contents/Linux/Broken");
    EXPECT_THAT(WhyNotLoaded(broken), HasSubstr("has no xImportEntry"));
    fs::remove_all(folder);
}

TEST(Bundle, IsFoundByNameThenEnvironmentThenBesideTheProgram) {
    ::unsetenv("SYNTHEX_BUNDLE");
    EXPECT_EQ(corvane::Bundle::Find(), kBundle);
    ::setenv("SYNTHEX_BUNDLE", "/from/environment", 1);
    EXPECT_EQ(corvane::Bundle::Find(), "/from/environment");
    EXPECT_EQ(corvane::Bundle::Find("/named"), "/named");
    ::unsetenv("SYNTHEX_BUNDLE");
}

bool IsMapped(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    return std::string(std::istreambuf_iterator<char>(maps), {}).find(name) != std::string::npos;
}

TEST(Bundle, UnloadsCompletely) {
    for (int i = 0; i < 20; ++i) {
        const corvane::Bundle bundle(kBundle);
        EXPECT_TRUE(IsMapped("Linux/ImporterSynthex"));
    }
#if !defined(__SANITIZE_ADDRESS__)
    EXPECT_FALSE(IsMapped("Linux/ImporterSynthex"));
#endif
}

TEST(Answer, ReasonIsTheExceptionsOwnText) {
    EXPECT_EQ((corvane::Answer{3, "tag  selector:39. what() returned JSON not well-formed\n"}.Reason()),
              "JSON not well-formed");
    EXPECT_EQ((corvane::Answer{3, "tag Threw an unknown EXCEPTION during  selector:39\n"}.Reason()),
              "tag Threw an unknown EXCEPTION during  selector:39");
    EXPECT_EQ(corvane::Answer{}.Reason(), "");
}

} // namespace
