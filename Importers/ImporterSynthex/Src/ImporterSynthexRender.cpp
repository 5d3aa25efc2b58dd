#include <cstddef>
#include <cstdint>

#include "ImporterSynthex.h"
#include "Rasterkit.h"

namespace {

/// A frame's pixels, and how the raster service is to write them.
struct PixelBuffer {
    char* base = nullptr;
    std::int32_t rowBytes = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    RK_PixelFormat format = 0;

    /// The address of a row. Deliberate: the offset is an unsigned 32-bit product, so only frames whose rows
    /// go down in memory can have a gradient.
    char* Row(std::uint32_t row) const { return base + static_cast<std::uint32_t>(rowBytes) * row; }
};

/// A color as the raster service takes it: blue, green, red, alpha.
struct RasterColor {
    explicit RasterColor(const FloatColor& color)
        : mParts{color.mBluePart, color.mGreenPart, color.mRedPart, color.mAlphaPart} {}

    /// `from` + (`to` - `from`) x `t`, and neither clamped.
    static RasterColor Blend(const RasterColor& from, const RasterColor& to, float t) {
        return from + (to - from) * t;
    }

    RasterColor operator+(const RasterColor& other) const {
        return Combine(other, [](float a, float b) { return a + b; });
    }
    RasterColor operator-(const RasterColor& other) const {
        return Combine(other, [](float a, float b) { return a - b; });
    }
    RasterColor operator*(float factor) const {
        return Combine(*this, [=](float a, float) { return a * factor; });
    }

    float mParts[4];

  private:
    template <class Operation>
    RasterColor Combine(const RasterColor& other, Operation operation) const {
        RasterColor result = *this;
        for (int i = 0; i < 4; ++i) result.mParts[i] = operation(mParts[i], other.mParts[i]);
        return result;
    }
};

/// The concrete format in which frames of `format` are filled.
///
/// Deliberate: every extended format collapses to one of two, by these tests as they stand.
RK_PixelFormat FillFormat(CvPixelFormat format) {
    const RK_PixelFormat raster = BEPixelFormatToRKPixelFormat(SDKToBEPixelFormat(format));
    if (raster < kRK_FirstExtended) return raster;
    const std::uint32_t family = raster >> 24;
    const bool is8BitVideo601 = (raster & kRK_Extended_Video) != 0 && family >= 0x09 && family <= 0x0C &&
                                (raster & kRK_Extended_8Bit) == kRK_Extended_8Bit && (raster & kRK_709) == 0;
    return is8BitVideo601 ? kRK_VUYA_8u_601 : kRK_VUYA_32f_709;
}

void FillRows(const PixelBuffer& buffer, char* firstRow, std::int32_t step, std::uint32_t rows,
              const RasterColor& color) {
    RK_FillWithColor(firstRow, step, buffer.width, rows, buffer.format, color.mParts, kRK_FillReplace);
}

void FillFieldColors(const PixelBuffer& buffer, const SynthexInfo& info) {
    const RasterColor upper(info.mUpperFieldColor);
    if (info.mFieldType == lummediatypes::kFieldType_Progressive) {
        FillRows(buffer, buffer.base, buffer.rowBytes, buffer.height, upper);
        return;
    }
    // Deliberate: the even rows are the upper field's whatever the field order, and of an odd number of rows
    // the last one is left as it is.
    const std::int32_t fieldStep = 2 * buffer.rowBytes;
    char* const secondRow = buffer.base + buffer.rowBytes; // in a frame stored bottom up, before the first
    FillRows(buffer, buffer.base, fieldStep, buffer.height / 2, upper);
    FillRows(buffer, secondRow, fieldStep, buffer.height / 2, RasterColor(info.mLowerFieldColor));
}

/// The share of the clip that lies before the frame is divided in double precision and rounded to float; all
/// that follows is float, in this order. Nothing is clamped: a frame after the end extrapolates, and a clip
/// of no frames gives what the arithmetic gives.
void FillGradient(const PixelBuffer& buffer, const SynthexInfo& info, std::int32_t frame) {
    const std::int32_t total = info.mVideoDuration.ToFrame32(info.mVideoFrameRate);
    const float t = static_cast<float>(static_cast<double>(frame) / static_cast<double>(total));
    const RasterColor top = RasterColor::Blend(RasterColor(info.mTopGradiantColorStart),
                                               RasterColor(info.mTopGradiantColorEnd), t);
    const RasterColor bottom = RasterColor::Blend(RasterColor(info.mBottomGradiantColorStart),
                                                  RasterColor(info.mBottomGradiantColorEnd), t);
    const RasterColor delta = bottom - top;
    // Deliberate: divided by the height, not by the height less one, so the bottom color itself is never
    // reached.
    for (std::uint32_t row = 0; row < buffer.height; ++row) {
        const float s = static_cast<float>(row) / static_cast<float>(buffer.height);
        FillRows(buffer, buffer.Row(row), buffer.rowBytes, 1, top + delta * s);
    }
}

// Fetched with the process's first frame and kept; the third is fetched and not used.
const CvVexelCreator2Suite3* gVexelCreator2Suite = nullptr;
const CvVexelSuite1* gVexelSuite = nullptr;
const void* gPixelFormatSuite = nullptr;

void AcquireSuites(const imStdParms* stdParms) {
    if (gVexelCreator2Suite != nullptr) return;
    const auto* const creator =
        AcquireSuite<CvVexelCreator2Suite3>(stdParms, kCvVexelCreator2Suite, kCvVexelCreator2SuiteVersion);
    gVexelSuite = AcquireSuite<CvVexelSuite1>(stdParms, kCvVexelSuite, kCvVexelSuiteVersion);
    stdParms->mBasicSuite->AcquireSuite(kCvPixelFormatSuite, kCvPixelFormatSuiteVersion, &gPixelFormatSuite);
    gVexelCreator2Suite = creator; // last: it says that all are there
}

} // namespace

