#include "ZimgGraph.h"

#include <new>

#include <fmt/format.h>

#include "Engine/Failure.h"

namespace corvane {
namespace {

[[noreturn]] void FailWithLastError() {
    char message[256] = {};
    if (zimg_get_last_error(message, sizeof message) == ZIMG_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
    throw Failure(fmt::format(
        "the frames can't be converted to this output's colors: {}; choose another codec", message));
}

} // namespace

void PlaneBuffer::Shape(int plane, std::size_t rowBytes, std::uint32_t rows) {
    mStride[plane] = Aligned(rowBytes);
    mStart[plane] = mBytes[plane].Get(mStride[plane] * rows);
}

std::byte* PlaneBuffer::Row(int plane, std::uint32_t row) {
    return mStart[plane] + mStride[plane] * row;
}

zimg_image_buffer PlaneBuffer::AsZimg() {
    zimg_image_buffer buffer{};
    buffer.version = ZIMG_API_VERSION;
    for (int plane = 0; plane < 4; ++plane)
        buffer.plane[plane] = {mStart[plane], static_cast<std::ptrdiff_t>(mStride[plane]), ZIMG_BUFFER_MAX};
    return buffer;
}

ZimgGraph::ZimgGraph(const zimg_image_format& source, const zimg_image_format& result) {
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.dither_type = ZIMG_DITHER_NONE;
    mGraph.reset(zimg_filter_graph_build(&source, &result, &parameters));
    if (!mGraph || zimg_filter_graph_get_tmp_size(mGraph.get(), &mWorkSize) != ZIMG_ERROR_SUCCESS)
        FailWithLastError();
}

void ZimgGraph::Run(PlaneBuffer& source, PlaneBuffer& result) {
    const zimg_image_buffer from = source.AsZimg();
    const zimg_image_buffer to = result.AsZimg();
    zimg_image_buffer_const input{};
    input.version = ZIMG_API_VERSION;
    for (int plane = 0; plane < 4; ++plane)
        input.plane[plane] = {from.plane[plane].data, from.plane[plane].stride, from.plane[plane].mask};
    std::byte* const work = mWork.Get(mWorkSize);
    if (zimg_filter_graph_process(mGraph.get(), &input, &to, work, nullptr, nullptr, nullptr, nullptr) !=
        ZIMG_ERROR_SUCCESS)
        FailWithLastError();
}

} // namespace corvane
