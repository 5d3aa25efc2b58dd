#include "FileJournal.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace corvane {

namespace {

thread_local FileJournal* gJournal = nullptr;

/// The text of a settings file; nothing where it can't be read, or is too large to be one.
std::optional<std::string> ReadText(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || size > Mosk::File::kSizeLimit) return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    return file && text.size() == size ? std::optional(std::move(text)) : std::nullopt;
}

void WriteText(const std::string& path, const std::string& text) {
    Mosk::File file;
    std::uint32_t written = 0;
    if (file.Create(Mosk::FromUTF8(path), Mosk::FileAccessFlags::kReadWrite,
                    Mosk::FileShareModeFlags::kShareReadWrite, Mosk::FileCreateDispositionFlags::kReplace,
                    Mosk::FileAttributesFlags::kNormal, false) >= 0)
        file.Write(text.data(), static_cast<std::uint32_t>(text.size()), written);
}

} // namespace

FileJournal::FileJournal() {
    gJournal = this;
}

FileJournal::~FileJournal() {
    gJournal = nullptr;
}

void FileJournal::Note(const Mosk::String& path, const std::string& target) {
    if (gJournal == nullptr) return;
    gJournal->mPaths.push_back(path);
    auto& before = gJournal->mBefore;
    if (std::ranges::find(before, target, &Before::target) != before.end()) return;
    std::error_code error;
    before.push_back({target, std::filesystem::exists(target, error), ReadText(target)});
}

void FileJournal::Undo() {
    gJournal = nullptr; // what is put back is no request's doing
    for (const Before& file : mBefore) {
        std::error_code error;
        if (!file.existed)
            std::filesystem::remove(file.target, error);
        else if (file.text && ReadText(file.target) != file.text)
            WriteText(file.target, *file.text);
    }
    gJournal = this;
}

} // namespace corvane
