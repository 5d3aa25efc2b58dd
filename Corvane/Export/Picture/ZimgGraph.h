#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <zimg.h>

#include "AlignedBytes.h"

namespace corvane {

/// Up to four planes whose rows are aligned for zimg. One thread at a time.
class PlaneBuffer {
  public:
    /// Makes room for a plane of `rows` rows of `rowBytes` bytes; what was in it is lost. Throws
    /// `std::bad_alloc`.
    void Shape(int plane, std::size_t rowBytes, std::uint32_t rows);
    /// The start of a row; null for row 0 of a plane that was never shaped. Valid until the plane is shaped
    /// again.
    std::byte* Row(int plane, std::uint32_t row);
    /// All planes as zimg takes them, not owned.
    zimg_image_buffer AsZimg();

  private:
    AlignedBytes mBytes[4];
    std::byte* mStart[4] = {};
    std::size_t mStride[4] = {};
};

/// A conversion of zimg: between two formats of fixed size. One thread at a time.
class ZimgGraph {
  public:
    /// Throws `Failure` if zimg has no such conversion, and `std::bad_alloc`.
    ZimgGraph(const zimg_image_format& source, const zimg_image_format& result);

    /// Converts `source` into `result`, whose planes are shaped for the two formats. Throws `Failure` if zimg
    /// can't, and `std::bad_alloc`.
    void Run(PlaneBuffer& source, PlaneBuffer& result);

  private:
    struct Free {
        void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
    };
    std::unique_ptr<zimg_filter_graph, Free> mGraph;
    AlignedBytes mWork;
    std::size_t mWorkSize = 0;
};

} // namespace corvane
