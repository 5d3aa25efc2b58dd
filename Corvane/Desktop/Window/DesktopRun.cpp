#include "DesktopRun.h"

#include <array>
#include <csignal>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include <QIcon>
#include <QSocketNotifier>
#include <QTimer>

#include "Appearance.h"
#include "Desktop/Toolkit/QtPlatform.h"
#include "Desktop/Toolkit/Text.h"
#include "MainWindow.h"

/// The resources of a static library must be named to be linked; Qt wants that outside of namespaces.
static void LoadResources() {
    Q_INIT_RESOURCE(synthex);
}

namespace corvane::desktop {

namespace {

/// The writing end of the pipe that tells the event loop of signals.
int gSignalPipe = -1;

void OnEndingSignal(int number) {
    const auto byte = static_cast<char>(number);
    [[maybe_unused]] const ssize_t written = ::write(gSignalPipe, &byte, 1);
}

/// Turns the signals that end a program into calls of `end`, which may do what a signal handler may not.
class EndingSignals {
  public:
    explicit EndingSignals(const std::function<void(int)>& end) {
        if (::pipe2(mPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
        gSignalPipe = mPipe[1];
        mNotifier = std::make_unique<QSocketNotifier>(mPipe[0], QSocketNotifier::Read);
        QObject::connect(mNotifier.get(), &QSocketNotifier::activated, qApp, [this, end] {
            char number = 0;
            if (::read(mPipe[0], &number, 1) == 1) end(number);
        });
        struct sigaction action {};
        action.sa_handler = &OnEndingSignal;
        action.sa_flags = SA_RESTART;
        ::sigemptyset(&action.sa_mask);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
    }
    ~EndingSignals() {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
        mNotifier.reset();
        for (const int end : mPipe)
            if (end >= 0) ::close(end);
    }
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

  private:
    std::array<int, 2> mPipe{-1, -1};
    std::unique_ptr<QSocketNotifier> mNotifier;
};

} // namespace

int RunDesktop(const DesktopOptions& desktop, const MainWindowOptions& options) {
    // Reaching a limit on file sizes is to be a write error: ending at once would leave a half-written file
    // behind.
    ::signal(SIGXFSZ, SIG_IGN);
    QtPlatform platform(desktop);
    const ScopedPlatform scope(platform);
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(options.bundle));
    LoadResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/synthex.png")));
    ApplyAppearance(StoredAppearance());
    MainWindow window(platform, bundle,
                      {.autosaveFolder = Autosave::DefaultFolder(), .version = options.version});
    const EndingSignals signals([&window](int number) {
        window.PrepareToEnd();
        QApplication::exit(128 + number);
    });
    if (options.once) window.CloseWhenShown();
    window.show();
    QStringList files;
    for (const auto& file : options.files) files << FromPath(file);
    QTimer::singleShot(0, &window, [&window, files] { window.Begin(files); });
    return QApplication::exec();
}

} // namespace corvane::desktop
