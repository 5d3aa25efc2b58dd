#include "WindowFixture.h"

#include <fstream>

#include <QAbstractButton>
#include <QAction>
#include <QDeadlineTimer>
#include <QSettings>
#include <QTimer>

#include "Tests/TestSettings.h"

using corvane::desktop::BinModel;
using corvane::desktop::BinView;
using corvane::desktop::MainWindow;

void WaitUntil(const std::function<bool()>& done, const char* what) {
    constexpr std::chrono::seconds kPatience{30};
    const QDeadlineTimer deadline(kPatience);
    // Wakes the loop if nothing else does.
    QTimer wake;
    wake.start(std::chrono::milliseconds(20));
    while (!done()) {
        if (deadline.hasExpired()) {
            ADD_FAILURE() << "waited in vain for " << what;
            return;
        }
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

WindowTest::WindowTest() {
    Platform();
    QSettings().clear(); // what an earlier test of this process chose
    Restart();
}

WindowTest::~WindowTest() {
    mWindow->PrepareToEnd();
    mWindow.reset();
    corvane::SetPlatform(nullptr);
}

void WindowTest::Restart() {
    if (mWindow) mWindow->PrepareToEnd();
    mWindow.reset();
    corvane::SetPlatform(&Platform());
    mWindow = std::make_unique<MainWindow>(
        Platform(), std::make_shared<corvane::Bundle>(corvane::testing::BundlePath()),
        MainWindow::Options{.autosaveFolder = Folder() / "unsaved", .version = "test"});
    mWindow->show();
    QApplication::setActiveWindow(mWindow.get());
}

namespace {

QAction& FindAction(const QWidget& window, const char* text) {
    for (QAction* const action : window.findChildren<QAction*>()) {
        QString shown = action->text().remove(u'&').remove(u'…');
        if (shown == QString::fromLatin1(text)) return *action;
    }
    throw std::runtime_error(std::string("no menu entry ") + text);
}

} // namespace

void WindowTest::Choose(const char* text) {
    QAction& action = FindAction(*mWindow, text);
    EXPECT_TRUE(action.isEnabled()) << text;
    action.trigger();
}

bool WindowTest::CanChoose(const char* text) {
    return FindAction(*mWindow, text).isEnabled();
}

std::function<void(QDialog&)> WindowTest::Settings(const std::function<void(QDialog&)>& act) {
    return [act](QDialog& dialog) {
        act(dialog);
        Find<QAbstractButton>(dialog, "okButton").click();
    };
}

std::filesystem::path WindowTest::Write(const std::string& name, const std::string& members) {
    const std::filesystem::path file = Folder() / name;
    std::ofstream(file) << corvane::testing::SettingsText(
        R"(,"mVideoDuration":{"ticks":2542700160000},"mVideoFrameRate":{"ticksperframe":8475667200})" +
        members);
    return file;
}

void WindowTest::Open(const std::filesystem::path& file) {
    mWindow->OpenFiles({QString::fromStdString(file.string())});
    WaitForClips();
}

void WindowTest::WaitForClips() {
    WaitUntil(
        [this] {
            for (int row = 0; row < Model().rowCount(); ++row) {
                const auto* const loaded = Model().LoadedAt(row);
                if (loaded == nullptr || loaded->source != Model().ClipAt(row).source) return false;
            }
            return true;
        },
        "the clips");
}

BinModel& WindowTest::Model() {
    return dynamic_cast<BinModel&>(*Bin().model());
}

BinView& WindowTest::Bin() {
    return *mWindow->findChild<BinView*>();
}

std::string WindowTest::Cell(int row, int column) {
    return Model().data(Model().index(row, column), Qt::DisplayRole).toString().toStdString();
}

std::string WindowTest::Messages() {
    return mWindow->findChild<corvane::desktop::MessageBar*>()->GetText().toStdString();
}
