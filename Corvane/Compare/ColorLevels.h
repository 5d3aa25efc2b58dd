#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>

#include "ColorSpace.h"

namespace corvane {

/// Counts the distinct levels of each plane, expected and found, in rows that are of one level each: what a
/// lossy codec's noise blurs isn't counted. Takes 64 KiB. One thread at a time.
class ColorLevels {
  public:
    /// Adds the sample of a row. `least` and `most` are code values of the picture, `expected` the exact one.
    void Add(int plane, double expected, std::uint32_t least, std::uint32_t most);

    /// How many levels a plane has and should have.
    struct Lost {
        int plane = 0;
        std::size_t found = 0;
        std::size_t expected = 0;
    };
    /// The plane that lost the greatest share of its levels, if that is clear.
    std::optional<Lost> Worst() const;

  private:
    struct Plane {
        std::bitset<65536> expected, found;
        std::int64_t rows = 0, flat = 0;
    };
    std::array<Plane, 4> mPlanes;
};

} // namespace corvane
