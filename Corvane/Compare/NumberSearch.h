#pragma once

#include <vector>

#include "NumberReader.h"
#include "PlaneView.h"

namespace corvane {

/// A place at which a number might be printed.
struct NumberGuess {
    NumberPlace place;
    double fit = 0;  ///< how well a first character fits there, from 0 to 1
    double step = 0; ///< by how many pixels the place may be off
};

/// The likeliest places of a number in a picture, the best first, a few at most; none if there is nothing
/// that could be one. `plane` is as it lies in the picture, of which `active` shows the frame. Throws
/// `std::bad_alloc`. Any thread.
std::vector<NumberGuess> SearchNumber(Size frame, const PlaneView& plane, const Box& active);

} // namespace corvane
