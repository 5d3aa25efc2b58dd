#pragma once

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "CvPluginAPI.h"
#include "Engine/Bundle.h"
#include "Engine/Records.h"
#include "Mosk.h"
#include "Tests/TestFolder.h"

/// The bytes of a record.
template <class Record>
std::vector<unsigned char> Bytes(const Record& record) {
    std::vector<unsigned char> bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

/// The loaded plug-in, and a folder for its files.
class PluginTest : public testing::Test {
  protected:
    /// With `anew` of a copy of the bundle, which the process has not loaded before: under the address
    /// sanitizer bundles stay loaded, and a plug-in keeps some things as long.
    explicit PluginTest(bool anew = false) : mBundle(anew ? CopyBundle() : BundlePath()) {}

    static std::filesystem::path BundlePath() {
        return std::filesystem::path(SYNTHEX_BUILD_DIR) / "lib/ImporterSynthex.bundle";
    }
    std::filesystem::path CopyBundle(const std::string& name = "copy.bundle") const {
        std::filesystem::copy(BundlePath(), mFolder / name, std::filesystem::copy_options::recursive);
        return mFolder / name;
    }

    std::u16string Write(const std::string& name, std::string_view text) const {
        mFolder.Write(name, text);
        return Path(name);
    }
    std::u16string Path(const std::string& name) const { return Mosk::FromUTF8((mFolder / name).string()); }

    /// Selector 39 on a fresh record; the instance is in `instance`.
    corvane::Answer Open(const std::u16string& path, void*& instance) const {
        auto record = corvane::HostRecord<imFileOpenRec8>();
        record.mFilePath = path.c_str();
        record.mPrivateData = instance;
        corvane::Answer answer = mBundle.Call(kSelector_OpenFile8, nullptr, &record);
        instance = record.mPrivateData;
        return answer;
    }

    /// Selector 37.
    corvane::Answer GetInfo(const std::u16string& path, const char* prefs, void* instance,
                            imFileInfoRec8& info) const {
        auto access = corvane::HostRecord<imFileAccessRec8>();
        access.mFilePath = path.c_str();
        info = corvane::HostRecord<imFileInfoRec8>();
        info.mPrefs = prefs;
        info.mPrivateData = instance;
        return mBundle.Call(kSelector_GetInfo8, &access, &info);
    }

    /// Selector 47 of a clip of these settings, which is closed again. `handle` is what is in the handle's
    /// place.
    corvane::Answer AskForFrame(const char* settings, std::int64_t ticks, CvVexelHandle& handle) {
        imFileInfoRec8 info;
        EXPECT_EQ(GetInfo(u"/none", settings, nullptr, info).result, 0) << settings;
        handle = nullptr;
        auto record = corvane::HostRecord<imSourceVideoRec>();
        record.mPrivateData = mInstance = info.mPrivateData;
        record.mFrameTime = ticks;
        record.mFrame = &handle;
        const auto before = Bytes(record);
        corvane::Answer answer = mBundle.CallForFrame(record);
        EXPECT_EQ(Bytes(record), before) << "only the handle's place is written";
        EXPECT_EQ(Close(mInstance), 0);
        return answer;
    }

    int Close(void* instance) const { return mBundle.Call(kSelector_CloseFile, nullptr, instance).result; }

    corvane::testing::TestFolder mFolder;
    corvane::Bundle mBundle;
    void* mInstance = nullptr; ///< of the last frame that was asked for, and closed
};

/// A record's expected bytes: untouched ones, with values put at offsets.
class ExpectedBytes {
  public:
    explicit ExpectedBytes(std::size_t size) : mBytes(size, corvane::kUndefinedByte) {}

    template <class T>
    ExpectedBytes& Put(std::size_t offset, T value) {
        std::memcpy(mBytes.data() + offset, &value, sizeof value);
        return *this;
    }
    ExpectedBytes& PutText(std::size_t offset, std::string_view textWithZero) {
        std::memcpy(mBytes.data() + offset, textWithZero.data(), textWithZero.size());
        return *this;
    }
    friend bool operator==(const std::vector<unsigned char>& bytes, const ExpectedBytes& expected) {
        return bytes == expected.mBytes;
    }
    friend void PrintTo(const ExpectedBytes& expected, std::ostream* stream) {
        *stream << testing::PrintToString(expected.mBytes);
    }

  private:
    std::vector<unsigned char> mBytes;
};

/// Settings in which every field differs from its default and from every other.
inline constexpr char kDistinctSettings[] = R"({
    "mPixelFormat": 1650946657, "mFrameWidth": 47, "mFrameHeight": 33,
    "mFramePAR": {"numerator": 128, "denominator": 117}, "mFieldType": 1, "mRenderFormat": 1,
    "mUpperFieldColor": {"mAlphaPart": 0.9, "mRedPart": 0.11, "mGreenPart": 0.12, "mBluePart": 0.13},
    "mLowerFieldColor": {"mAlphaPart": 0.8, "mRedPart": 0.21, "mGreenPart": 0.22, "mBluePart": 0.23},
    "mTopGradiantColorStart": {"mAlphaPart": 0.7, "mRedPart": 0.31, "mGreenPart": 0.32, "mBluePart": 0.33},
    "mTopGradiantColorEnd": {"mAlphaPart": 0.6, "mRedPart": 0.41, "mGreenPart": 0.42, "mBluePart": 0.43},
    "mBottomGradiantColorStart": {"mAlphaPart": 0.5, "mRedPart": 0.51, "mGreenPart": 0.52, "mBluePart": 0.53},
    "mBottomGradiantColorEnd": {"mAlphaPart": 0.4, "mRedPart": 0.61, "mGreenPart": 0.62, "mBluePart": 0.63},
    "mVideoDuration": {"ticks": 847566720001}, "mVideoFrameRate": {"ticksperframe": 8475667200}})";
