// The host's 48 pixel formats, told by their names and by their characters, which are typed here once more.
#pragma once

#include <string_view>
#include <vector>

#include "Services/Raster/PixelFormats.h"

struct ExpectedFormat {
    std::string_view name; // without CvPixelFormat_
    CvPixelFormat code;
    RK_PixelFormat delivered; // the raster code in which frames arrive; its own if the format is concrete
    bool isExtended;
};

// What a name says of the format in which frames arrive.
inline RK_PixelFormat RasterOfName(std::string_view name) {
    const auto says = [name](std::string_view part) { return name.find(part) != name.npos; };
    if (!says("_4444_")) return (says("8u_601") || says("DV25") || says("DV50")) ? 12 : 2061;
    const std::string_view order = name.substr(0, 4);
    const auto has = [order](std::string_view part) { return order.find(part) != order.npos; };
    const bool bits[] = {says("32f"), has("RGB"), has("VUY"), true, has("P"), has("X"), says("Linear")};
    RK_PixelFormat raster = says("_709") ? 2048 : 0;
    for (std::size_t i = 0; i < std::size(bits); ++i) raster |= RK_PixelFormat{bits[i]} << i;
    return raster;
}

inline const std::vector<ExpectedFormat> kExpectedFormats = [] {
    constexpr std::string_view kCharacters =
        "bgravuyaVUYAargbbgrxvuyxvux7xrgbbgrpvuypvup7prgbBGraVUyavUYaARgbBGrxVUyxVUx7XRgbBGrpVUypVUp7PRgb"
        "yuy2yuy3uyvyuyv7v210v211BGaLBGpLBGxLARgLPRgLXRgLyv12yvi2yv17yvi7dvn2dvp2dvn5dvp5dvn7dvp7dvn1dvp1";
    std::vector<ExpectedFormat> formats;
    for (const corvane::PixelFormatRow& row : corvane::PixelFormatTable()) {
        const std::string_view name = row.name.substr(std::string_view("CvPixelFormat_").size());
        CvPixelFormat code = 0;
        for (std::size_t i = 0; i < 4; ++i)
            code |= CvPixelFormat(kCharacters.at(4 * formats.size() + i)) << (8 * i);
        formats.push_back({name, code, RasterOfName(name), name.find("_4444_") == name.npos});
    }
    return formats;
}();
