// Takes the pictures of the windows that the documentation shows, worked as a person works them.
//   desktop_screenshots FOLDER SAMPLES CLIPS VIDEO     CLIPS is a folder to put copies of the samples into;
//   it is on the pictures. VIDEO is one of pal-upper-first.synthex with something wrong in it
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "Desktop/Comparison/ComparisonWindow.h"
#include "Desktop/Exports/ExportPanel.h"
#include "Desktop/Window/Appearance.h"
#include "Desktop/Window/MainWindow.h"
#include "Services/Foundation/StandardStreams.h"

namespace {

using namespace corvane::desktop;

constexpr QSize kSize(1180, 700);

void WaitFor(const std::function<bool()>& done) {
    QTimer wake;
    wake.start(std::chrono::milliseconds(20));
    while (!done()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// Keeps a picture of what has been laid out and painted.
void Keep(QWidget& widget, const QString& folder, const char* name) {
    QApplication::processEvents();
    const QString path = folder + QLatin1Char('/') + QLatin1StringView(name);
    if (!widget.grab().save(path)) std::exit(1);
    std::printf("%s\n", qPrintable(path));
}

QAction& Action(MainWindow& window, const char* text) {
    for (QAction* const action : window.findChildren<QAction*>())
        if (action->text().remove(u'&').remove(u'…') == QLatin1StringView(text)) return *action;
    throw std::runtime_error(text);
}

class Session {
  public:
    Session(QtPlatform& platform, QString pictures)
        : mPictures(std::move(pictures)),
          mWindow(platform, std::make_shared<corvane::Bundle>(corvane::Bundle::Find()),
                  {.autosaveFolder = (mFolder.path() + "/unsaved").toStdString(), .version = {}}) {
        mWindow.show();
        mWindow.resize(kSize);
    }
    ~Session() { mWindow.PrepareToEnd(); }

    void Open(const QStringList& files) {
        mWindow.OpenFiles(files);
        WaitFor([this] {
            for (int row = 0; row < Model().rowCount(); ++row)
                if (Model().LoadedAt(row) == nullptr) return false;
            return true;
        });
    }

    /// Shows a frame of a row's clip.
    void Show(int row, std::int64_t frame) {
        auto& viewer = *mWindow.findChild<Viewer*>();
        Bin().Choose(Model().IdAt(row));
        bool shown = false;
        QObject::connect(&viewer, &Viewer::FrameShown, &viewer, [&](qint64 now) { shown |= now == frame; });
        viewer.SetCurrentFrame(frame);
        WaitFor([&] { return shown; });
        viewer.disconnect(&viewer);
    }

    /// Exports the current clip as the dialog proposes it.
    void Export(const char* picture) {
        QTimer::singleShot(0, qApp, [&] {
            auto& dialog = dynamic_cast<QDialog&>(*QApplication::activeModalWidget());
            if (picture != nullptr) Keep(dialog, mPictures, picture);
            dialog.accept();
        });
        Action(mWindow, "Export").trigger();
    }

    void KeepWindow(const char* picture) { Keep(mWindow, mPictures, picture); }
    BinModel& Model() { return dynamic_cast<BinModel&>(*Bin().model()); }
    BinView& Bin() { return *mWindow.findChild<BinView*>(); }
    MainWindow& Window() { return mWindow; }

  private:
    const QTemporaryDir mFolder;
    const QString mPictures;
    MainWindow mWindow;
};

/// Compares a clip with a video, and shows what was found first.
void TakeComparison(const QString& folder, const std::filesystem::path& clip,
                    const std::filesystem::path& video) {
    const auto bundle = std::make_shared<corvane::Bundle>(corvane::Bundle::Find());
    ComparisonWindow window(corvane::Clip::OpenFile(bundle, clip), QString::fromStdString(clip.stem()), video,
                            nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    bool done = false;
    QObject::connect(&window, &ComparisonWindow::Done, &window, [&] { done = true; });
    window.show();
    const auto& pictures = *window.findChild<ComparedPictures*>();
    WaitFor([&] { return done && !pictures.accessibleDescription().isEmpty(); });
    Keep(window, folder, "desktop-compare.png");
}

/// A file that is no settings file, and one whose clip has no rate.
QStringList BadFiles(const QString& folder) {
    const std::filesystem::path path = folder.toStdString();
    std::ofstream(path / "no-rate.synthex") << R"({"mVideoFrameRate":{"ticksperframe":0}})";
    std::ofstream(path / "notes.synthex") << "to do";
    return {folder + "/no-rate.synthex", folder + "/notes.synthex"};
}

void TakeAll(Session& session, const QStringList& samples, const QStringList& bad) {
    session.Open(samples);
    session.Show(4, 42);
    session.KeepWindow("desktop.png");
    session.Export("desktop-export.png");
    session.Show(3, 100);
    session.Export(nullptr);
    auto& panel = *session.Window().findChild<ExportPanel*>();
    WaitFor([&] { return !panel.HasUnfinishedJobs(); });
    session.KeepWindow("desktop-exports.png");
    session.Window().findChild<QDockWidget*>(QStringLiteral("exports"))->hide();
    session.Open(bad);
    ApplyAppearance(Appearance::kDark);
    session.Bin().Choose(session.Model().IdAt(session.Model().rowCount() - 1));
    session.KeepWindow("desktop-problems.png");
}

} // namespace

int main(int, char** arguments) {
    corvane::KeepStandardStreamsOpen();
    QtPlatform platform({});
    const corvane::ScopedPlatform scope(platform);
    const QDir samples(QString::fromLocal8Bit(arguments[2])), clips(QString::fromLocal8Bit(arguments[3]));
    QStringList files;
    for (const QString& name : samples.entryList({QStringLiteral("*.synthex")}, QDir::Files, QDir::Name)) {
        QFile::copy(samples.filePath(name), clips.filePath(name));
        files << clips.filePath(name);
    }
    const QString pictures = QString::fromLocal8Bit(arguments[1]);
    TakeComparison(pictures, clips.filePath(QStringLiteral("pal-upper-first.synthex")).toStdString(),
                   arguments[4]);
    Session session(platform, pictures);
    TakeAll(session, files, BadFiles(clips.path()));
}
