#include "FileWatcher.h"

#include <chrono>
#include <vector>

#include <QStringList>

#include <sys/stat.h>

#include "Desktop/Toolkit/Text.h"

namespace corvane::desktop {

namespace {

constexpr std::chrono::milliseconds kSettleTime{50};

} // namespace

FileWatcher::FileWatcher(QObject* parent) : QObject(parent) {
    mSettle.setSingleShot(true);
    mSettle.setInterval(kSettleTime);
    connect(&mSettle, &QTimer::timeout, this, &FileWatcher::Look);
    const auto settle = [this] { mSettle.start(); };
    connect(&mWatcher, &QFileSystemWatcher::fileChanged, this, settle);
    connect(&mWatcher, &QFileSystemWatcher::directoryChanged, this, settle);
}

FileWatcher::Stamp FileWatcher::StampOf(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return {};
    return {.inode = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .seconds = status.st_mtim.tv_sec,
            .nanoseconds = status.st_mtim.tv_nsec};
}

void FileWatcher::Watch(const std::set<std::filesystem::path>& files) {
    std::map<std::filesystem::path, Stamp> watched;
    for (const auto& file : files) {
        const auto known = mFiles.find(file);
        watched.emplace(file, known != mFiles.end() ? known->second : StampOf(file));
    }
    mFiles = std::move(watched);
    WatchOnDisk();
}

void FileWatcher::Look() {
    std::vector<std::filesystem::path> changed;
    for (auto& [file, stamp] : mFiles) {
        const Stamp now = StampOf(file);
        if (now == stamp) continue;
        stamp = now;
        changed.push_back(file);
    }
    WatchOnDisk();
    for (const auto& file : changed) Q_EMIT FileChanged(file);
}

/// A file that was replaced or removed is no longer watched by the system; its folder tells of a new one.
void FileWatcher::WatchOnDisk() {
    std::set<QString> wanted;
    for (const auto& [file, stamp] : mFiles) {
        if (stamp != Stamp{}) wanted.insert(FromPath(file));
        std::error_code error;
        if (std::filesystem::is_directory(file.parent_path(), error))
            wanted.insert(FromPath(file.parent_path()));
    }
    QStringList surplus;
    for (const QString& path : mWatcher.files() + mWatcher.directories())
        if (wanted.erase(path) == 0) surplus << path;
    if (!surplus.isEmpty()) mWatcher.removePaths(surplus);
    if (!wanted.empty()) mWatcher.addPaths(QStringList(wanted.begin(), wanted.end()));
}

} // namespace corvane::desktop
