#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "Export/Targets/ExportKinds.h"
#include "JSONLine.h"

namespace corvane::commandline {

namespace {

std::string CodecLine(const ExportCodec& codec) {
    nlohmann::ordered_json line;
    line["name"] = codec.name;
    line["encoder"] = codec.encoder;
    line["about"] = codec.about;
    line["format"] = codec.format;
    line["options"] = nlohmann::ordered_json::object();
    for (const CodecOption& option : codec.options)
        if (option.name != nullptr) line["options"][option.name] = option.about;
    line["example"] = codec.example;
    return JSONLine(line);
}

void PrintCodec(const ExportCodec& codec) {
    PrintLine(fmt::format("{:<8} {}", codec.name, codec.about));
    for (const CodecOption& option : codec.options)
        if (option.name != nullptr) PrintLine(fmt::format("           {:<16} {}", option.name, option.about));
    PrintLine(fmt::format("           synthex render clip.synthex clip.{} --codec {}", codec.format,
                          codec.example));
    PrintLine("");
}

} // namespace

int RunCodecs(const CodecsRequest& request) {
    for (const ExportCodec& codec : ExportCodecs()) {
        if (request.json)
            Print(CodecLine(codec));
        else
            PrintCodec(codec);
    }
    if (!request.json)
        PrintLine("All of them, and any other encoder of libav, take pix_fmt (what libav calls the pixels), "
                  "threads, "
                  "and the encoder's own options ('ffmpeg -h encoder=NAME' lists them).");
    return kExitDone;
}

} // namespace corvane::commandline
