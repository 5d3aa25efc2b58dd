#include "RasterkitTransfer.h"

#include <bit>
#include <cstdint>
#include <limits>

namespace corvane::raster {
namespace {

// x to the power 1/0.45 = 20/9, for x from 0.1 to the largest float. Built from operations that IEEE 754
// rounds exactly, because the C library's pow may differ in the last place from machine to machine.
double PowerOfInverseTransfer(double x) {
    // The ninth root: a guess within 4 % by dividing the exponent, then Halley's steps, which cube the error.
    constexpr std::uint64_t kBias = std::uint64_t{0x3FF0000000000000} / 9 * 8 - 0x0000B00000000000;
    double root = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) / 9 + kBias);
    for (int step = 0; step < 3; ++step) {
        const double square = root * root;
        const double fourth = square * square;
        const double ninth = fourth * fourth * root;
        root *= (8.0 * ninth + 10.0 * x) / (10.0 * ninth + 8.0 * x);
    }
    const double square = root * root;
    const double fifth = square * square * root;
    const double tenth = fifth * fifth;
    return tenth * tenth;
}

} // namespace

double LinearLight(double value) {
    if (value < 4.5 * 0.018) return value / 4.5;
    if (value > std::numeric_limits<float>::max()) return value;
    return PowerOfInverseTransfer((value + 0.099) / 1.099);
}

} // namespace corvane::raster
