#include "TextFile.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <span>

#include <unistd.h>

#include <fmt/format.h>

#include "Failure.h"
#include "Services/Foundation/AtomicFile.h"
#include "Services/Foundation/RegularFile.h"

namespace corvane {

namespace {

/// A file of text larger than this is none that people mean to open here.
constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 20;

} // namespace

std::string ReadTextFile(const std::filesystem::path& path) {
    try {
        return ReadWholeFile(path, kMostBytes);
    } catch (const FileError& error) {
        throw Failure(fmt::format("{}: {}{}{}.", path.string(), error.what(),
                                  error.GetRemedy().empty() ? "" : "; ", error.GetRemedy()));
    }
}

std::string ReadTextInput() {
    std::string text;
    std::string part(std::size_t{1} << 16, '\0');
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, part.data(), part.size());
        if (count == 0) return text;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0)
            throw Failure(fmt::format("standard input: it can't be read ({}).", std::strerror(errno)));
        text.append(part, 0, static_cast<std::size_t>(count));
        if (text.size() > kMostBytes)
            throw Failure(
                fmt::format("standard input: there are more than the {} bytes that are read.", kMostBytes));
    }
}

std::string WriteTextFile(const std::filesystem::path& path, const std::string& text, mode_t mode) {
    if (text.size() > kMostBytes)
        throw Failure(fmt::format("{}: it would have {} bytes, more than the {} that are read; nothing was "
                                  "changed.",
                                  path.string(), text.size(), kMostBytes));
    try {
        AtomicFile file(path, mode);
        file.Write(std::as_bytes(std::span(text)));
        return file.Commit();
    } catch (const FileError& error) {
        throw Failure(fmt::format("{}: it could not be saved ({}; {}); nothing was changed.", path.string(),
                                  error.what(), error.GetRemedy()));
    }
}

std::filesystem::path StoredPath(const std::filesystem::path& path, const std::filesystem::path& folder) {
    if (folder.empty()) return path;
    const std::filesystem::path relative = path.lexically_relative(folder.lexically_normal());
    return relative.empty() || *relative.begin() == ".." ? path : relative;
}

} // namespace corvane
