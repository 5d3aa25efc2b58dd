#include "ExportChoices.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <unordered_set>

#include <fmt/format.h>

#include "Export/Files/NumberedName.h"

namespace corvane {
namespace {

using enum ExportNaming;
namespace fs = std::filesystem;

constexpr const char* kPresets[] = {"ultrafast", "superfast", "veryfast", "faster",  "fast",
                                    "medium",    "slow",      "slower",   "veryslow"};

constexpr ExportChoice kChoices[] = {
    {"mp4-h264", "MP4, H.264", "Plays nearly everywhere. 8 bits, 4:2:0.", "mp4", "h264", nullptr, false,
     kOneFile},
    {"mov-h264", "MOV, H.264", "The same picture in a QuickTime file.", "mov", "h264", nullptr, false,
     kOneFile},
    {"mkv-h264", "MKV, H.264", "The same picture in a Matroska file.", "mkv", "h264", nullptr, false,
     kOneFile},
    {"mov-prores422hq", "MOV, ProRes 422 HQ", "For editing. 10 bits, 4:2:2, little loss.", "mov",
     "prores:profile=3", nullptr, false, kOneFile},
    {"mov-prores4444", "MOV, ProRes 4444",
     "For compositing. 10 bits, 4:4:4, with the alpha of clips that have it.", "mov",
     "prores:profile=4:pix_fmt=yuv444p10le", "prores:profile=4:pix_fmt=yuva444p10le", false, kOneFile},
    {"mov-v210", "MOV, v210 (uncompressed)", "Uncompressed video. 10 bits, 4:2:2; large files.", "mov",
     "v210", nullptr, false, kOneFile},
    {"mkv-ffv1", "MKV, FFV1 (lossless)",
     "Keeps 8-bit frames bit for bit, alpha included; float frames in up to 16 bits.", "mkv", "ffv1", nullptr,
     false, kOneFile},
    {"png-pictures", "PNG pictures", "One lossless picture a frame, with its number in the name.", "png", "",
     nullptr, false, kPictures},
    {"png-picture", "Single PNG (one frame)", "One frame as a lossless picture.", "png", "", nullptr, false,
     kPicture},
    {"y4m-420", "Y4M, 4:2:0", "Uncompressed Y'CbCr that encoders read; 16 bits for float frames.", "y4m", "",
     nullptr, false, kOneFile},
    {"y4m-444", "Y4M, 4:4:4", "Uncompressed Y'CbCr with all of its chroma, 8 bits.", "y4m", "444", nullptr,
     false, kOneFile},
    {"raw", "Raw frames",
     "Pixels without a header: B, G, R, A bytes, or R, G, B, A 16-bit words of float frames.", "raw", "",
     nullptr, false, kOneFile},
    {"raw-native", "Raw frames as delivered", "The very bytes that the plug-in made, without row padding.",
     "raw", "", nullptr, true, kOneFile},
    {"framemd5", "Checksums (framemd5)", "A text with one checksum a frame, to compare renders by.",
     "framemd5", "", nullptr, false, kOneFile},
};

bool HasSuffix(const fs::path& path, std::string_view suffix) {
    const std::string extension = path.extension().string();
    return extension.size() == suffix.size() + 1 &&
           std::equal(suffix.begin(), suffix.end(), extension.begin() + 1, [](char a, char b) {
               return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
           });
}

// At most `size` bytes, and no part of a character.
std::string Shortened(std::string name, std::size_t size) {
    if (name.size() <= size) return name;
    while (size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80) --size;
    name.resize(size);
    return name;
}

std::unordered_set<std::string> PicturesIn(const fs::path& folder, std::string_view suffix) {
    std::unordered_set<std::string> names;
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? "." : folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        if (HasSuffix(entry->path(), suffix)) names.insert(entry->path().filename().string());
    return names;
}

} // namespace

std::span<const char* const> H264Presets() {
    return kPresets;
}

bool ExportChoice::IsH264() const {
    return std::string_view(codec) == "h264";
}

ExportOptions ExportChoice::OptionsFor(const Clip& clip, const H264Settings& h264) const {
    ExportOptions options;
    options.format = format;
    options.native = native;
    if (codecWithAlpha != nullptr) {
        options.codec = codecWithAlpha;
        if (PreviewExport(clip, options).whyNot.empty()) return options;
    }
    options.codec = codec;
    if (IsH264()) SetH264(options, h264);
    return options;
}

std::string ExportChoice::WhyNot(const Clip& clip) const {
    return PreviewExport(clip, OptionsFor(clip)).whyNot;
}

void ExportChoice::SetH264(ExportOptions& options, const H264Settings& h264) {
    options.codec = fmt::format("h264:preset={}:crf={}", h264.preset, h264.quality);
}

std::span<const ExportChoice> ExportChoices() {
    return kChoices;
}

const ExportChoice* FindExportChoice(std::string_view id) {
    const auto* const found = std::ranges::find_if(kChoices, [id](const auto& row) { return row.id == id; });
    return found != std::end(kChoices) ? found : nullptr;
}

std::string ProposedFileName(const std::string& clipName, const ExportChoice& choice) {
    constexpr std::size_t kRoom = 200; // of the 255 bytes that file systems give a name
    std::string name = Shortened(clipName, kRoom);
    // A percent sign would be read as the number's.
    for (char& character : name)
        if (character == '/' || character == '%' || static_cast<unsigned char>(character) < 0x20)
            character = '_';
    if (name.empty() || name.starts_with('.')) name.insert(0, "clip");
    return name + (choice.naming == kPictures ? ".%05d." : ".") + choice.format;
}

fs::path CompletedPath(const fs::path& path, const ExportChoice& choice) {
    fs::path completed = path;
    if (!HasSuffix(completed, choice.format)) completed += fmt::format(".{}", choice.format);
    if (choice.naming == kPictures && !NumberedName::Parse(completed)) {
        const std::string suffix = completed.extension().string();
        completed.replace_extension(".%05d" + suffix);
    }
    return completed;
}

std::optional<fs::path> FindReplaced(const fs::path& output, const ExportChoice& choice,
                                     std::pair<std::int64_t, std::int64_t> frames) {
    std::error_code error;
    const auto numbered = choice.naming == kPictures ? NumberedName::Parse(output) : std::nullopt;
    if (!numbered) return fs::exists(output, error) ? std::optional(output) : std::nullopt;
    const auto pictures = PicturesIn(output.parent_path(), choice.format);
    if (pictures.empty()) return std::nullopt;
    for (std::int64_t frame = frames.first; frame <= frames.second; ++frame) {
        fs::path path = numbered->For(frame);
        if (pictures.contains(path.filename().string())) return path;
    }
    return std::nullopt;
}

} // namespace corvane
