#pragma once

#include <filesystem>

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
    /// The actions can be used while all of these live; `window` is the parent of the questions.
    ProjectActions(Document& document, Autosave& autosave, MessageBar& messages, QWidget& window);

    /// Adds the actions to the menus of the window: those of the file, and those of the project.
    void AddTo(QMenu& file, QMenu& project);

    /// Opens a project in place of the present one, after asking what to do with that one's changes. If it
    /// can't be opened, the message bar says why and the present one stays.
    void Open(const std::filesystem::path& file);
    /// Offers the projects that earlier processes left behind, one after the other until the person takes one
    /// or puts it off.
    void OfferLost();
    /// If there are changes that are not saved, asks what to do with them. False if the person wants to stay
    /// with them, or if they could not be saved.
    bool LeavesChanges();

  Q_SIGNALS:
    /// The person chose files to open, of any kind.
    void OpenWanted(const QStringList& files);

  private:
    void New();
    void ChooseFiles();
    bool Save();
    bool SaveAs();
    bool SaveTo(const std::filesystem::path& file);
    void EditSequence();

    Document& mDocument;
    Autosave& mAutosave;
    MessageBar& mMessages;
    QWidget& mWindow;
    RecentFiles* mRecent;
};

} // namespace corvane::desktop
