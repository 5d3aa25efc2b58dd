// Takes the pictures of the preferences dialog that the documentation shows: the plug-in's own dialog, worked
// as a person works it.
//   dialog_screenshots FOLDER
#include <cstdio>
#include <functional>
#include <string>

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QTimer>

#include "Desktop/Toolkit/QtPlatform.h"
#include "Engine/Preferences.h"
#include "Services/Foundation/StandardStreams.h"

namespace {

/// Chooses an item as a person does.
void Choose(QDialog& window, const char* id, int index) {
    auto* const box = window.findChild<QComboBox*>(QString::fromLatin1(id));
    box->setCurrentIndex(index);
    Q_EMIT box->activated(index);
}

/// Shows the dialog of a new clip, does `act` in it and keeps its picture.
bool Take(const corvane::Bundle& bundle, const std::string& path, const std::function<void(QDialog&)>& act) {
    bool saved = false;
    QTimer::singleShot(0, qApp, [&] {
        auto& window = dynamic_cast<QDialog&>(*QApplication::activeModalWidget());
        act(window);
        // The picture shows what has been laid out and painted.
        QTimer::singleShot(0, &window, [&] {
            saved = window.grab().save(QString::fromStdString(path));
            window.reject();
        });
    });
    const corvane::FileJournal journal;
    corvane::PreferencesRequest request;
    request.sequence.rate = {30000, 1001};
    corvane::RequestPreferences(bundle, request, journal);
    std::printf("%s%s\n", path.c_str(), saved ? "" : ": not saved");
    return saved;
}

} // namespace

int main(int, char** arguments) {
    corvane::KeepStandardStreamsOpen();
    const std::string folder = arguments[1];
    corvane::desktop::QtPlatform platform({});
    const corvane::ScopedPlatform scope(platform);
    const corvane::Bundle bundle(corvane::Bundle::Find());
    const bool taken =
        Take(bundle, folder + "/dialog-progressive.png",
             [](QDialog& window) {
                 Choose(window, "fieldTypePopupID", 0);
                 Choose(window, "colorRenderingTypePopupID", 1);
                 Choose(window, "colorRenderingTypePopupID", 0); // titles the buttons for one field
             }) &&
        Take(bundle, folder + "/dialog-interlaced.png",
             [](QDialog& window) { Choose(window, "fieldTypePopupID", 1); }) &&
        Take(bundle, folder + "/dialog-gradient.png", [](QDialog& window) {
            Choose(window, "colorRenderingTypePopupID", 1);
            Choose(window, "chooseColorPopupID", 2);
        });
    return taken ? 0 : 1;
}
