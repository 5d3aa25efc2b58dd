#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace corvane {

/// Frees what libav allocated, for `std::unique_ptr`.
struct LibavFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVBufferPool* pool) const { av_buffer_pool_uninit(&pool); }
};

} // namespace corvane
