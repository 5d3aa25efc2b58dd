// Fault sought: a damaged settings file that crashes the plug-in, is read in part, or is refused without its
// name.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Engine/Clip.h"
#include "Tests/Process.h"

namespace {

using namespace corvane;

class SettingsSweep : public ::testing::Test {
  protected:
    /// Opens a text as a file, and renders its last frame if it has one that is not too large to wait for.
    /// Returns whether it opened.
    bool Opens(const std::string& text) const {
        // A new file each time: some file systems wait for the disk when a file is truncated and written
        // anew.
        std::filesystem::remove(mFolder / "clip.synthex");
        const std::filesystem::path path = mFolder.Write("clip.synthex", text);
        try {
            const auto clip = Clip::OpenFile(mBundle, path);
            const ClipInfo& info = clip->Info();
            const auto [width, height] = info.format.size;
            const bool small = std::uint64_t{width} * height < 4'000'000;
            if (small && clip->WhyNotRenderable().empty()) {
                EXPECT_EQ(clip->GetFrame(info.frames - 1).View().height, height) << text;
            }
            return true;
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), ::testing::StartsWith(path.string() + ": ")) << text;
            return false;
        }
    }

    const TestFolder mFolder;
    const std::shared_ptr<Bundle> mBundle = std::make_shared<Bundle>(corvane::testing::BundlePath());
};

TEST_F(SettingsSweep, FilesWithOneByteChangedNeverEndTheProcess) {
    const std::string whole =
        SettingsText(R"(,"mRenderFormat":1,"mFramePAR":{"numerator":12,"denominator":11},)"
                     R"("mTopGradiantColorEnd":{"mAlphaPart":1e-3,"mRedPart":0.5})");
    ASSERT_TRUE(Opens(whole));
    int opened = 0;
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const char byte : {'\0', '"', '-', '9', 'e', '{', '}', ',', '\xFF'})
            opened += Opens(std::string(whole).replace(at, 1, 1, byte));
    // Changed digits and keys read; changed punctuation does not.
    EXPECT_GT(opened, 500);
    EXPECT_LT(opened, static_cast<int>(9 * whole.size()) - 500);
}

} // namespace
