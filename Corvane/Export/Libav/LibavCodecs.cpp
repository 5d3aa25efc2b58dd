#include "LibavCodecs.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Export/Targets/ExportKinds.h"
#include "LibavError.h"

namespace corvane {
namespace {

std::string DefaultCodec(const AVOutputFormat& container) {
    for (const ExportKind& kind : ExportKinds())
        if (std::string_view(kind.container) == container.name && *kind.codec != '\0') return kind.codec;
    return container.video_codec == AV_CODEC_ID_NONE ? "" : avcodec_get_name(container.video_codec);
}

const AVCodec* FindEncoder(const std::string& name) {
    for (const ExportCodec& row : ExportCodecs())
        if (name == row.name)
            if (const AVCodec* const codec = avcodec_find_encoder_by_name(row.encoder)) return codec;
    if (const AVCodec* const codec = avcodec_find_encoder_by_name(name.c_str())) return codec;
    const AVCodecDescriptor* const about = avcodec_descriptor_get_by_name(name.c_str());
    return about != nullptr ? avcodec_find_encoder(about->id) : nullptr;
}

std::map<std::string, std::string> ParseOptions(const std::string& codec, std::string_view text) {
    std::map<std::string, std::string> options;
    while (!text.empty()) {
        const std::string_view option = text.substr(0, text.find(':'));
        text.remove_prefix(std::min(text.size(), option.size() + 1));
        const std::size_t equals = option.find('=');
        if (equals == std::string_view::npos || equals == 0)
            throw UsageFailure(
                fmt::format("codec {}: {} is no option; write NAME:option=value", codec, option));
        options[std::string(option.substr(0, equals))] = option.substr(equals + 1);
    }
    return options;
}

struct FreeContext {
    void operator()(AVFormatContext* context) const {
        if (context->pb != nullptr) {
            std::uint8_t* bytes = nullptr;
            avio_close_dyn_buf(context->pb, &bytes);
            av_free(bytes);
        }
        avformat_free_context(context);
    }
};

// Whether the container takes a stream of this codec. Those like MOV take some in one of them alone, and say
// so no sooner than they begin; by then an encoder would have been opened in vain.
bool Carries(const AVOutputFormat& container, AVCodecID codec, const StreamFacts& facts) {
    if (avformat_query_codec(&container, codec, FF_COMPLIANCE_NORMAL) == 0) return false;
    if (!IsQuickTimeFamily(container)) return true;
    AVFormatContext* made = nullptr;
    if (avformat_alloc_output_context2(&made, &container, nullptr, nullptr) < 0) throw std::bad_alloc();
    const std::unique_ptr<AVFormatContext, FreeContext> context(made);
    AVStream* const stream = avformat_new_stream(made, nullptr);
    if (stream == nullptr || avio_open_dyn_buf(&made->pb) < 0) throw std::bad_alloc();
    stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream->codecpar->codec_id = codec;
    stream->codecpar->width = static_cast<int>(facts.size.width);
    stream->codecpar->height = static_cast<int>(facts.size.height);
    stream->time_base = {static_cast<int>(facts.rate.sampleSize), static_cast<int>(facts.rate.scale)};
    stream->avg_frame_rate = av_inv_q(stream->time_base);
    return WithMemory(avformat_init_output(made, nullptr)) >= 0;
}

} // namespace

bool IsQuickTimeFamily(const AVOutputFormat& container) {
    const std::string_view name = container.name;
    return name == "mp4" || name == "mov" || name == "ipod" || name == "3gp";
}

std::string CodecChoice::Take(const std::string& option) {
    const auto node = options.extract(option);
    return node.empty() ? std::string() : node.mapped();
}

const AVOutputFormat* ContainerFor(const LibavRequest& request) {
    const AVOutputFormat* const container =
        av_guess_format(request.kind.c_str(), ("x." + request.kind).c_str(), nullptr);
    if (container == nullptr)
        throw UsageFailure(
            fmt::format("{}: there is no kind of output called {}; choose {} or another container of libav",
                        request.output.string(), request.kind, ListKinds(true, ", ")));
    if ((container->flags & (AVFMT_NOFILE | AVFMT_NEEDNUMBER)) != 0 || DefaultCodec(*container).empty())
        throw UsageFailure(fmt::format("{}: {} does not hold video in one file; choose {}",
                                       request.output.string(), request.kind, ListKinds()));
    return container;
}

CodecChoice ParseCodec(const std::string& text) {
    const std::string name = text.substr(0, text.find(':'));
    CodecChoice choice;
    choice.options =
        ParseOptions(name, std::string_view(text).substr(std::min(text.size(), name.size() + 1)));
    choice.codec = FindEncoder(name);
    if (choice.codec == nullptr || choice.codec->type != AVMEDIA_TYPE_VIDEO)
        throw UsageFailure(fmt::format(
            "there is no video codec called {}; choose {} or another encoder of libav", name, ListCodecs()));
    return choice;
}

CodecChoice CodecFor(const LibavRequest& request, const AVOutputFormat& container) {
    const std::string text = request.codec.empty() ? DefaultCodec(container) : request.codec;
    CodecChoice choice = ParseCodec(text);
    if (!Carries(container, choice.codec->id, request.facts))
        throw UsageFailure(fmt::format("{}: {} can't carry {}; choose another codec, or mkv",
                                       request.output.string(), request.kind,
                                       text.substr(0, text.find(':'))));
    return choice;
}

} // namespace corvane
