#pragma once

#include <array>
#include <optional>

#include "Export/Picture/PictureConverter.h"
#include "Video.h"

namespace corvane {

/// R'G'B'A: gamma-coded with the transfer of BT.709-6, item 1.2, straight alpha, nominally 0..1.
using Color = std::array<double, 4>;

/// Samples of one place in code values, in the order of the planes: Y', Cb, Cr, A or R', G', B', A.
using Codes = std::array<double, 4>;

/// The matrices between R'G'B' and Y'CbCr that are told apart, as code points of ITU-T H.273.
inline constexpr int kMatrix709 = 1;
inline constexpr int kMatrix601 = 6;
inline constexpr int kMatrix2020 = 9;
inline constexpr std::array kMatrices{kMatrix601, kMatrix709, kMatrix2020};

/// "BT.601", "BT.709" or "BT.2020".
const char* MatrixName(int matrix);

/// How samples stand for colors.
struct SampleCoding {
    bool yCbCr = true;
    int matrix = kMatrix709; ///< one of `kMatrices`
    bool fullRange = false;  ///< of R'G'B', too
    int bits = 8;

    bool operator==(const SampleCoding&) const = default;
};

/// How a viewer takes the samples of a picture: as its tags say, and without tags as players do, BT.601 up to
/// 576 rows and BT.709 above, limited range. Matrices that are none of `kMatrices` count as the one that they
/// are nearest to. Any thread.
SampleCoding CodingOf(const PlanarFormat& format, const VideoTags& tags, std::uint32_t height);

/// The exact code values of a color, neither rounded nor clamped: ITU-R BT.601-7, 2.5; BT.709-6, items 3.2 to
/// 3.5; BT.2020-2, table 4 (non-constant luminance) and table 5. Full range as in ITU-T H.273, 8.3. Alpha is
/// always full range. Any thread.
Codes Encode(const Color& color, const SampleCoding& coding);

/// The color of Y' 0..1, Cb and Cr -0.5..0.5 and A, or of R', G', B', A; range and bits don't matter. Any
/// thread.
Color FromParts(const std::array<double, 4>& parts, const SampleCoding& coding);

/// The inverse of `Encode`. Any thread.
Color Decode(const Codes& codes, const SampleCoding& coding);

/// Transfer characteristics that a color can have been coded with.
enum class Transfer { kBT709, kSrgb, kGamma22, kGamma24 };

/// "BT.709", "sRGB", "gamma 2.2" or "gamma 2.4".
const char* TransferName(Transfer transfer);

/// Gamma-coded to linear light, component by component, alpha untouched; values below 0 mirror those above.
/// Any thread.
Color ToLinear(const Color& color, Transfer transfer);

/// Linear light to gamma-coded. Any thread.
Color ToGammaCoded(const Color& linear, Transfer transfer);

/// CIE L*a*b* of D65.
using Lab = std::array<double, 3>;

/// The color as a reference display shows it (ITU-R BT.1886 with a black of 0, primaries of BT.709). Any
/// thread.
Lab ToLab(const Color& color);

/// The color difference CIEDE2000 with all factors 1 (ISO/CIE 11664-6). Any thread.
double DeltaE2000(const Lab& a, const Lab& b);

} // namespace corvane
