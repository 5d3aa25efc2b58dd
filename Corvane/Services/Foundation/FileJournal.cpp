#include "FileJournal.h"

#include <algorithm>
#include <tuple>

#include "AtomicFile.h"
#include "RegularFile.h"

namespace corvane {

namespace {

thread_local FileJournal* gJournal = nullptr;

/// A larger file is not kept for the case that it has to be put back.
constexpr std::uint64_t kMostBytesKept = 16u << 20;

/// The text of a file; nothing if it can't be read, or is too large.
std::optional<std::string> ReadText(const std::filesystem::path& path) {
    try {
        return ReadWholeFile(path, kMostBytesKept);
    } catch (const FileError&) {
        return std::nullopt;
    }
}

/// Puts a text back, if it can be.
void WriteText(const std::filesystem::path& path, const std::string& text) {
    try {
        AtomicFile file(path);
        file.Write(std::as_bytes(std::span(text)));
        std::ignore = file.Commit(); // there is nobody to tell
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

FileJournal* FileJournal::Current() {
    return gJournal;
}

FileJournal::Entry& FileJournal::Begin(const Mosk::String& path, const std::filesystem::path& target,
                                       std::string text) {
    auto entry = std::ranges::find(mEntries, target, &Entry::target);
    if (entry == mEntries.end()) {
        std::error_code error;
        mEntries.push_back({.path = {},
                            .target = target,
                            .existed = std::filesystem::exists(target, error),
                            .before = ReadText(target),
                            .text = {},
                            .whyNot = {},
                            .lost = {}});
    } else {
        std::rotate(entry, entry + 1, mEntries.end());
    }
    mEntries.back().path = path;
    mEntries.back().text = std::move(text);
    return mEntries.back();
}

std::string FileJournal::WhatChanged() const {
    std::string files;
    for (const Entry& entry : mEntries)
        if (entry.changed) files += (files.empty() ? "" : ", ") + entry.target.string();
    return files.empty() ? "nothing was changed" : "what was saved meanwhile stays in " + files;
}

std::string FileJournal::WhatWasLost() const {
    std::string sentences;
    for (const Entry& entry : mEntries)
        if (!entry.lost.empty())
            sentences += (sentences.empty() ? "" : " ") + SavedText(entry.target, entry.lost);
    return sentences;
}

void FileJournal::Undo() {
    for (const Entry& entry : mEntries) {
        std::error_code error;
        if (!entry.changed) continue;
        if (!entry.existed)
            std::filesystem::remove(entry.target, error);
        else if (entry.before && ReadText(entry.target) != entry.before)
            WriteText(entry.target, *entry.before);
    }
}

} // namespace corvane
