#include "DesktopFixture.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>

namespace {

std::unique_ptr<corvane::desktop::QtPlatform> gPlatform;

/// Qt only warns about a widget that is used wrongly.
void FailOnWarning(QtMsgType type, const QMessageLogContext&, const QString& text) {
    // The platform without a display can't do what tool tips and windows of a fixed size ask for.
    if (type == QtDebugMsg || text.contains("propagateSizeHints") || text.contains("raise()")) return;
    ADD_FAILURE() << text.toStdString();
}

class PlatformEnvironment : public testing::Environment {
    void TearDown() override { gPlatform.reset(); }
};

[[maybe_unused]] const auto* const gEnvironment = testing::AddGlobalTestEnvironment(new PlatformEnvironment);

} // namespace

corvane::desktop::QtPlatform& Platform() {
    if (!gPlatform) {
        // Each process has its own, since many run at a time, and none uses the person's.
        static const QTemporaryDir home;
        for (const char* const kept : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
            qputenv(kept, home.path().toLocal8Bit());
        gPlatform = std::make_unique<corvane::desktop::QtPlatform>(corvane::DesktopOptions{});
        qInstallMessageHandler(&FailOnWarning);
    }
    return *gPlatform;
}

void WhenShown(const std::function<void(QDialog&)>& act) {
    QTimer::singleShot(0, qApp, [act] {
        auto* const window = dynamic_cast<QDialog*>(QApplication::activeModalWidget());
        if (window == nullptr) return WhenShown(act);
        QApplication::setActiveWindow(window);
        try {
            act(*window);
        } catch (const std::exception& exception) {
            ADD_FAILURE() << exception.what();
        }
        if (window->isVisible()) window->reject();
    });
}

void Settle() {
    QApplication::processEvents();
}

TestDialog::TestDialog(const std::string& rows) {
    const std::string script =
        R"(<dialog title="Test" default="ok" cancel="cancel">)" + rows +
        R"(<row><button id="cancel" text="_Cancel"/><button id="ok" text="_OK"/></row></dialog>)";
    mModel = lumui::ui::MakeNode<corvane::DialogModel>(corvane::ParseLayout(script, u"Test"), nullptr);
    for (corvane::ControlModel* const control : mModel->GetControls()) {
        const std::string id = control->GetID();
        control->GetView().NotifyWhenChanged(
            boost::make_shared<lumui::ui::MessageFunction>([this, id](lumui::ui::UI_Message*) {
                reports.push_back(id);
                if (onReport) onReport(id);
                if (id == "ok" || id == "cancel") mModel->Close();
            }));
    }
}

TestDialog::~TestDialog() = default;

void TestDialog::Run(const std::function<void(QDialog&)>& act) {
    Platform();
    WhenShown(act);
    Platform().RunDialog(*mModel, nullptr);
}
