#include "FileJournal.h"

#include <algorithm>

#include "AtomicFile.h"
#include "RegularFile.h"

namespace corvane {

namespace {

thread_local FileJournal* gJournal = nullptr;

/// A larger file is not kept for the case that it has to be put back.
constexpr std::uint64_t kMostBytes = 16u << 20;

/// The text of a file; nothing if it can't be read, or is too large.
std::optional<std::string> ReadText(const std::filesystem::path& path) {
    try {
        return ReadWholeFile(path, kMostBytes);
    } catch (const FileError&) {
        return std::nullopt;
    }
}

/// Puts a text back, if it can be.
void WriteText(const std::filesystem::path& path, const std::string& text) {
    try {
        AtomicFile file(path);
        file.Write(std::as_bytes(std::span(text)));
        file.Commit();
    } catch (const FileError&) {
        return;
    }
}

} // namespace

FileJournal::FileJournal() {
    gJournal = this;
}

FileJournal::~FileJournal() {
    gJournal = nullptr;
}

void FileJournal::Note(const Mosk::String& path, const std::filesystem::path& target) {
    if (gJournal == nullptr) return;
    gJournal->mPaths.push_back(path);
    auto& before = gJournal->mBefore;
    if (std::ranges::find(before, target, &Before::target) != before.end()) return;
    std::error_code error;
    before.push_back({target, std::filesystem::exists(target, error), ReadText(target)});
}

void FileJournal::Undo() {
    for (const Before& file : mBefore) {
        std::error_code error;
        if (!file.existed)
            std::filesystem::remove(file.target, error);
        else if (file.text && ReadText(file.target) != file.text)
            WriteText(file.target, *file.text);
    }
}

} // namespace corvane
