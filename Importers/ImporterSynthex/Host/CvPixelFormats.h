/// The host's pixel formats: the plug-in API's codes, the engine's codes, and the conversions between them
/// and the codes of the raster service.
#pragma once

#include <cstdint>

#include "Rasterkit.h"

/// A pixel format of the plug-in API: four characters, the first in the lowest byte. 0 is "any".
using CvPixelFormat = std::uint32_t;

/// Makes a code from its four characters, the first in the lowest byte.
constexpr CvPixelFormat FourCC(const char (&characters)[5]) {
    CvPixelFormat code = 0;
    for (int i = 0; i < 4; ++i) code |= CvPixelFormat{static_cast<unsigned char>(characters[i])} << (8 * i);
    return code;
}

// Names read LAYOUT_SAMPLING_SAMPLES_MATRIX. Components are named in memory order; A is straight alpha, P
// alpha with the color premultiplied, X an ignored component. Without a suffix Y'CbCr is BT.601 and R'G'B'
// is gamma-coded; `_709` is BT.709, `_Linear` linear light. 8u is 8-bit unsigned, 10u packed 10-bit, 32f
// float.
inline constexpr CvPixelFormat CvPixelFormat_BGRA_4444_8u = FourCC("bgra");
inline constexpr CvPixelFormat CvPixelFormat_VUYA_4444_8u = FourCC("vuya");
inline constexpr CvPixelFormat CvPixelFormat_VUYA_4444_8u_709 = FourCC("VUYA");
inline constexpr CvPixelFormat CvPixelFormat_ARGB_4444_8u = FourCC("argb");
inline constexpr CvPixelFormat CvPixelFormat_BGRX_4444_8u = FourCC("bgrx");
inline constexpr CvPixelFormat CvPixelFormat_VUYX_4444_8u = FourCC("vuyx");
inline constexpr CvPixelFormat CvPixelFormat_VUYX_4444_8u_709 = FourCC("vux7");
inline constexpr CvPixelFormat CvPixelFormat_XRGB_4444_8u = FourCC("xrgb");
inline constexpr CvPixelFormat CvPixelFormat_BGRP_4444_8u = FourCC("bgrp");
inline constexpr CvPixelFormat CvPixelFormat_VUYP_4444_8u = FourCC("vuyp");
inline constexpr CvPixelFormat CvPixelFormat_VUYP_4444_8u_709 = FourCC("vup7");
inline constexpr CvPixelFormat CvPixelFormat_PRGB_4444_8u = FourCC("prgb");
inline constexpr CvPixelFormat CvPixelFormat_BGRA_4444_32f = FourCC("BGra");
inline constexpr CvPixelFormat CvPixelFormat_VUYA_4444_32f = FourCC("VUya");
inline constexpr CvPixelFormat CvPixelFormat_VUYA_4444_32f_709 = FourCC("vUYa");
inline constexpr CvPixelFormat CvPixelFormat_ARGB_4444_32f = FourCC("ARgb");
inline constexpr CvPixelFormat CvPixelFormat_BGRX_4444_32f = FourCC("BGrx");
inline constexpr CvPixelFormat CvPixelFormat_VUYX_4444_32f = FourCC("VUyx");
inline constexpr CvPixelFormat CvPixelFormat_VUYX_4444_32f_709 = FourCC("VUx7");
inline constexpr CvPixelFormat CvPixelFormat_XRGB_4444_32f = FourCC("XRgb");
inline constexpr CvPixelFormat CvPixelFormat_BGRP_4444_32f = FourCC("BGrp");
inline constexpr CvPixelFormat CvPixelFormat_VUYP_4444_32f = FourCC("VUyp");
inline constexpr CvPixelFormat CvPixelFormat_VUYP_4444_32f_709 = FourCC("VUp7");
inline constexpr CvPixelFormat CvPixelFormat_PRGB_4444_32f = FourCC("PRgb");
inline constexpr CvPixelFormat CvPixelFormat_YUYV_422_8u_601 = FourCC("yuy2");
inline constexpr CvPixelFormat CvPixelFormat_YUYV_422_8u_709 = FourCC("yuy3");
inline constexpr CvPixelFormat CvPixelFormat_UYVY_422_8u_601 = FourCC("uyvy");
inline constexpr CvPixelFormat CvPixelFormat_UYVY_422_8u_709 = FourCC("uyv7");
inline constexpr CvPixelFormat CvPixelFormat_V210_422_10u_601 = FourCC("v210");
inline constexpr CvPixelFormat CvPixelFormat_V210_422_10u_709 = FourCC("v211");
inline constexpr CvPixelFormat CvPixelFormat_BGRA_4444_32f_Linear = FourCC("BGaL");
inline constexpr CvPixelFormat CvPixelFormat_BGRP_4444_32f_Linear = FourCC("BGpL");
inline constexpr CvPixelFormat CvPixelFormat_BGRX_4444_32f_Linear = FourCC("BGxL");
inline constexpr CvPixelFormat CvPixelFormat_ARGB_4444_32f_Linear = FourCC("ARgL");
inline constexpr CvPixelFormat CvPixelFormat_PRGB_4444_32f_Linear = FourCC("PRgL");
inline constexpr CvPixelFormat CvPixelFormat_XRGB_4444_32f_Linear = FourCC("XRgL");
inline constexpr CvPixelFormat CvPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601 = FourCC("yv12");
inline constexpr CvPixelFormat CvPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601 = FourCC("yvi2");
inline constexpr CvPixelFormat CvPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709 = FourCC("yv17");
inline constexpr CvPixelFormat CvPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709 = FourCC("yvi7");
inline constexpr CvPixelFormat CvPixelFormat_NTSCDV25 = FourCC("dvn2");
inline constexpr CvPixelFormat CvPixelFormat_PALDV25 = FourCC("dvp2");
inline constexpr CvPixelFormat CvPixelFormat_NTSCDV50 = FourCC("dvn5");
inline constexpr CvPixelFormat CvPixelFormat_PALDV50 = FourCC("dvp5");
inline constexpr CvPixelFormat CvPixelFormat_NTSCDV100_720p = FourCC("dvn7");
inline constexpr CvPixelFormat CvPixelFormat_PALDV100_720p = FourCC("dvp7");
inline constexpr CvPixelFormat CvPixelFormat_NTSCDV100_1080i = FourCC("dvn1");
inline constexpr CvPixelFormat CvPixelFormat_PALDV100_1080i = FourCC("dvp1");

static_assert(CvPixelFormat_BGRA_4444_8u == 0x61726762);

/// A pixel format of the host's engine. The numbers mean nothing outside it.
using BEPixelFormat = std::uint32_t;

// The four conversions below are one-to-one over the 48 formats above. An unknown code throws
// `std::invalid_argument` whose text gives the code in hexadecimal and as characters. Any thread.

/// Plug-in API code to engine code.
BEPixelFormat SDKToBEPixelFormat(CvPixelFormat format);
/// Engine code to plug-in API code.
CvPixelFormat BEToSDKPixelFormat(BEPixelFormat format);
/// Engine code to raster-service code.
RK_PixelFormat BEPixelFormatToRKPixelFormat(BEPixelFormat format);
/// Raster-service code to engine code.
BEPixelFormat RKPixelFormatToBEPixelFormat(RK_PixelFormat format);
