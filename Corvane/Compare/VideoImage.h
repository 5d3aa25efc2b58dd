#pragma once

#include <memory>

#include "ColorSpace.h"
#include "Export/Picture/ZimgGraph.h"
#include "Video.h"

namespace corvane {

/// Turns decoded pictures into packed R'G'B' for people to look at. Keeps its conversion for the next picture
/// of the same kind. One thread at a time.
class VideoImage {
  public:
    /// Writes rows of `size.width` pixels of four bytes, B, G, R and 255, `rowBytes` apart, as a player would
    /// show the picture; alpha is left out. Throws `Failure` if there is no such conversion, and
    /// `std::bad_alloc`.
    void Convert(const VideoPicture& picture, std::byte* out, std::ptrdiff_t rowBytes);

  private:
    struct Kind {
        PlanarFormat format;
        Size size{};
        SampleCoding coding;

        bool operator==(const Kind&) const = default;
    };

    Kind mKind;
    std::unique_ptr<ZimgGraph> mGraph;
    PlaneBuffer mSource;
    PlaneBuffer mResult;
};

} // namespace corvane
