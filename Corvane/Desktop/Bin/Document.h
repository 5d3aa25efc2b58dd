#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <QObject>
#include <QUndoStack>

#include "Engine/Project.h"

namespace corvane::desktop {

/// The project that is open, with its file and the way back from every change. UI thread.
class Document final : public QObject {
    Q_OBJECT

  public:
    explicit Document(QObject* parent = nullptr);

    const Project& GetProject() const { return mProject; }
    /// The project's file; empty until it has one.
    const std::filesystem::path& GetPath() const { return mPath; }
    /// What to call the project: the file's name without its suffix.
    QString GetName() const;
    /// Whether there are changes that its file does not hold.
    bool IsModified() const { return !mSaved || !mProject.HoldsSameAs(*mSaved); }
    /// The steps that can be undone or done again.
    QUndoStack& GetUndoStack() { return mUndo; }

    /// Puts `after` in the project's place, as one step that can be undone. `text` says what it does, as in
    /// "Rename Clip". Does nothing if nothing changes.
    void Change(const QString& text, Project after);
    /// Writes a clip's settings file, as one step that can be undone: undoing it writes the earlier text,
    /// unless the file holds something else by then (`StepNoted`). Returns what could not be kept of the
    /// file, as `WriteTextFile` does. Throws `Failure` if the file can't be read or written; nothing is
    /// changed then.
    std::string WriteSettings(const QString& text, const std::filesystem::path& file,
                              const std::string& settings);

    /// Starts over with an empty project. Here, as in the next two, the steps so far can no longer be undone.
    void Clear();
    /// Goes on with a project as its file has it.
    void Open(const Project& project, const std::filesystem::path& path);
    /// Goes on with a project that was not saved: it counts as modified. `path` is its file, or empty.
    void Recover(const Project& project, const std::filesystem::path& path);
    /// Saves the project, which has that file from then on. Returns what could not be kept of an older file,
    /// as `SaveProject` does. Throws `Failure` if the file can't be written; nothing is changed then.
    [[nodiscard]] std::string Save(const std::filesystem::path& path);

  Q_SIGNALS:
    /// There is another project, or something else in the project or in one of its settings files.
    void Changed();
    /// The project has another file, or its file now holds what the project holds.
    void Saved();
    /// A step could not be undone or done again, or not all of its file was kept; `sentence` tells of it.
    void StepNoted(const QString& sentence);

  private:
    class ProjectStep;
    class FileStep;

    void Put(const Project& project);
    void Replace(const Project& project, const std::filesystem::path& path, std::optional<Project> saved);

    Project mProject;
    std::filesystem::path mPath;
    QUndoStack mUndo;
    std::optional<Project> mSaved = Project(); // what the file holds; none if that is not known
};

} // namespace corvane::desktop
