#include "PixelRows.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

namespace corvane {
namespace {

// Transfer of BT.709-6, item 1.2. zimg's own is the display's (BT.1886) and not this one.
float GammaCoded(float linear) {
    return linear < 0.018f ? 4.5f * linear : 1.099f * std::pow(linear, 0.45f) - 0.099f;
}

float LinearLight(float coded) {
    return coded < 0.081f ? coded / 4.5f : std::pow((coded + 0.099f) / 1.099f, 1.0f / 0.45f);
}

// A value that stays in the range of integers in every step. What lies so far outside is clipped by every
// target.
float Sane(float value) {
    constexpr float kLimit = 1024.0f;
    return value == value ? std::clamp(value, -kLimit, kLimit) : 0.0f;
}

void UnpackBytes(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const RowPlanes& out) {
    for (std::uint32_t component = 0; component < 4; ++component) {
        auto* const plane = static_cast<std::uint8_t*>(out.plane[component]);
        if (plane == nullptr) continue;
        const std::uint32_t shift = 8 * ComponentOffset(format, component);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t pixel;
            std::memcpy(&pixel, pixels + std::size_t{i} * 4, 4);
            plane[i] = static_cast<std::uint8_t>(pixel >> shift);
        }
    }
}

void UnpackFloats(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const RowPlanes& out) {
    for (std::uint32_t component = 0; component < 4; ++component) {
        auto* const plane = static_cast<float*>(out.plane[component]);
        if (plane == nullptr) continue;
        const std::byte* source = pixels + 4 * ComponentOffset(format, component);
        for (std::uint32_t i = 0; i < count; ++i) {
            float value;
            std::memcpy(&value, source + std::size_t{i} * 16, 4);
            plane[i] = Sane(value);
        }
    }
}

// The value that a component has at an alpha of 0: black, and no chroma.
int ZeroOf(RK_PixelFormat format, int component) {
    if ((format & kRK_YCbCr) == 0) return 0;
    return component == 0 ? 16 : 128;
}

void UnmultiplyBytes(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format,
                     const RowPlanes& out) {
    for (std::uint32_t i = 0; i < count; ++i) {
        const int alpha = std::to_integer<int>(pixels[std::size_t{i} * 4 + ComponentOffset(format, 3)]);
        for (int component = 0; component < 3; ++component) {
            std::uint8_t& value = static_cast<std::uint8_t*>(out.plane[component])[i];
            const int zero = ZeroOf(format, component);
            const double color = alpha == 0 ? 0.0 : (value - zero) * 255.0 / alpha;
            value = static_cast<std::uint8_t>(std::clamp(std::floor(zero + color + 0.5), 0.0, 255.0));
        }
    }
}

void UnmultiplyFloats(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format,
                      const RowPlanes& out) {
    for (std::uint32_t i = 0; i < count; ++i) {
        float alpha;
        std::memcpy(&alpha, pixels + std::size_t{i} * 16 + 4 * ComponentOffset(format, 3), 4);
        for (int component = 0; component < 3; ++component) {
            float& value = static_cast<float*>(out.plane[component])[i];
            value = alpha == 0.0f ? 0.0f : Sane(value / alpha);
        }
    }
}

void TransformColor(std::uint32_t count, const RowPlanes& row, float (*transfer)(float)) {
    for (int component = 0; component < 3; ++component) {
        auto* const plane = static_cast<float*>(row.plane[component]);
        std::transform(plane, plane + count, plane, transfer);
    }
}

} // namespace

void UnpackRow(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const RowPlanes& out) {
    const bool premultiplied = (format & kRK_Premultiplied) != 0;
    if ((format & kRK_Float) != 0) {
        UnpackFloats(pixels, count, format, out);
        if (premultiplied) UnmultiplyFloats(pixels, count, format, out);
        if ((format & kRK_Linear) != 0) TransformColor(count, out, GammaCoded);
    } else {
        UnpackBytes(pixels, count, format, out);
        if (premultiplied) UnmultiplyBytes(pixels, count, format, out);
    }
}

void LinearizeRow(std::uint32_t count, const RowPlanes& row) {
    TransformColor(count, row, LinearLight);
}

void PremultiplyRow(std::uint32_t count, const RowPlanes& row) {
    const auto* const alpha = static_cast<const float*>(row.plane[3]);
    for (int component = 0; component < 3; ++component) {
        auto* const plane = static_cast<float*>(row.plane[component]);
        std::transform(plane, plane + count, alpha, plane, std::multiplies());
    }
}

void SwizzleRow(const std::byte* pixels, std::uint32_t count, RK_PixelFormat format, const int* order,
                int components, std::byte* out) {
    const auto parts = static_cast<std::size_t>(components);
    std::uint32_t from[4] = {};
    for (std::size_t i = 0; i < parts; ++i)
        from[i] = ComponentOffset(format, static_cast<std::uint32_t>(order[i]));
    if (parts == 4 && std::ranges::is_sorted(from)) {
        std::memcpy(out, pixels, std::size_t{count} * 4);
        return;
    }
    if (parts == 4) {
        for (std::size_t x = 0; x < count; ++x) {
            std::uint32_t pixel, result = 0;
            std::memcpy(&pixel, pixels + x * 4, 4);
            for (std::uint32_t i = 0; i < 4; ++i) result |= (pixel >> (8 * from[i]) & 0xFF) << (8 * i);
            std::memcpy(out + x * 4, &result, 4);
        }
        return;
    }
    for (std::size_t x = 0; x < count; ++x)
        for (std::size_t i = 0; i < parts; ++i) out[x * parts + i] = pixels[x * 4 + from[i]];
}

} // namespace corvane
