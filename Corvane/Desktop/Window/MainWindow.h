#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <QMainWindow>
#include <QSplitter>

#include "Autosave.h"
#include "ClipActions.h"
#include "Desktop/Bin/BinModel.h"
#include "Desktop/Bin/BinView.h"
#include "Desktop/Bin/Document.h"
#include "Desktop/Toolkit/QtPlatform.h"
#include "Desktop/Viewer/Viewer.h"
#include "MessageBar.h"
#include "ProjectActions.h"

namespace corvane::desktop {

class ExportPanel;
class PictureAlone;

/// The host's main window: a bin of clips, a viewer, and the exports that run. UI thread.
class MainWindow final : public QMainWindow {
    Q_OBJECT

  public:
    /// What the window needs to know of its surroundings.
    struct Options {
        std::filesystem::path autosaveFolder; ///< where what is not saved is kept
        std::string version;                  ///< of the program, for people
    };

    /// Becomes the main window of `platform`, which outlives it.
    MainWindow(QtPlatform& platform, std::shared_ptr<Bundle> bundle, Options options);
    ~MainWindow() override;

    /// Offers what an earlier process left behind, and opens files.
    void Begin(const QStringList& files);
    /// Opens projects and settings files: the first project, and the settings files in it. The message bar
    /// says what could not be opened.
    void OpenFiles(const QStringList& files);
    /// Cancels the exports and keeps what is not saved, without asking anything. For the end of the process.
    void PrepareToEnd();
    /// Closes the window as soon as the first clip's picture is on the screen.
    void CloseWhenShown();

    Document& GetDocument() { return mDocument; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void BuildMenus();
    void BuildEditMenu();
    void BuildViewMenu();
    void BuildHelpMenu();
    void BuildToolBar();
    void BuildExports();
    void RestoreState();
    void ShowCurrent();
    void ShowClipName();
    void ShowTitle();
    void ExportClips(const std::vector<std::uint64_t>& ids);
    void CompareClip(std::uint64_t id);
    bool LeavesExports();
    void ShowAbout();

    QtPlatform& mPlatform;
    const std::shared_ptr<Bundle> mBundle;
    const std::string mVersion;
    Document mDocument;
    Autosave mAutosave;
    BinModel mModel;
    MessageBar* mMessages;
    QSplitter* mSplitter;
    BinView* mBin;
    Viewer* mViewer;
    ExportPanel* mExports = nullptr;
    PictureAlone* mAlone;
    ProjectActions* mProjectActions;
    ClipActions* mClipActions;
    std::uint64_t mShown = 0; // the clip in the viewer
    bool mHasEnded = false;   // nothing is asked any more
};

} // namespace corvane::desktop
