// Faults sought: a bundle that is no bundle and crashes the host, a sentence that does not name it, a library
// that stays.
#include "Engine/Bundle.h"

#include <cstdlib>

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Engine/Failure.h"
#include "Tests/TestFolder.h"
#include "Tests/TestSettings.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::BundlePath;
using ::testing::HasSubstr;

TEST(Bundle, WhatIsNoBundleIsRefusedWithItsName) {
    const corvane::testing::TestFolder folder;
    const auto expectRefused = [&](const char* name, const char* why) {
        EXPECT_THAT([&] { corvane::Bundle{folder / name}; },
                    ::testing::ThrowsMessage<corvane::Failure>(
                        ::testing::AllOf(HasSubstr((folder / name).string() + ": "), HasSubstr(why))));
    };
    fs::create_directories(folder / "Broken/Contents/Linux");
    expectRefused("none", "there is no bundle here");
    expectRefused("Broken", "this is no plug-in bundle");
    folder.Write("Broken/Contents/Info.plist", "<plist><dict/></plist>");
    expectRefused("Broken", "CFBundleIdentifier");
    folder.Write("Broken/Contents/Info.plist",
                 "<plist><dict><key>CFBundleIdentifier</key><string>org.broken</string>"
                 "<key>CFBundleExecutable</key><string>Broken</string></dict></plist>");
    expectRefused("Broken", "does not load");
    // Opening a pipe would wait for ever; so much of a library is one that was copied half.
    fs::copy_file(SYNTHEX_BUILD_DIR "/lib/libcorvane.so", folder / "Broken/Contents/Linux/Broken");
    fs::resize_file(folder / "Broken/Contents/Linux/Broken", 20000);
    expectRefused("Broken", "cut off");
    for (const char* const name : {"Linux/Broken", "Info.plist"}) {
        const fs::path file = folder / "Broken/Contents" / name, aside = folder / "aside";
        fs::rename(file, aside);
        ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
        expectRefused("Broken", "pipe");
        fs::rename(aside, file);
    }
    // A library without the entry point: the bench's own.
    fs::copy_file(SYNTHEX_BUILD_DIR "/lib/libcorvane.so", folder / "Broken/Contents/Linux/Broken",
                  fs::copy_options::overwrite_existing);
    expectRefused("Broken", "has no xImportEntry");
}

TEST(Bundle, IsFoundByNameThenEnvironmentThenBesideTheProgram) {
    ::setenv("SYNTHEX_BUNDLE", "", 1);
    EXPECT_EQ(corvane::Bundle::Find(), BundlePath());
    ::setenv("SYNTHEX_BUNDLE", "/from/environment", 1);
    EXPECT_EQ(corvane::Bundle::Find(), "/from/environment");
    EXPECT_EQ(corvane::Bundle::Find("/named"), "/named");
    ::unsetenv("SYNTHEX_BUNDLE");
}

TEST(Bundle, UnloadsCompletely) {
    const auto isMapped = [] {
        return corvane::testing::ReadFile("/proc/self/maps").find("Linux/ImporterSynthex") !=
               std::string::npos;
    };
    for (int i = 0; i < 20; ++i) {
        const corvane::Bundle bundle(BundlePath());
        EXPECT_TRUE(isMapped());
    }
#if !defined(__SANITIZE_ADDRESS__)
    EXPECT_FALSE(isMapped());
#endif
}

} // namespace
