#include "Mosk.h"

#include <optional>
#include <stdexcept>

#include <sys/stat.h>

#include "AtomicFile.h"
#include "FileJournal.h"
#include "RegularFile.h"

namespace Mosk {

/// What is open: one of the two.
struct File::State {
    std::optional<corvane::RegularFile> read;
    std::optional<corvane::AtomicFile> written;
};

namespace {

/// The path as the system takes it; empty if it is no valid text.
std::string SystemPath(const String& path) {
    try {
        return ToUTF8(path);
    } catch (const std::invalid_argument&) {
        return {};
    }
}

/// The result of `step`, which may throw `FileError`.
template <class Step>
Result ResultOf(const Step& step) {
    try {
        step();
        return kResult_OK;
    } catch (const corvane::FileError& error) {
        return error.GetResult();
    }
}

} // namespace

File::File() = default;
File::~File() = default;

Result File::Open(const String& path, FileAccessFlags) {
    Close();
    mState = std::make_unique<State>();
    return ResultOf([&] { mState->read.emplace(SystemPath(path), kSizeLimit); });
}

Result File::Create(const String& path, FileAccessFlags, FileShareModeFlags,
                    FileCreateDispositionFlags disposition, FileAttributesFlags, bool) {
    Close();
    const std::string name = SystemPath(path);
    if (name.empty()) return kResult_NotFound;
    mState = std::make_unique<State>();
    return ResultOf([&] {
        const std::filesystem::path target = corvane::FollowLinks(name);
        corvane::FileJournal::Note(path, target);
        struct stat status {};
        if (disposition == FileCreateDispositionFlags::kFailIfExists &&
            ::stat(target.c_str(), &status) == 0 && S_ISREG(status.st_mode))
            throw corvane::FileError(kResult_Failed, "the file exists", "choose another name");
        mState->written.emplace(target);
    });
}

std::uint64_t File::SizeOnDisk() const {
    return mState && mState->read ? mState->read->Size() : 0;
}

Result File::Read(void* buffer, std::uint32_t size, std::uint32_t& bytesRead) {
    bytesRead = 0;
    if (!mState || !mState->read) return kResult_Failed;
    return ResultOf([&] {
        bytesRead = static_cast<std::uint32_t>(mState->read->Read({static_cast<std::byte*>(buffer), size}));
    });
}

Result File::Write(const void* bytes, std::uint32_t size, std::uint32_t& bytesWritten) {
    bytesWritten = 0;
    if (!mState || !mState->written) return kResult_Failed;
    const Result result = ResultOf([&] {
        mState->written->Write({static_cast<const std::byte*>(bytes), size});
        mState->written->Commit();
    });
    Close();
    if (result >= 0) bytesWritten = size;
    return result;
}

void File::Close() noexcept {
    mState.reset();
}

bool PathUtils::ExistsOnDisk(const String& path) {
    struct stat status {};
    return ::stat(SystemPath(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

String PathUtils::GetFilePart(const String& path) {
    return path.substr(path.rfind(u'/') + 1);
}

} // namespace Mosk
