#include "LibavCodecs.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Export/Targets/ExportKinds.h"

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

} // namespace

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

CodecChoice CodecFor(const LibavRequest& request, const AVOutputFormat& container) {
    const std::string text = request.codec.empty() ? DefaultCodec(container) : request.codec;
    const std::string name = text.substr(0, text.find(':'));
    CodecChoice choice;
    choice.options =
        ParseOptions(name, std::string_view(text).substr(std::min(text.size(), name.size() + 1)));
    choice.codec = FindEncoder(name);
    if (choice.codec == nullptr || choice.codec->type != AVMEDIA_TYPE_VIDEO)
        throw UsageFailure(fmt::format(
            "there is no video codec called {}; choose {} or another encoder of libav", name, ListCodecs()));
    if (avformat_query_codec(&container, choice.codec->id, FF_COMPLIANCE_NORMAL) == 0)
        throw UsageFailure(fmt::format("{}: {} can't carry {}; choose another codec, or mkv",
                                       request.output.string(), request.kind, name));
    return choice;
}

} // namespace corvane
