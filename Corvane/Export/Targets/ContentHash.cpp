#include "ContentHash.h"

#include <charconv>
#include <limits>
#include <system_error>
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

std::optional<ContentHash> ReadHash(std::string_view text) {
    constexpr std::size_t kDigits = 2; // of a byte
    ContentHash hash{};
    if (text.size() != kDigits * hash.size()) return std::nullopt;
    for (std::byte& byte : hash) {
        unsigned value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + kDigits, value, 16);
        if (error != std::errc() || end != text.data() + kDigits) return std::nullopt;
        byte = static_cast<std::byte>(value);
        text.remove_prefix(kDigits);
    }
    return hash;
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
