#include "TextFile.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Failure.h"
#include "Mosk.h"

namespace corvane {

namespace {

/// A file of text larger than this is none that people mean to open here.
constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 20;

std::string_view WhyNotSaved(Mosk::Result result) {
    switch (result) {
    case Mosk::kResult_NotFound: return "the folder does not exist";
    case Mosk::kResult_AccessDenied: return "you are not allowed to write here";
    case Mosk::kResult_NotAFile: return "this is no regular file";
    case Mosk::kResult_DiskFull: return "there is no room for it";
    default: return "the system does not say why";
    }
}

/// Closes a descriptor when it goes.
struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

} // namespace

std::string ReadTextFile(const std::filesystem::path& path) {
    const auto fail = [&](std::string_view why) {
        throw Failure(fmt::format("{}: {}.", path.string(), why));
    };
    // Without waiting for the writer of a pipe.
    const Descriptor file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (file.fd < 0 && errno == ENOENT) fail("there is no such file");
    if (file.fd < 0 && errno == EACCES) fail("you are not allowed to read this file");
    if (file.fd < 0) fail(std::strerror(errno));
    struct stat status {};
    if (::fstat(file.fd, &status) != 0) fail(std::strerror(errno));
    if (S_ISDIR(status.st_mode)) fail("this is a folder; name a file in it");
    if (!S_ISREG(status.st_mode)) fail("this is a pipe or a device; name a file");
    if (static_cast<std::uint64_t>(status.st_size) > kMostBytes)
        fail(
            fmt::format("the file has {} bytes, more than the {} that are read", status.st_size, kMostBytes));
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    while (filled < text.size()) {
        const ssize_t count = ::read(file.fd, text.data() + filled, text.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(std::strerror(errno));
        if (count == 0) break; // it was cut meanwhile
        filled += static_cast<std::size_t>(count);
    }
    text.resize(filled);
    return text;
}

void WriteTextFile(const std::filesystem::path& path, const std::string& text) {
    using namespace Mosk;
    const auto fail = [&](std::string_view why) {
        throw Failure(
            fmt::format("{}: it could not be saved ({}); nothing was changed.", path.string(), why));
    };
    Mosk::String name;
    try {
        name = FromUTF8(path.string());
    } catch (const std::invalid_argument&) {
        fail("the name is not valid UTF-8");
    }
    File file;
    std::uint32_t written = 0;
    Result result = file.Create(name, FileAccessFlags::kReadWrite, FileShareModeFlags::kShareReadWrite,
                                FileCreateDispositionFlags::kReplace, FileAttributesFlags::kNormal, false);
    if (result >= 0) result = file.Write(text.data(), static_cast<std::uint32_t>(text.size()), written);
    if (result < 0) fail(WhyNotSaved(result));
}

} // namespace corvane