std::int32_t ImporterSynthex::OnGetSourceVideo(void*, imSourceVideoRec* record) const {
    AcquireSuites(mStdParms);
    const SynthexInfo& info = mSynthexInfo;
    PixelBuffer buffer;
    buffer.width = info.mFrameWidth;
    buffer.height = info.mFrameHeight;
    buffer.format = FillFormat(info.mPixelFormat);

    CvVexelHandle* const handle = record->mFrame;
    gVexelCreator2Suite->Create(
        handle, kCvVexelAccess_ReadWrite, BEToSDKPixelFormat(RKPixelFormatToBEPixelFormat(buffer.format)),
        buffer.width, buffer.height, 0, 0, info.mFramePAR.GetNumerator(), info.mFramePAR.GetDenominator());
    CvRect bounds{};
    if (gVexelSuite->GetBounds(*handle, &bounds) < 0 ||
        gVexelSuite->GetRowBytes(*handle, &buffer.rowBytes) < 0 ||
        gVexelSuite->GetPixels(*handle, kCvVexelAccess_ReadWrite, &buffer.base) < 0)
        return kResult_NoInstance;

    const std::int32_t frame = lummediatypes::TickTime(record->mFrameTime).ToFrame32(info.mVideoFrameRate);
    if (info.mRenderFormat == kContentRenderFormat_FieldColors)
        FillFieldColors(buffer, info);
    else
        FillGradient(buffer, info, frame);

    // Deliberate: progressive clips never show the number.
    if (info.mDrawFrameNumber && info.mFieldType != lummediatypes::kFieldType_Progressive)
        RK_PrintNum(buffer.base, buffer.rowBytes, buffer.format, buffer.width, buffer.height, frame, 0.12f,
                    RK_Point{0.05f, 0.05f}, kRK_PrintBoxed);
    return kResult_Success;
}
