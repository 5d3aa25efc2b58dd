#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace corvane {

/// The MD5 of some bytes.
using ContentHash = std::array<std::byte, 16>;

/// The hash in hexadecimal, as md5sum prints it. Any thread; fails only for want of memory.
std::string HashText(const ContentHash& hash);
/// The hash of such a text; empty if it is none. Any thread.
std::optional<ContentHash> ReadHash(std::string_view text);

/// Hands out bytes piece by piece, and nothing at the end. A piece is valid until the next one.
using ContentSource = std::function<std::span<const std::byte>()>;

/// The name of the function of the module that hashes, which is of type `HashContentFunction`.
inline constexpr const char* kHashContentName = "CorvaneHashContent";
/// Tells the hash of what `source` hands out. Throws what that throws, and `std::bad_alloc`.
using HashContentFunction = void(const ContentSource& source, ContentHash& hash);

/// The hash of what `source` hands out, by the module that knows libav, which is loaded first. Throws what
/// `source` throws, and `Failure` as `FindInModule` does. Any thread.
ContentHash HashContent(const ContentSource& source);

/// The hash of the bytes of files, one behind the other, and how many they are.
struct FilesHash {
    ContentHash hash{};
    std::uint64_t bytes = 0;
};

/// Reads regular files. Throws `FileError` if one can't be read, and `Failure` as above. Any thread.
FilesHash HashFiles(std::span<const std::filesystem::path> files);

} // namespace corvane
