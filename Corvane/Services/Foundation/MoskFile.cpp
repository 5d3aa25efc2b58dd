#include "Mosk.h"

#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

#include <sys/stat.h>

#include "AtomicFile.h"
#include "FileJournal.h"
#include "RegularFile.h"

namespace Mosk {

/// What is open: `read`, or one of those below, with where it leads.
struct File::State {
    std::optional<corvane::RegularFile> read;
    std::optional<corvane::AtomicFile> written;
    std::optional<corvane::FileError> failure; // why it can't be written
    String path;
    std::filesystem::path target;
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

bool IsRegularFile(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
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
    mState->path = path;
    mState->target = name;
    const bool mustBeNew = disposition == FileCreateDispositionFlags::kFailIfExists;
    try {
        mState->target = corvane::FollowLinks(name);
        if (mustBeNew && IsRegularFile(mState->target))
            throw corvane::FileError(kResult_Failed, "the file exists", "choose another name");
        mState->written.emplace(mState->target);
    } catch (const corvane::FileError& error) {
        if (mustBeNew || corvane::FileJournal::Current() == nullptr) return error.GetResult();
        // Told by `Write`, so that the journal gets the text that would have been lost.
        mState->failure = error;
    }
    return kResult_OK;
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
    if (!mState || (!mState->written && !mState->failure)) return kResult_Failed;
    const std::string_view text(static_cast<const char*>(bytes), size);
    corvane::FileJournal* const journal = corvane::FileJournal::Current();
    corvane::FileJournal::Entry unkept;
    auto& entry =
        journal != nullptr ? journal->Begin(mState->path, mState->target, std::string(text)) : unkept;
    const Result result = ResultOf([&] {
        try {
            if (mState->failure) throw *mState->failure;
            mState->written->Write(std::as_bytes(std::span(text)));
            // Saved again, the file has no other names any more.
            if (std::string lost = mState->written->Commit(); !lost.empty()) entry.lost = std::move(lost);
            entry.changed = true;
            entry.whyNot.clear();
        } catch (const corvane::FileError& error) {
            entry.whyNot = error.what();
            throw;
        }
    });
    Close();
    if (result >= 0) bytesWritten = size;
    return result;
}

void File::Close() noexcept {
    mState.reset();
}

bool PathUtils::ExistsOnDisk(const String& path) {
    return IsRegularFile(SystemPath(path));
}

String PathUtils::GetFilePart(const String& path) {
    return path.substr(path.rfind(u'/') + 1);
}

} // namespace Mosk
