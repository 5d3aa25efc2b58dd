#include "Manifest.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <span>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Engine/TextFile.h"
#include "Entry.h"
#include "Export/Files/OutputFile.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr char kLockName[] = "lock";
constexpr char kAnnounced[] = ".next";
constexpr char kKept[] = ".json";

void MakeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw Failure(
            fmt::format("{}: this folder can't be made ({}); allow writing there, or choose another place",
                        folder.string(), error.message()));
}

// A text that names any path in few characters.
std::string ShortName(const fs::path& path) {
    bool done = false;
    const std::string& text = path.native();
    return HashText(HashContent([&] {
        return std::exchange(done, true) ? std::span<const std::byte>() : std::as_bytes(std::span(text));
    }));
}

// Empty if there is no such file.
std::string TextIn(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<fs::path> InFolder(const fs::path& folder, std::vector<fs::path> files) {
    for (fs::path& file : files) file = folder / file;
    return files;
}

bool HasSize(const std::vector<fs::path>& files, std::uint64_t bytes) {
    std::uint64_t found = 0;
    for (const fs::path& file : files) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(file, error);
        if (error) return false;
        found += size;
    }
    return found == bytes;
}

bool HasContent(const std::vector<fs::path>& files, const MadeMember& made) {
    return HasSize(files, made.bytes) && HashText(HashFiles(files).hash) == made.hash;
}

} // namespace

fs::path ManifestFile(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error) ? path / kManifestName : path;
}

Manifest::Manifest(const Family& family, bool gathers)
    : mFamily(family), mGathers(gathers), mEntries(family.Folder() / kEntriesName),
      mMade(static_cast<std::size_t>(family.Count()), char{0}) {
    MakeFolder(family.Folder());
    Lock();
    ReadOlder();
}

Manifest::~Manifest() {
    if (!mGathers) return;
    std::error_code error;
    fs::remove(mEntries / kLockName, error);
    fs::remove(mEntries, error); // if it is empty
}

void Manifest::Lock() {
    const fs::path file = mEntries / kLockName;
    for (;;) {
        MakeFolder(mEntries);
        mLock = FileDescriptor(file, O_RDWR | O_CREAT, 0666);
        if (!mLock && errno == ENOENT) continue; // the one that ended removed the folder
        if (!mLock)
            throw Failure(fmt::format("{}: this folder may not be written to ({}); choose another place",
                                      mEntries.string(), std::generic_category().message(errno)));
        if (::flock(mLock.Get(), (mGathers ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0 && errno == EWOULDBLOCK)
            throw Failure(
                fmt::format("{}: another sweep is at work in this folder; wait until it ends, or choose "
                            "another one",
                            mFamily.Folder().string()));
        struct stat mine {
        }, there{};
        if (::fstat(mLock.Get(), &mine) == 0 && ::stat(file.c_str(), &there) == 0 &&
            mine.st_ino == there.st_ino)
            return;
    }
}

void Manifest::ReadOlder() {
    const fs::path file = mFamily.Folder() / kManifestName;
    std::error_code error;
    if (!fs::exists(file, error)) return;
    mOlder = FileDescriptor(file, O_RDONLY);
    ReadManifest(file, [this](std::string&& line, std::int64_t offset) {
        mLines[OutputOfEntry(line)] = {offset, std::ssize(line)};
    });
}

fs::path Manifest::EntryOf(const Member& member, const char* suffix) const {
    return mEntries / (ShortName(member.output) + suffix);
}

std::optional<std::string> Manifest::LineOf(const Member& member) const {
    if (const std::string entry = TextIn(EntryOf(member, kKept)); !entry.empty())
        if (auto line = AcceptedEntry(entry, mFamily, member)) return line;
    const auto found = mLines.find(member.output.string());
    if (found == mLines.end()) return std::nullopt;
    std::string line(static_cast<std::size_t>(found->second.size), '\0');
    if (::pread(mOlder.Get(), line.data(), line.size(), found->second.offset) != std::ssize(line))
        return std::nullopt;
    return AcceptedEntry(line, mFamily, member);
}

bool Manifest::IsMade(const Member& member) {
    const fs::path& folder = mFamily.Folder();
    // A process that was killed may have named the output, or not.
    if (const fs::path next = EntryOf(member, kAnnounced); ::access(next.c_str(), F_OK) == 0) {
        const auto made = ReadEntry(TextIn(next));
        if (made && HasContent(InFolder(folder, made->files), *made))
            Keep(member);
        else
            ::unlink(next.c_str());
    }
    const auto line = LineOf(member);
    const auto made = line ? ReadEntry(*line) : std::nullopt;
    if (!made || !HasSize(InFolder(folder, made->files), made->bytes)) return false;
    Prepare(member);
    mMade[static_cast<std::size_t>(member.number)] = 1;
    return true;
}

void Manifest::Prepare(const Member& member) {
    const fs::path output = mFamily.Folder() / member.output;
    if (member.output.has_parent_path()) MakeFolder(output.parent_path());
    const fs::path file = mFamily.Folder() / member.settingsFile;
    const std::string older = TextIn(file);
    if (!older.empty() && ReadSettings(older) == member.spec.settings) return;
    std::ignore = WriteTextFile(file, WriteSettings(member.spec.settings));
}

void Manifest::Announce(const Member& member, const Clip& clip, const ExportReport& report,
                        const std::vector<fs::path>& working) const {
    try {
        const std::string line = corvane::EntryOf(mFamily, member, clip, report, HashFiles(working));
        std::ignore = WriteTextFile(EntryOf(member, kAnnounced), line);
    } catch (const FileError& error) {
        throw WritingFailure(member.output.string(), error);
    }
}

void Manifest::Keep(const Member& member) {
    const fs::path next = EntryOf(member, kAnnounced);
    if (::rename(next.c_str(), EntryOf(member, kKept).c_str()) != 0)
        throw WritingFailure(next.string(), FileError::OfWriting(errno));
    mMade[static_cast<std::size_t>(member.number)] = 1;
}

void Manifest::Gather() const {
    const fs::path path = mFamily.Folder() / kManifestName;
    try {
        AtomicFile file(path);
        std::string text = ManifestStart(mFamily.Count());
        const auto write = [&] {
            file.Write(std::as_bytes(std::span(text)));
            text.clear();
        };
        constexpr std::size_t kEnough = 1 << 20;
        bool first = true;
        for (std::int64_t number = 0; number < mFamily.Count(); ++number) {
            if (mMade[static_cast<std::size_t>(number)] == 0) continue;
            const auto line = LineOf(mFamily.At(number));
            if (!line) continue;
            text += (std::exchange(first, false) ? "" : ",\n") + *line;
            if (text.size() > kEnough) write();
        }
        text += kManifestEnd;
        write();
        std::ignore = file.Commit();
    } catch (const FileError& error) {
        throw WritingFailure(path.string(), error);
    }
}

void Manifest::RemoveEntries() {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(mEntries, error)) {
        if (entry.path().filename() != kLockName) fs::remove(entry.path(), error);
    }
}

} // namespace corvane
