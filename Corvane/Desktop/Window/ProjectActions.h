#pragma once

#include <filesystem>

#include <QAction>
#include <QMenu>
#include <QObject>

#include "Autosave.h"
#include "Desktop/Bin/Document.h"
#include "MessageBar.h"
#include "RecentFiles.h"

namespace corvane::desktop {

/// What a person does with the project as a whole: new, open, save, and the questions that go with it, so
/// that nothing is lost. UI thread.
class ProjectActions final : public QObject {
    Q_OBJECT

  public:
    /// All of them outlive the actions; `window` is the parent of what is asked.
    ProjectActions(Document& document, Autosave& autosave, MessageBar& messages, QWidget& window);

    /// Adds the actions to the menus of the window: those of the file, and those of the project.
    void AddTo(QMenu& file, QMenu& project);

    /// Opens a project in the place of the present one, whose changes are asked for first. What can't be
    /// opened is told, and the present one stays.
    void Open(const std::filesystem::path& file);
    /// Offers the project that an earlier process left behind, one after the other until one is taken.
    void OfferLost();
    /// Where there are changes that are not saved, asks what to do with them. False where the person wants to
    /// stay with them, or where they could not be saved.
    bool LeavesChanges();

  Q_SIGNALS:
    /// The person chose files to open, of whichever kind.
    void OpenWanted(const QStringList& files);

  private:
    void New();
    void ChooseFiles();
    bool Save();
    bool SaveAs();
    bool SaveTo(const std::filesystem::path& file);
    void EditSequence();
    QAction* Make(const QString& text, const QKeySequence& shortcut, const QString& tip);

    Document& mDocument;
    Autosave& mAutosave;
    MessageBar& mMessages;
    QWidget& mWindow;
    RecentFiles* mRecent;
};

} // namespace corvane::desktop
