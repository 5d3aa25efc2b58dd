#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace corvane::desktop {

/// Notices when files change, go away or come back, however that happens: they may be written in place,
/// replaced under their names, or removed with their folders. UI thread.
class FileWatcher final : public QObject {
    Q_OBJECT

  public:
    explicit FileWatcher(QObject* parent = nullptr);

    /// Watches these files from now on. Those that were watched already are still compared with what they
    /// were. A file that the system can't watch is only looked at by `Look`.
    void Watch(const std::set<std::filesystem::path>& files);
    /// Looks at once. Reports what has changed before it returns.
    void Look();

  Q_SIGNALS:
    /// This file is another than it was, or is gone, or is there again.
    void FileChanged(const std::filesystem::path& file);

  private:
    /// What tells that a file is another than it was. All 0 for none.
    struct Stamp {
        std::uint64_t inode = 0, size = 0;
        std::int64_t seconds = 0, nanoseconds = 0;
        bool operator==(const Stamp&) const = default;
    };
    static Stamp StampOf(const std::filesystem::path& file);
    void WatchOnDisk();

    QFileSystemWatcher mWatcher;
    QTimer mSettle; // a program that saves a file causes several messages
    std::map<std::filesystem::path, Stamp> mFiles;
};

} // namespace corvane::desktop
