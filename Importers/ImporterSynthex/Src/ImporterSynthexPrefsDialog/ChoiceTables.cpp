#include "ChoiceTables.h"

#include <cstddef>
#include <utility>

#include "lumcore.h"

using namespace lummediatypes;

namespace {

/// One choice: what is shown, and what is stored.
template <class Value>
struct Choice {
    const char* label;
    Value value;
};

/// A choice whose label is its constant's own name.
#define NAMED(constant)                                                                                      \
    { #constant, constant }

// clang-format off
constexpr Choice<FrameRate> kVideoFrameRates[] = {
    {"10 fps", kFrameRate_Video10},
    {"12 fps", kFrameRate_Video12},
    {"12.5 fps", kFrameRate_Video12_5},
    {"15 fps", kFrameRate_Video15},
    {"23.976 fps - (24000.0 / 1001.0)", kFrameRate_23976},
    {"24 fps", kFrameRate_Film24},
    {"PAL - 25 fps", kFrameRate_VideoPAL},
    {"NTSC - 29.97 fps - (30000.0 / 1001.0", kFrameRate_VideoNTSC}, // Deliberate: no closing parenthesis.
    {"30 fps", kFrameRate_Video30},
    {"PAL HD - 50 fps", kFrameRate_VideoPAL_HD},
    {"NTSC HD - 59.94 fps - (60000.0 / 10001.0)", kFrameRate_VideoNTSC_HD}, // Deliberate: "10001.0".
    {"60 fps", kFrameRate_Video60},
    {"100 fps", kFrameRate_Video100},
    {"1000 fps", kFrameRate_Video1000},
};

constexpr Choice<CvPixelFormat> kPixelFormats[] = {
    NAMED(CvPixelFormat_BGRA_4444_8u),
    NAMED(CvPixelFormat_VUYA_4444_8u),
    NAMED(CvPixelFormat_VUYA_4444_8u_709),
    NAMED(CvPixelFormat_ARGB_4444_8u),
    NAMED(CvPixelFormat_BGRX_4444_8u),
    NAMED(CvPixelFormat_VUYX_4444_8u),
    NAMED(CvPixelFormat_VUYX_4444_8u_709),
    NAMED(CvPixelFormat_XRGB_4444_8u),
    NAMED(CvPixelFormat_BGRP_4444_8u),
    NAMED(CvPixelFormat_VUYP_4444_8u),
    NAMED(CvPixelFormat_VUYP_4444_8u_709),
    NAMED(CvPixelFormat_PRGB_4444_8u),
    NAMED(CvPixelFormat_BGRA_4444_32f),
    NAMED(CvPixelFormat_VUYA_4444_32f),
    NAMED(CvPixelFormat_VUYA_4444_32f_709),
    NAMED(CvPixelFormat_ARGB_4444_32f),
    NAMED(CvPixelFormat_BGRX_4444_32f),
    NAMED(CvPixelFormat_VUYX_4444_32f),
    NAMED(CvPixelFormat_VUYX_4444_32f_709),
    NAMED(CvPixelFormat_XRGB_4444_32f),
    NAMED(CvPixelFormat_BGRP_4444_32f),
    NAMED(CvPixelFormat_VUYP_4444_32f),
    NAMED(CvPixelFormat_VUYP_4444_32f_709),
    NAMED(CvPixelFormat_PRGB_4444_32f),
    NAMED(CvPixelFormat_YUYV_422_8u_601),
    NAMED(CvPixelFormat_YUYV_422_8u_709),
    NAMED(CvPixelFormat_UYVY_422_8u_601),
    NAMED(CvPixelFormat_UYVY_422_8u_709),
    NAMED(CvPixelFormat_V210_422_10u_601),
    NAMED(CvPixelFormat_V210_422_10u_709),
    NAMED(CvPixelFormat_BGRA_4444_32f_Linear),
    NAMED(CvPixelFormat_BGRP_4444_32f_Linear),
    NAMED(CvPixelFormat_BGRX_4444_32f_Linear),
    NAMED(CvPixelFormat_ARGB_4444_32f_Linear),
    NAMED(CvPixelFormat_PRGB_4444_32f_Linear),
    NAMED(CvPixelFormat_XRGB_4444_32f_Linear),
    NAMED(CvPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601),
    NAMED(CvPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601),
    NAMED(CvPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709),
    NAMED(CvPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709),
    NAMED(CvPixelFormat_NTSCDV25),
    NAMED(CvPixelFormat_PALDV25),
    NAMED(CvPixelFormat_NTSCDV50),
    NAMED(CvPixelFormat_PALDV50),
    NAMED(CvPixelFormat_NTSCDV100_720p),
    NAMED(CvPixelFormat_PALDV100_720p),
    NAMED(CvPixelFormat_NTSCDV100_1080i),
    NAMED(CvPixelFormat_PALDV100_1080i),
};

constexpr Choice<PixelAspectRatio> kPixelAspects[] = {
    NAMED(kPixelAspectRatio_Square),
    NAMED(kPixelAspectRatio_DVNTSC),
    NAMED(kPixelAspectRatio_DVNTSCWide),
    NAMED(kPixelAspectRatio_DVPAL),
    NAMED(kPixelAspectRatio_DVPALWide),
    NAMED(kPixelAspectRatio_Anamorphic),
    NAMED(kPixelAspectRatio_HDAnamorphic1080),
    NAMED(kPixelAspectRatio_DVCProHD),
    // Deliberate: older approximations stand beside the correct ratios; clips in the field have them.
    NAMED(kPixelAspectRatio_DVNTSC_Incorrect),
    NAMED(kPixelAspectRatio_DVNTSCWide_Incorrect),
    NAMED(kPixelAspectRatio_DVPAL_Incorrect),
    NAMED(kPixelAspectRatio_DVPAL_TooPrecise),
    NAMED(kPixelAspectRatio_DVPALWide_Incorrect),
};
// clang-format on

#undef NAMED

/// Fills `list` with the rows, unless it was filled before: with all of them, or with none if memory runs
/// out.
template <class Value, std::size_t kRows>
const ChoiceList<Value>& FillOnce(ChoiceList<Value>& list, const Choice<Value> (&rows)[kRows]) {
    if (!list.empty()) return list;
    ChoiceList<Value> filled;
    filled.reserve(kRows);
    for (const Choice<Value>& row : rows)
        filled.emplace_back(row.value, lumcore::utility::AsciiToUTF16(row.label));
    list = std::move(filled);
    return list;
}

} // namespace

const ChoiceList<FrameRate>& GetAllVideoFrameRates() {
    static ChoiceList<FrameRate> sVideoRateNames;
    return FillOnce(sVideoRateNames, kVideoFrameRates);
}

const ChoiceList<CvPixelFormat>& GetAllPixelFormats() {
    static ChoiceList<CvPixelFormat> sPixelFormats;
    return FillOnce(sPixelFormats, kPixelFormats);
}

const ChoiceList<PixelAspectRatio>& GetAllPixelAspects() {
    static ChoiceList<PixelAspectRatio> sPixelAspectNames;
    return FillOnce(sPixelAspectNames, kPixelAspects);
}
