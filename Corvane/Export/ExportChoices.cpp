#include "ExportChoices.h"

#include <locale>
#include <string_view>
#include <unordered_set>

#include <boost/algorithm/string/predicate.hpp>
#include <fmt/format.h>

#include "Export/Files/NumberedName.h"

namespace corvane {
namespace {

using enum ExportNaming;
namespace fs = std::filesystem;

bool HasSuffix(const fs::path& path, std::string_view suffix) {
    return boost::algorithm::iequals(path.extension().string(), fmt::format(".{}", suffix),
                                     std::locale::classic());
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

ExportOptions OptionsFor(const ExportChoice& choice) {
    ExportOptions options;
    options.format = choice.kind;
    options.codec = choice.codec;
    options.native = choice.native;
    return options;
}

void SetH264(ExportOptions& options, const H264Settings& h264) {
    options.codec = fmt::format("h264:preset={}:crf={}", h264.preset, h264.quality);
}

std::string EndingOf(const ExportChoice& choice) {
    return fmt::format("{}.{}", choice.naming == kPictures ? ".%05d" : "", choice.kind);
}

std::string ProposedFileName(const std::string& clipName, const ExportChoice& choice) {
    constexpr std::size_t kRoom = 200; // of the 255 bytes that file systems give a name
    std::string name = Shortened(clipName, kRoom);
    // A percent sign would be read as the number's.
    for (char& character : name)
        if (character == '/' || character == '%' || static_cast<unsigned char>(character) < 0x20)
            character = '_';
    if (name.empty() || name.starts_with('.')) name.insert(0, "clip");
    return name + EndingOf(choice);
}

fs::path CompletedPath(const fs::path& path, const ExportChoice& choice) {
    fs::path completed = path;
    if (!HasSuffix(completed, choice.kind)) completed += fmt::format(".{}", choice.kind);
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
    const auto pictures = PicturesIn(output.parent_path(), choice.kind);
    if (pictures.empty()) return std::nullopt;
    for (std::int64_t frame = frames.first; frame <= frames.second; ++frame) {
        fs::path path = numbered->For(frame);
        if (pictures.contains(path.filename().string())) return path;
    }
    return std::nullopt;
}

} // namespace corvane
