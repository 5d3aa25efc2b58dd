// The host's 48 pixel formats as its documents list them, typed independently of the service's table.
#pragma once

#include <array>
#include <cstdint>

struct ExpectedFormat {
    const char* name; // without CvPixelFormat_
    std::uint32_t code;
    std::uint32_t delivered; // the raster code in which frames arrive; its own where the format is concrete
    bool isExtended = false;
};

inline constexpr std::array<ExpectedFormat, 48> kExpectedFormats{{
    {"BGRA_4444_8u", 0x61726762, 8},
    {"VUYA_4444_8u", 0x61797576, 12},
    {"VUYA_4444_8u_709", 0x41595556, 2060},
    {"ARGB_4444_8u", 0x62677261, 10},
    {"BGRX_4444_8u", 0x78726762, 40},
    {"VUYX_4444_8u", 0x78797576, 44},
    {"VUYX_4444_8u_709", 0x37787576, 2092},
    {"XRGB_4444_8u", 0x62677278, 42},
    {"BGRP_4444_8u", 0x70726762, 24},
    {"VUYP_4444_8u", 0x70797576, 28},
    {"VUYP_4444_8u_709", 0x37707576, 2076},
    {"PRGB_4444_8u", 0x62677270, 26},
    {"BGRA_4444_32f", 0x61724742, 9},
    {"VUYA_4444_32f", 0x61795556, 13},
    {"VUYA_4444_32f_709", 0x61595576, 2061},
    {"ARGB_4444_32f", 0x62675241, 11},
    {"BGRX_4444_32f", 0x78724742, 41},
    {"VUYX_4444_32f", 0x78795556, 45},
    {"VUYX_4444_32f_709", 0x37785556, 2093},
    {"XRGB_4444_32f", 0x62675258, 43},
    {"BGRP_4444_32f", 0x70724742, 25},
    {"VUYP_4444_32f", 0x70795556, 29},
    {"VUYP_4444_32f_709", 0x37705556, 2077},
    {"PRGB_4444_32f", 0x62675250, 27},
    {"YUYV_422_8u_601", 0x32797579, 12, true},
    {"YUYV_422_8u_709", 0x33797579, 2061, true},
    {"UYVY_422_8u_601", 0x79767975, 12, true},
    {"UYVY_422_8u_709", 0x37767975, 2061, true},
    {"V210_422_10u_601", 0x30313276, 2061, true},
    {"V210_422_10u_709", 0x31313276, 2061, true},
    {"BGRA_4444_32f_Linear", 0x4c614742, 73},
    {"BGRP_4444_32f_Linear", 0x4c704742, 89},
    {"BGRX_4444_32f_Linear", 0x4c784742, 105},
    {"ARGB_4444_32f_Linear", 0x4c675241, 75},
    {"PRGB_4444_32f_Linear", 0x4c675250, 91},
    {"XRGB_4444_32f_Linear", 0x4c675258, 107},
    {"YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601", 0x32317679, 12, true},
    {"YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601", 0x32697679, 12, true},
    {"YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709", 0x37317679, 2061, true},
    {"YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709", 0x37697679, 2061, true},
    {"NTSCDV25", 0x326e7664, 12, true},
    {"PALDV25", 0x32707664, 12, true},
    {"NTSCDV50", 0x356e7664, 12, true},
    {"PALDV50", 0x35707664, 12, true},
    {"NTSCDV100_720p", 0x376e7664, 2061, true},
    {"PALDV100_720p", 0x37707664, 2061, true},
    {"NTSCDV100_1080i", 0x316e7664, 2061, true},
    {"PALDV100_1080i", 0x31707664, 2061, true},
}};
