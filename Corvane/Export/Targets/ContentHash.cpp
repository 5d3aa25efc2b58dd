#include "ContentHash.h"

#include <limits>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "Engine/LoadedModule.h"
#include "Services/Foundation/RegularFile.h"

namespace corvane {

std::string HashText(const ContentHash& hash) {
    std::string text;
    for (const std::byte byte : hash) text += fmt::format("{:02x}", std::to_integer<unsigned>(byte));
    return text;
}

ContentHash HashContent(const ContentSource& source) {
    static void* const sFunction =
        FindInModule({"corvane-libav", "hashing", "install it and its libraries"}, kHashContentName);
    ContentHash hash;
    reinterpret_cast<HashContentFunction*>(sFunction)(source, hash);
    return hash;
}

FilesHash HashFiles(std::span<const std::filesystem::path> files) {
    constexpr std::size_t kPiece = 1 << 20;
    std::vector<std::byte> piece(kPiece);
    std::optional<RegularFile> file;
    auto next = files.begin();
    FilesHash result;
    result.hash = HashContent([&]() -> std::span<const std::byte> {
        for (;;) {
            const std::size_t size = file ? file->Read(piece) : 0;
            result.bytes += size;
            if (size > 0) return std::span(piece).first(size);
            if (next == files.end()) return {};
            file.emplace(*next++, std::numeric_limits<std::int64_t>::max());
        }
    });
    return result;
}

} // namespace corvane
