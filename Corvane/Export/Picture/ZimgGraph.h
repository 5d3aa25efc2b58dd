#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <zimg.h>

#include "AlignedBytes.h"

namespace corvane {

/// Up to four planes whose rows are aligned for zimg.
class PlaneBuffer {
  public:
    /// Makes room for planes of these sizes in bytes a row and rows.
    void Shape(int plane, std::size_t rowBytes, std::uint32_t rows);
    /// Null for a plane that was never shaped.
    std::byte* Row(int plane, std::uint32_t row);
    zimg_image_buffer AsZimg();

  private:
    AlignedBytes mBytes[4];
    std::byte* mStart[4] = {};
    std::size_t mStride[4] = {};
};

/// A conversion of zimg: between two formats of fixed size. One thread at a time.
class ZimgGraph {
  public:
    /// Throws `Failure` where zimg has no such conversion.
    ZimgGraph(const zimg_image_format& source, const zimg_image_format& result);

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
