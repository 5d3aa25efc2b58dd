#include "Document.h"

#include <utility>

#include <QUndoCommand>
#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"
#include "Engine/TextFile.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::desktop {

/// A change of the project: what it was, and what it is after.
class Document::ProjectStep final : public QUndoCommand {
  public:
    ProjectStep(Document& document, const QString& text, Project after)
        : QUndoCommand(text), mDocument(document), mBefore(document.mProject), mAfter(std::move(after)) {}

    void undo() override { mDocument.Put(mBefore); }
    void redo() override { mDocument.Put(mAfter); }

  private:
    Document& mDocument;
    const Project mBefore, mAfter;
};

/// A change of a settings file. The project itself stays as it is, and its file need not be saved.
class Document::FileStep final : public QUndoCommand {
  public:
    FileStep(Document& document, const QString& text, std::filesystem::path file, std::string before,
             std::string after)
        : QUndoCommand(text), mDocument(document), mFile(std::move(file)), mBefore(std::move(before)),
          mAfter(std::move(after)) {}

    void undo() override { Write(mAfter, mBefore); }
    void redo() override {
        // The first time the file has been written already.
        if (std::exchange(mDone, true)) Write(mBefore, mAfter);
    }

  private:
    void Write(const std::string& expected, const std::string& text) {
        try {
            if (ReadTextFile(mFile) != expected)
                throw Failure(fmt::format("{}: the file was changed by another program and is kept as it is.",
                                          mFile.string()));
            if (const std::string lost = WriteTextFile(mFile, text); !lost.empty())
                Q_EMIT mDocument.StepNoted(QString::fromStdString(SavedText(mFile, lost)));
        } catch (const Failure& failure) {
            Q_EMIT mDocument.StepNoted(QString::fromUtf8(failure.what()));
        }
        Q_EMIT mDocument.Changed();
    }

    Document& mDocument;
    const std::filesystem::path mFile;
    const std::string mBefore, mAfter;
    bool mDone = false;
};

Document::Document(QObject* parent) : QObject(parent) {}

QString Document::GetName() const {
    return mPath.empty() ? tr("Untitled") : QString::fromStdString(mPath.stem().string());
}

void Document::Change(const QString& text, Project after) {
    if (!after.HoldsSameAs(mProject)) mUndo.push(new ProjectStep(*this, text, std::move(after)));
}

std::string Document::WriteSettings(const QString& text, const std::filesystem::path& file,
                                    const std::string& settings) {
    std::string before = ReadTextFile(file);
    if (before == settings) return {};
    std::string lost = WriteTextFile(file, settings);
    mUndo.push(new FileStep(*this, text, file, std::move(before), settings));
    Q_EMIT Changed();
    return lost;
}

void Document::Put(const Project& project) {
    mProject = project;
    Q_EMIT Changed();
}

void Document::Replace(const Project& project, const std::filesystem::path& path,
                       std::optional<Project> saved) {
    mUndo.clear();
    mPath = path;
    mSaved = std::move(saved);
    Put(project);
    Q_EMIT Saved();
}

void Document::Clear() {
    Replace({}, {}, Project());
}

void Document::Open(const Project& project, const std::filesystem::path& path) {
    Replace(project, std::filesystem::absolute(path).lexically_normal(), project);
}

void Document::Recover(const Project& project, const std::filesystem::path& path) {
    Replace(project, path, std::nullopt);
}

std::string Document::Save(const std::filesystem::path& path) {
    std::string lost = SaveProject(mProject, path);
    mPath = std::filesystem::absolute(path).lexically_normal();
    mSaved = mProject;
    Q_EMIT Saved();
    return lost;
}

} // namespace corvane::desktop
