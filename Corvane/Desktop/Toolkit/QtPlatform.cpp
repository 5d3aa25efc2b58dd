#include "QtPlatform.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include <QColorDialog>
#include <QDir>
#include <QMessageBox>

#include "ColorSwatch.h"
#include "DialogWindow.h"
#include "SaveFileDialog.h"
#include "Services/Foundation/QuotedText.h"
#include "Text.h"

namespace corvane::desktop {

namespace {

/// How the sentence ends that says why there is no window. Only while the application object is made.
std::string gRemedy;

/// While the application object is made: Qt aborts if it can't show windows. This ends the process before
/// that, as a request that failed, because what Qt says then is not for people.
void EndOnFatalMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fprintf(
        stderr,
        "synthex: No window can be shown: Qt has nothing here to show it with (QT_QPA_PLATFORM=%s); %s.\n",
        qgetenv("QT_QPA_PLATFORM").constData(), gRemedy.c_str());
    std::_Exit(EXIT_FAILURE);
}

/// Keeps exceptions from passing through Qt, which is not made for that.
class Application final : public QApplication {
  public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception& exception) {
            std::fprintf(stderr, "synthex: A step failed and was left out: %s.\n",
                         Quoted(exception.what()).c_str());
            return true;
        }
    }
};

std::unique_ptr<QApplication> MakeApplication(const std::string& remedy) {
    if (QApplication::instance() != nullptr) return nullptr;
    // Both live as long as the process: Qt keeps referring to them.
    static char name[] = "synthex";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    gRemedy = remedy;
    const QtMessageHandler usual = qInstallMessageHandler(&EndOnFatalMessage);
    auto application = std::make_unique<Application>(count, arguments);
    QApplication::setOrganizationName(QStringLiteral("Synthex"));
    QApplication::setApplicationName(QStringLiteral("synthex"));
    QApplication::setDesktopFileName(QStringLiteral("synthex"));
    qInstallMessageHandler(usual);
    std::setlocale(LC_NUMERIC, "C");
    return application;
}

QMessageBox::Icon IconOf(lumui::dialogs::UI_MessageBox::Icon icon) {
    return icon == lumui::dialogs::UI_MessageBox::kIcon_Warning ? QMessageBox::Warning : QMessageBox::NoIcon;
}

/// A component as the picker left it: the exact one unless the person changed it.
float Picked(float exact, float before, float after) {
    return after == before ? exact : after;
}

} // namespace

/// The main window as plug-ins know it. It has one workspace.
class QtPlatform::MainWindowNode final : public lumworkspace::workspace::TopLevelWindow {
  public:
    lumworkspace::workspace::Workspace* GetWorkspace() override { return mWorkspace.get(); }

  private:
    const lumui::ui::UI_NodePtr<lumworkspace::workspace::Workspace> mWorkspace =
        lumui::ui::MakeNode<lumworkspace::workspace::Workspace>();
};

QtPlatform::QtPlatform(const DesktopOptions& options)
    : mApplication(MakeApplication(options.remedy)), mMainWindowNode(lumui::ui::MakeNode<MainWindowNode>()),
      mFolder(QDir(QString::fromStdString(options.folder.string())).absolutePath()) {}

QtPlatform::~QtPlatform() = default;

void QtPlatform::SetMainWindow(QWidget* window) {
    mMainWindow = window;
}

lumworkspace::workspace::TopLevelWindow* QtPlatform::GetMainTopLevelWindow() {
    return mMainWindow.isNull() ? nullptr : mMainWindowNode.get();
}

/// The window that a further one belongs to: the modal one that is open, else the main window, which is all
/// that the toolkit's nodes can name.
QWidget* QtPlatform::ParentWindow() const {
    if (QWidget* const modal = QApplication::activeModalWidget()) return modal;
    return mMainWindow.isNull() ? QApplication::activeWindow() : mMainWindow.data();
}

void QtPlatform::ShowDialog(DialogModel& dialog, lumui::ui::UI_Node*) {
    DialogWindow(dialog, ParentWindow()).Run();
}

std::optional<Mosk::String> QtPlatform::RunSaveFileDialog(const SaveFileRequest& request) {
    SaveFileDialog dialog(request, mFolder, ParentWindow());
    const std::optional<QString> path = dialog.Run();
    if (!path) return std::nullopt;
    mFolder = QFileInfo(*path).absolutePath();
    return FromQt(*path);
}

std::int32_t QtPlatform::RunMessageBox(const MessageBoxRequest& request) {
    using lumui::dialogs::UI_MessageBox;
    QMessageBox box(IconOf(request.icon), ToQt(request.title), ToQt(request.message), QMessageBox::NoButton,
                    ParentWindow());
    box.setTextFormat(Qt::PlainText);
    struct ButtonRow {
        UI_MessageBox::Button response;
        QMessageBox::StandardButton button;
    };
    constexpr ButtonRow kButtons[] = {{UI_MessageBox::kButton_Yes, QMessageBox::Yes},
                                      {UI_MessageBox::kButton_No, QMessageBox::No}};
    for (const ButtonRow& row : kButtons) {
        if ((request.buttons & row.response) == 0) continue;
        box.addButton(row.button);
        if (request.defaultButton == row.response) box.setDefaultButton(row.button);
        if (row.button == QMessageBox::No) box.setEscapeButton(row.button);
    }
    const int pressed = box.exec();
    for (const ButtonRow& row : kButtons)
        if (pressed == row.button) return row.response;
    return UI_MessageBox::kButton_No;
}

std::optional<lumui::controls::ColorRGBA> QtPlatform::RunColorPicker(const ColorPickerRequest& request) {
    QColorDialog dialog(ParentWindow());
    // The system's own pickers know 8 bits and no alpha.
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    // Before the color: without the option a color loses its alpha.
    dialog.setOption(QColorDialog::ShowAlphaChannel);
    dialog.setCurrentColor(ShownColor(request.color));
    const QColor before = dialog.currentColor();
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    const QColor after = dialog.currentColor();
    const lumui::controls::ColorRGBA& exact = request.color;
    return lumui::controls::ColorRGBA{Picked(exact.mRed, before.redF(), after.redF()),
                                      Picked(exact.mGreen, before.greenF(), after.greenF()),
                                      Picked(exact.mBlue, before.blueF(), after.blueF()),
                                      Picked(exact.mAlpha, before.alphaF(), after.alphaF())};
}

} // namespace corvane::desktop
