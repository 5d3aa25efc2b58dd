#include "ExportKinds.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

namespace corvane {
namespace {

using enum ExportWriter;
using enum ExportNaming;

constexpr ExportKind kKinds[] = {
    {.name = "png",
     .writer = kPng,
     .choices = {{.id = "png-pictures",
                  .label = "PNG pictures",
                  .about =
                      "One lossless picture a frame, with its number in the name; 16 bits for float frames.",
                  .kind = "png",
                  .naming = kPictures},
                 {.id = "png-picture",
                  .label = "Single PNG (one frame)",
                  .about = "One frame as a lossless picture; 16 bits for float frames.",
                  .kind = "png",
                  .naming = kPicture}}},
    {.name = "y4m",
     .writer = kY4m,
     .choices = {{.id = "y4m-420",
                  .label = "Y4M, 4:2:0",
                  .about = "Uncompressed Y'CbCr that encoders read; 16 bits for float frames.",
                  .kind = "y4m"},
                 {.id = "y4m-444",
                  .label = "Y4M, 4:4:4",
                  .about = "Uncompressed Y'CbCr with all of its chroma; 16 bits for float frames.",
                  .kind = "y4m",
                  .codec = "444"}}},
    {.name = "raw",
     .writer = kRaw,
     .choices = {{.id = "raw",
                  .label = "Raw frames",
                  .about = "Pixels without a header: B, G, R, A bytes, or R, G, B, A 16-bit words of float "
                           "frames.",
                  .kind = "raw"},
                 {.id = "raw-native",
                  .label = "Raw frames as delivered",
                  .about = "The very bytes that the plug-in made, without row padding.",
                  .kind = "raw",
                  .native = true}}},
    {.name = "exr",
     .writer = kLibavPicture,
     .choices = {{.id = "exr-half",
                  .label = "EXR pictures, half floats",
                  .about = "Linear light for compositing, one picture a frame; 11 bits of precision.",
                  .kind = "exr",
                  .codec = "exr:format=half",
                  .naming = kPictures},
                 {.id = "exr-float",
                  .label = "EXR pictures, floats",
                  .about = "Linear light for compositing, one picture a frame; float frames without loss.",
                  .kind = "exr",
                  .naming = kPictures}}},
    {.name = "dpx",
     .writer = kLibavPicture,
     .choices = {{.id = "dpx-10",
                  .label = "DPX pictures, 10 bits",
                  .about = "For grading and film: one picture a frame, R'G'B' without alpha.",
                  .kind = "dpx",
                  .naming = kPictures}}},
    {.name = "tiff",
     .writer = kLibavPicture,
     .choices = {{.id = "tiff-pictures",
                  .label = "TIFF pictures",
                  .about = "One lossless picture a frame, with alpha; 16 bits for float frames.",
                  .kind = "tiff",
                  .naming = kPictures}}},
    {.name = "mp4", .writer = kLibav, .container = "mp4", .codec = "h264"},
    {.name = "mov", .writer = kLibav, .container = "mov", .codec = "h264"},
    {.name = "mkv", .writer = kLibav, .container = "matroska", .codec = "h264"},
    {.name = "mxf", .writer = kLibav, .container = "mxf", .codec = "mpeg2video:b=50M:pix_fmt=yuv422p"},
    {.name = "nut", .writer = kLibav, .container = "nut", .codec = "ffv1"},
    {.name = "framemd5",
     .writer = kLibav,
     .container = "framemd5",
     .choices = {{.id = "framemd5",
                  .label = "Checksums (framemd5)",
                  .about = "A text with one checksum a frame, to compare renders by.",
                  .kind = "framemd5"}}},
};

constexpr ExportCodec kCodecs[] = {
    {.name = "h264",
     .encoder = "libx264",
     // Deliberate: hardly a browser or a device plays H.264 of 10 bits.
     .mostBits = 8,
     .choices = {{.id = "mp4-h264",
                  .label = "MP4, H.264",
                  .about = "Plays nearly everywhere. 8 bits, 4:2:0.",
                  .kind = "mp4",
                  .codec = "h264"},
                 {.id = "mov-h264",
                  .label = "MOV, H.264",
                  .about = "The same picture in a QuickTime file.",
                  .kind = "mov",
                  .codec = "h264"},
                 {.id = "mkv-h264",
                  .label = "MKV, H.264",
                  .about = "The same picture in a Matroska file.",
                  .kind = "mkv",
                  .codec = "h264"}},
     .about = "Plays nearly everywhere; lossy, 8 bits, 4:2:0",
     .format = "mp4",
     .example = "h264:preset=slow:crf=12",
     .options = {{"crf", "quality: 1 best, 18 usual, 51 worst"},
                 {"preset", "ultrafast ... medium (usual) ... veryslow: smaller files for more time"},
                 {"tune", "what the picture is like: animation, stillimage, grain"}}},
    {.name = "prores",
     .encoder = "prores_ks",
     .choices = {{.id = "mov-prores422hq",
                  .label = "MOV, ProRes 422 HQ",
                  .about = "For editing. 10 bits, 4:2:2, little loss.",
                  .kind = "mov",
                  .codec = "prores:profile=3"},
                 {.id = "mov-prores4444",
                  .label = "MOV, ProRes 4444",
                  .about = "For compositing. 10 bits, 4:4:4, with the alpha of clips that have it.",
                  .kind = "mov",
                  .codec = "prores:profile=4"}},
     .about = "For editing; little loss, 10 bits, 4:2:2 or 4:4:4 with alpha",
     .format = "mov",
     .example = "prores:profile=4",
     .options = {{"profile", "0 Proxy, 1 LT, 2 Standard, 3 HQ, 4 4444, 5 4444 XQ"}}},
    {.name = "v210",
     .encoder = "v210",
     .choices = {{.id = "mov-v210",
                  .label = "MOV, v210 (uncompressed)",
                  .about = "Uncompressed video. 10 bits, 4:2:2; large files.",
                  .kind = "mov",
                  .codec = "v210"}},
     .about = "Uncompressed 10 bits, 4:2:2",
     .format = "mov",
     .example = "v210"},
    {.name = "ffv1",
     .encoder = "ffv1",
     .choices = {{.id = "mkv-ffv1",
                  .label = "MKV, FFV1 (lossless)",
                  .about = "Keeps 8-bit frames bit for bit, alpha included; float frames in up to 16 bits.",
                  .kind = "mkv",
                  .codec = "ffv1"}},
     .about = "Lossless, up to 16 bits, with alpha",
     .format = "mkv",
     .example = "ffv1:slices=24:slicecrc=1",
     .options = {{"slices", "how many parts of a picture are coded side by side: 4, 6, 9, 12, 16, 24, 30"},
                 {"slicecrc", "1: checksums by which damage is found"},
                 {"coder", "0 Golomb-Rice, 1 range coder"}}},
    {.name = "hevc",
     .encoder = "libx265",
     // Deliberate: hardly a device plays 12 bits.
     .mostBits = 10,
     .choices = {{.id = "mp4-hevc",
                  .label = "MP4, HEVC (H.265)",
                  .about = "Smaller than H.264, for more time. 4:2:0; 10 bits for float frames.",
                  .kind = "mp4",
                  .codec = "hevc"}},
     .about = "Smaller files than H.264 for more time; lossy, 8 to 12 bits",
     .format = "mp4",
     .example = "hevc:preset=fast:crf=20:pix_fmt=yuv420p10le",
     .options = {{"crf", "quality: 0 best, 28 usual, 51 worst"},
                 {"preset", "ultrafast ... medium (usual) ... veryslow"},
                 {"pix_fmt", "yuv420p 8 bits, yuv420p10le 10 bits, yuv422p10le, yuv444p12le"}}},
    {.name = "h265",
     .encoder = "libx265",
     .about = "Another name of hevc",
     .format = "mkv",
     .example = "h265:crf=20"},
    {.name = "av1",
     .encoder = "libsvtav1",
     // Deliberate: none of the window's choices, each of which is opened to see whether it fits a clip. This
     // encoder can't be closed before it got a picture.
     .about = "The smallest files; lossy, 8 or 10 bits, 4:2:0",
     .format = "mp4",
     .example = "av1:preset=10:crf=30",
     .options = {{"crf", "quality: 1 best, 63 worst"},
                 {"preset", "0 slowest and smallest ... 13 quickest"},
                 {"pix_fmt", "yuv420p 8 bits, yuv420p10le 10 bits"}}},
    {.name = "exr",
     .encoder = "exr",
     .mostBits = 32,
     .about = "Pictures of linear light, premultiplied, for compositing",
     .format = "exr",
     .example = "exr:format=half",
     .options = {{"format", "float (usual) 32 bits, half 16 bits"},
                 {"compression", "zip16 (usual), zip1, rle, none"}}},
    {.name = "dpx",
     .encoder = "dpx",
     .mostBits = 10,
     .leastBits = 10,
     .about = "Pictures of 10 bits without alpha, for grading",
     .format = "dpx",
     .example = "dpx:pix_fmt=gbrp12le",
     .options = {{"pix_fmt", "gbrp10le (usual) 10 bits, gbrp12le, rgb24, rgba, rgb48le"}}},
    {.name = "tiff",
     .encoder = "tiff",
     .about = "Lossless pictures, 8 or 16 bits, with alpha",
     .format = "tiff",
     .example = "tiff:compression_algo=lzw",
     .options = {{"compression_algo", "deflate (usual), lzw, packbits, raw"}}},
};

constexpr const char* kPresets[] = {"ultrafast", "superfast", "veryfast", "faster",  "fast",
                                    "medium",    "slow",      "slower",   "veryslow"};

bool IsRow(const ExportChoice& choice) {
    return choice.id != nullptr;
}

template <class Rows>
void Gather(const Rows& rows, std::vector<ExportChoice>& choices) {
    for (const auto& row : rows) std::ranges::copy_if(row.choices, std::back_inserter(choices), IsRow);
}

} // namespace

std::span<const char* const> H264Presets() {
    return kPresets;
}

std::span<const ExportKind> ExportKinds() {
    return kKinds;
}

std::span<const ExportCodec> ExportCodecs() {
    return kCodecs;
}

std::span<const ExportChoice> ExportChoices() {
    static const std::vector<ExportChoice> sChoices = [] {
        std::vector<ExportChoice> choices;
        Gather(kCodecs, choices);
        Gather(kKinds, choices);
        return choices;
    }();
    return sChoices;
}

const ExportKind* FindExportKind(std::string_view name) {
    const auto* const found = std::ranges::find(kKinds, name, &ExportKind::name);
    return found != std::end(kKinds) ? found : nullptr;
}

const ExportChoice* FindExportChoice(std::string_view id) {
    const auto choices = ExportChoices();
    const auto found = std::ranges::find(choices, id, &ExportChoice::id);
    return found != choices.end() ? &*found : nullptr;
}

std::string ListKinds(bool withLibav, std::string_view last) {
    std::vector<std::string_view> names;
    for (const ExportKind& kind : kKinds)
        if (withLibav || !kind.NeedsLibav()) names.push_back(kind.name);
    const std::string_view final = names.back();
    names.pop_back();
    return fmt::format("{}{}{}", fmt::join(names, ", "), last, final);
}

std::string ListCodecs() {
    std::vector<std::string_view> names;
    for (const ExportCodec& codec : kCodecs)
        if (IsRow(codec.choices[0])) names.push_back(codec.name);
    return fmt::format("{}", fmt::join(names, ", "));
}

} // namespace corvane
