#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

#include <QDateTime>
#include <QLockFile>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include "Desktop/Bin/Document.h"
#include "Desktop/Toolkit/UICalls.h"

namespace corvane::desktop {

/// Keeps what the project's file does not hold on the disk, so that it survives the end of the process,
/// however that comes. It is written on a thread of its own a moment after each change, and removed when the
/// project is saved or the person gives the changes up. UI thread.
class Autosave final : public QObject {
    Q_OBJECT

  public:
    /// A project that was left behind by a process that no longer runs.
    struct Lost {
        Project project;
        std::filesystem::path path; ///< its file; empty if it had none
        QDateTime when;             ///< of the last change that was kept
    };

    /// `document` outlives this. `folder` is where all processes of the person keep what is not saved; it is
    /// made if it is missing.
    Autosave(Document& document, std::filesystem::path folder, QObject* parent = nullptr);
    /// Waits for what is being written. What is not saved stays on the disk; `Discard` removes it.
    ~Autosave() override;

    /// The folder for the person who runs the program.
    static std::filesystem::path DefaultFolder();

    /// The latest project that was left behind; nothing if there is none. It belongs to this process from
    /// then on, which gives it to the document (`Document::Recover`), discards it, or leaves it for another
    /// time. To be called before the document changes.
    std::optional<Lost> TakeLost();
    /// Leaves the project that was taken last for another time.
    void LeaveLost();
    /// Writes at once what has not been written yet, and removes what was written if the document has no
    /// changes to keep.
    void Flush();
    /// Removes what was written: the changes are given up.
    void Discard();

  Q_SIGNALS:
    /// The changes can't be kept; `sentence` says why. Raised only once until it works again.
    void Failed(const QString& sentence);

  private:
    bool Claim(const std::filesystem::path& file);
    void ClaimNew();
    void Write();
    void WriteNext();
    void Note(const QString& failure);

    /// What is to be kept, and in which file.
    struct Unsaved {
        Project project;
        std::filesystem::path path, file;
    };

    Document& mDocument;
    const std::filesystem::path mFolder;
    std::filesystem::path mFile; // of this process, locked
    std::unique_ptr<QLockFile> mLock;
    bool mHasFailed = false;
    QTimer mDelay;
    std::mutex mMutex;            // guards mNext
    std::optional<Unsaved> mNext; // for the writer
    UICalls mUI;
    QThreadPool mWriter; // one thread, so that the last text wins
};

} // namespace corvane::desktop
