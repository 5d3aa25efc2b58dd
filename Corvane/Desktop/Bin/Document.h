#pragma once

#include <filesystem>
#include <optional>

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
    QUndoStack& GetUndoStack() { return mUndo; }

    /// Puts `after` in the project's place, as one step that can be undone. `text` says what it does, as in
    /// "Rename Clip". Does nothing where nothing changes.
    void Change(const QString& text, Project after);
    /// Writes a clip's settings file, as one step that can be undone: going back writes the earlier text, and
    /// fails where the file holds something else by then. Throws `Failure`; nothing is changed then.
    void WriteSettings(const QString& text, const std::filesystem::path& file, const std::string& settings);

    /// Starts over with an empty project.
    void Clear();
    /// Goes on with a project as its file has it.
    void Open(const Project& project, const std::filesystem::path& path);
    /// Goes on with a project that was not saved: it counts as modified. `path` is its file, or empty.
    void Recover(const Project& project, const std::filesystem::path& path);
    /// Saves the project, which has that file then. Throws `Failure`; nothing is changed then.
    void Save(const std::filesystem::path& path);

  Q_SIGNALS:
    /// The project is another one, or it or one of its settings files has another content.
    void Changed();
    /// The project's file is another, or holds what the project holds.
    void Saved();
    /// A step could not be undone or done again; `sentence` says why.
    void StepFailed(const QString& sentence);

  private:
    class ProjectStep;
    class FileStep;

    void Put(const Project& project);
    void Replace(const Project& project, const std::filesystem::path& path, std::optional<Project> saved);

    Project mProject;
    std::filesystem::path mPath;
    QUndoStack mUndo;
    std::optional<Project> mSaved = Project(); // what the file holds; none where it is not known to hold it
};

} // namespace corvane::desktop
