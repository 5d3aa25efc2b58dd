#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <QTemporaryDir>

#include "Desktop/Window/MainWindow.h"
#include "Tests/Desktop/DesktopFixture.h"

/// Lets the event loop run until `done`; a failure of the test after half a minute.
void WaitUntil(const std::function<bool()>& done, const char* what);

/// The main window in a folder of the test's own.
class WindowTest : public testing::Test {
  protected:
    WindowTest();
    ~WindowTest() override;

    /// Begins as a new process would, in the same folder.
    void Restart();
    /// Does what a menu's entry of this text does, without its dots.
    void Choose(const char* text);
    /// Whether the entry can be chosen.
    bool CanChoose(const char* text);
    /// Presses the settings dialog's OK, after `act`.
    static std::function<void(QDialog&)> Settings(const std::function<void(QDialog&)>& act);

    /// Settings of a small clip in a file of the test's folder, with more members (", ..." or nothing).
    std::filesystem::path Write(const std::string& name, const std::string& members = {});
    void Open(const std::filesystem::path& file);
    /// Waits until every clip has been opened, or found not to open.
    void WaitForClips();

    corvane::desktop::BinModel& Model();
    corvane::desktop::BinView& Bin();
    std::string Cell(int row, int column);
    std::string Messages();
    const corvane::Project& Project() { return mWindow->GetDocument().GetProject(); }
    std::filesystem::path Folder() const { return mFolder.path().toStdString(); }

    QTemporaryDir mFolder;
    std::unique_ptr<corvane::desktop::MainWindow> mWindow;
};
