#include "RegularFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

namespace corvane {

RegularFile::RegularFile(const std::filesystem::path& path, std::uint64_t limit)
    // Not blocking: opening a pipe would wait for a writer.
    : mDescriptor(path, O_RDONLY | O_NONBLOCK | O_NOCTTY) {
    struct stat status {};
    if (!mDescriptor || ::fstat(mDescriptor.Get(), &status) != 0) throw FileError::OfReading(errno);
    if (S_ISDIR(status.st_mode)) throw FileError::OfReading(EISDIR);
    if (!S_ISREG(status.st_mode))
        throw FileError(Mosk::kResult_NotAFile, "this is a pipe or a device", "name a file");
    mSize = static_cast<std::uint64_t>(status.st_size);
    if (mSize > limit)
        throw FileError(Mosk::kResult_TooLarge,
                        fmt::format("the file has {} bytes, more than the {} that are read", mSize, limit),
                        {});
}

std::size_t RegularFile::Read(std::span<std::byte> bytes) {
    const std::int64_t count = mDescriptor.Read(bytes);
    if (count < 0) throw FileError::OfReading(errno);
    return static_cast<std::size_t>(count);
}

void RegularFile::Seek(std::uint64_t offset) {
    if (::lseek(mDescriptor.Get(), static_cast<off_t>(offset), SEEK_SET) < 0)
        throw FileError::OfReading(errno);
}

std::string ReadWholeFile(const std::filesystem::path& path, std::uint64_t limit) {
    RegularFile file(path, limit);
    std::string text(static_cast<std::size_t>(file.Size()), '\0');
    text.resize(file.Read(std::as_writable_bytes(std::span(text))));
    return text;
}

} // namespace corvane
