#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>

#include "ColorSpace.h"

namespace corvane {

/// Counts the distinct levels of each plane, expected and found. Levels that a lossy codec's noise fills in
/// are told from those of lost bits, which lie apart, dithered or not. Takes 64 KiB. One thread at a time.
class ColorLevels {
  public:
    /// Adds the sample of a row. `least` and `most` are code values of the picture, `expected` the exact one.
    void Add(int plane, double expected, std::uint32_t least, std::uint32_t most);

    /// How many levels a plane has and should have.
    struct Lost {
        int plane = 0;
        std::size_t found = 0;
        std::size_t expected = 0;
        double step = 0; ///< between the levels that are left, in code values of the picture
    };
    /// The plane that lost the greatest share of its levels, if that is clear.
    std::optional<Lost> Worst() const;

  private:
    struct Plane {
        std::bitset<65536> expected, found;
    };
    std::array<Plane, 4> mPlanes;
};

} // namespace corvane
