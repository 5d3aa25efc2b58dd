// The desktop's bin with a thousand clips: how long the UI thread is held while a person scrolls, with the
// thumbnails still in the making and after.
//   bin_benchmark [CLIPS]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "Desktop/Toolkit/QtPlatform.h"
#include "Desktop/Window/MainWindow.h"

namespace {

namespace fs = std::filesystem;

/// Clips of all kinds: the samples' settings under many names.
QStringList MakeFiles(const fs::path& folder, int count) {
    std::vector<fs::path> samples;
    for (const auto& entry : fs::directory_iterator(SYNTHEX_SOURCE_DIR "/Samples"))
        if (entry.path().extension() == ".synthex") samples.push_back(entry.path());
    std::ranges::sort(samples);
    QStringList files;
    for (int i = 0; i < count; ++i) {
        const fs::path file = folder / ("clip" + std::to_string(i) + ".synthex");
        fs::copy_file(samples[static_cast<std::size_t>(i) % samples.size()], file);
        files << QString::fromStdString(file.string());
    }
    return files;
}

/// Scrolls through the bin and prints what each step took until all that it caused was painted.
void Scroll(corvane::desktop::BinView& bin, const char* when) {
    QScrollBar& bar = *bin.verticalScrollBar();
    std::vector<double> times;
    const int step = std::max(1, bar.pageStep() / 4);
    for (int value = 0; value <= bar.maximum(); value += step) {
        QElapsedTimer timer;
        timer.start();
        bar.setValue(value);
        QApplication::processEvents();
        times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    std::ranges::sort(times);
    const auto slow = std::ranges::count_if(times, [](double time) { return time > 50; });
    std::printf("%-34s %5zu steps   median %6.2f ms   worst %6.2f ms   over 50 ms: %td\n", when, times.size(),
                times[times.size() / 2], times.back(), slow);
}

} // namespace

int main(int argc, char** argv) {
    using namespace corvane::desktop;
    const int count = argc > 1 ? std::atoi(argv[1]) : 1000;
    QtPlatform platform({});
    QStandardPaths::setTestModeEnabled(true); // not among the person's own settings
    const corvane::ScopedPlatform scope(platform);
    const QTemporaryDir folder;
    const fs::path root = folder.path().toStdString();
    const QStringList files = MakeFiles(root, count);
    MainWindow window(platform, std::make_shared<corvane::Bundle>(corvane::Bundle::Find()),
                      {.autosaveFolder = root / "unsaved", .version = {}});
    window.show();
    QApplication::processEvents();
    auto& bin = *window.findChild<BinView*>();
    auto& model = dynamic_cast<BinModel&>(*bin.model());

    QElapsedTimer timer;
    timer.start();
    window.OpenFiles(files);
    std::printf("%-34s %6.0f ms for %d clips\n", "opened", static_cast<double>(timer.elapsed()), count);
    Scroll(bin, "scroll, thumbnails in the making");
    const auto waits = [&] {
        for (int row = 0; row < model.rowCount(); ++row)
            if (model.LoadedAt(row) == nullptr) return true;
        return false;
    };
    while (waits()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    std::printf("%-34s %6.0f ms\n", "all thumbnails", static_cast<double>(timer.elapsed()));
    Scroll(bin, "scroll, all there");
    window.PrepareToEnd();
}
