#include "FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace corvane {
namespace {

/// Calls `step`, which answers as system calls do, again whenever a signal interrupts it.
template <class Step>
auto Uninterrupted(const Step& step) {
    for (;;)
        if (const auto answer = step(); answer >= 0 || errno != EINTR) return answer;
}

/// Calls `step` with what is left of `bytes` until nothing is, the file ends (0) or the system refuses
/// (negative). Returns how many bytes were handled, or a negative number.
template <class Byte, class Step>
std::int64_t Repeat(std::span<Byte> bytes, const Step& step) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            Uninterrupted([&] { return step(bytes.subspan(done), static_cast<off_t>(done)); });
        if (count < 0) return count;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<std::int64_t>(done);
}

} // namespace

FileDescriptor::FileDescriptor(const std::filesystem::path& path, int flags, unsigned mode)
    : mNumber(Uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); })) {}

std::int64_t FileDescriptor::Read(std::span<std::byte> bytes) const {
    return Repeat(bytes, [this](auto rest, off_t) { return ::read(mNumber, rest.data(), rest.size()); });
}

bool FileDescriptor::Write(std::span<const std::byte> bytes) const {
    const auto step = [this](auto rest, off_t) { return ::write(mNumber, rest.data(), rest.size()); };
    return Repeat(bytes, step) == std::ssize(bytes);
}

bool FileDescriptor::WriteAt(std::span<const std::byte> bytes, std::uint64_t offset) const {
    const auto step = [&](auto rest, off_t done) {
        return ::pwrite(mNumber, rest.data(), rest.size(), static_cast<off_t>(offset) + done);
    };
    return Repeat(bytes, step) == std::ssize(bytes);
}

bool FileDescriptor::Sync() const {
    // Not every file system can be asked (EINVAL).
    return Uninterrupted([this] { return ::fsync(mNumber); }) == 0 || errno == EINVAL;
}

bool FileDescriptor::Close() {
    const int number = std::exchange(mNumber, -1);
    // One that a signal interrupts is closed nevertheless.
    return number < 0 || ::close(number) == 0 || errno == EINTR;
}

} // namespace corvane
