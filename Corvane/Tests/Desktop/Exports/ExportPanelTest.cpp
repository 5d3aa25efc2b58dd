// Faults sought: options other than what was entered, files replaced without a question, a failed job without
// its reason, files left by cancelled jobs, a window that is closed while a job runs.
#include "Desktop/Exports/ExportPanel.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

#include "Desktop/Exports/ExportDialog.h"
#include "Desktop/Exports/ExportRow.h"
#include "Tests/Desktop/DesktopFixture.h"
#include "Tests/Export/Picture/TestFrames.h"
#include "Tests/Export/TestClips.h"

namespace {

namespace fs = std::filesystem;
using namespace corvane::desktop;
using corvane::testing::Settings;

constexpr int kEndless = 1000000;

class ExportPanelTest : public testing::Test {
  protected:
    ExportPanelTest() {
        Platform();
        panel = std::make_unique<ExportPanel>(corvane::testing::LoadBundle());
        finished = std::make_unique<QSignalSpy>(panel.get(), &ExportPanel::JobFinished);
        panel->show();
    }
    void Add(const char* output, int frames, std::uint32_t width = 64) {
        const Settings settings{.width = width, .height = 48, .frames = frames};
        corvane::ExportJob job{output, {{}, corvane::testing::TextOf(settings)}, {}};
        job.options.output = folder / output;
        panel->AddJob(job);
    }
    void WaitForFinished(int count) {
        while (finished->count() < count) ASSERT_TRUE(finished->wait(60000));
    }
    ExportRow& Row(qsizetype index) { return *panel->findChildren<ExportRow*>()[index]; }
    QString State(qsizetype index) { return Find<QLabel>(Row(index), "exportState").text(); }

    corvane::testing::TestFolder folder;
    std::unique_ptr<ExportPanel> panel;
    std::unique_ptr<QSignalSpy> finished;
};

/// Takes the place of the program that shows folders.
class FolderOpener : public QObject {
    Q_OBJECT
  public:
    FolderOpener() { QDesktopServices::setUrlHandler("file", this, "Open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler("file"); }
    Q_SLOT void Open(const QUrl& url) { opened << url.toLocalFile(); }
    QStringList opened;
};

TEST_F(ExportPanelTest, TellsWhatBecameOfEachJobAndShowsItsFolder) {
    FolderOpener opener;
    fs::create_directory(folder / "50% a#b");
    const QString path = QString::fromStdString(folder / "50% a#b");
    Add("50% a#b/good.mkv", 5);
    Add("odd.mp4", 5, 47);
    WaitForFinished(2);
    EXPECT_EQ(finished->at(1).at(0), "odd.mp4");
    EXPECT_FALSE(panel->HasUnfinishedJobs());
    EXPECT_TRUE(State(0).startsWith("Done: 5 frames, "));
    EXPECT_TRUE(State(1).startsWith("Failed: libx264 can't encode frames of 47x48"));
    Find<QToolButton>(Row(1), "exportCopy").click();
    EXPECT_TRUE(QApplication::clipboard()->text().contains("odd.mp4: libx264"));
    Find<QToolButton>(Row(0), "exportShow").click();
    fs::remove_all(folder / "50% a#b");
    Find<QToolButton>(Row(0), "exportShow").click();
    EXPECT_EQ(opener.opened, QStringList(path)); // the second time it was gone
    EXPECT_TRUE(State(0).contains(path));
    Find<QToolButton>(Row(1), "exportRemove").click();
    Find<QPushButton>(*panel, "exportClear").click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(panel->findChild<ExportRow*>(), nullptr);
}

TEST_F(ExportPanelTest, CancelsOneJobAndAllAndLeavesNoFile) {
    QSignalSpy counts(panel.get(), &ExportPanel::UnfinishedJobsChanged);
    for (const char* const name : {"a.mp4", "b.mp4", "c.mp4"}) Add(name, kEndless);
    ASSERT_TRUE(QTest::qWaitFor([&] { return State(0).endsWith(" left"); }, 60000));
    QTest::keyClick(&Find<QToolButton>(Row(1), "exportCancel"), Qt::Key_Space);
    WaitForFinished(1);
    EXPECT_EQ(finished->at(0).at(0), "b.mp4");
    Find<QPushButton>(*panel, "exportCancelAll").click();
    WaitForFinished(3);
    EXPECT_EQ(counts.last().at(0), 0);
    Add("d.y4m", kEndless); // and one that runs when the window closes
    EXPECT_TRUE(panel->IsTaken(folder / "d.y4m"));
    panel.reset();
    EXPECT_TRUE(folder.Names().empty());
}

class ExportDialogTest : public testing::Test {
  protected:
    ExportDialogTest() {
        Platform();
        QSettings().remove("Export");
    }
    void Open(const Settings& settings = {.width = 64, .height = 48}) {
        const auto clip = corvane::testing::MakeClip(settings);
        const auto isTaken = [this](const fs::path& path) { return path == folder / "taken.mp4"; };
        const ExportPlace place{QString::fromStdString(folder.Path()), 3, isTaken};
        dialog = std::make_unique<ExportDialog>(*clip, "My clip", place, nullptr);
        dialog->show();
    }
    template <class Widget>
    Widget& Get(const char* name) {
        return Find<Widget>(*dialog, name);
    }
    void Choose(const char* id) {
        Get<QComboBox>("exportKind").setCurrentText(corvane::FindExportChoice(id)->label);
    }
    /// Presses Export and answers the question, if there is one. Tells whether there was one.
    bool Start(QMessageBox::StandardButton answer = QMessageBox::No) {
        bool asked = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                asked = true;
                box->button(answer)->click();
            }
        });
        timer.start(0);
        Get<QPushButton>("exportStart").click();
        return asked;
    }
    /// Presses Export, which asks nothing and gives the frames to this file of the folder.
    void ExpectExport(const char* name, std::optional<std::int64_t> frame) {
        EXPECT_FALSE(Start());
        EXPECT_EQ(dialog->Options().output, folder / name);
        EXPECT_EQ(dialog->Options().frames, frame ? std::optional(std::pair(*frame, *frame)) : std::nullopt);
    }

    corvane::testing::TestFolder folder;
    std::unique_ptr<ExportDialog> dialog;
};

TEST_F(ExportDialogTest, GivesWhatWasEnteredAndProposesItTheNextTime) {
    Open();
    Get<QSpinBox>("exportQuality").setValue(30);
    Get<QComboBox>("exportPreset").setCurrentText("ultrafast");
    ExpectExport("My clip.mp4", {});
    EXPECT_EQ(dialog->Options().codec, "h264:preset=ultrafast:crf=30");
    Open();
    Choose("png-picture");
    ExpectExport("My clip.png", 3);
    Open();
    EXPECT_EQ(Get<QComboBox>("exportKind").currentText(), "Single PNG (one frame)");
    EXPECT_EQ(Get<QSpinBox>("exportQuality").value(), 30);
    Choose("png-pictures");
    Get<QCheckBox>("exportWhole").setChecked(false);
    Get<QSpinBox>("exportLast").setValue(3);
    Get<QSpinBox>("exportFirst").setValue(4); // takes the last frame with it
    ExpectExport("My clip.%05d.png", 4);
}

TEST_F(ExportDialogTest, WhatDoesNotFitCanNotBeChosenAndSaysWhy) {
    Open({.width = 47, .height = 33, .alpha = 0.5});
    auto& kinds = Get<QComboBox>("exportKind");
    const QStandardItem& movie = *qobject_cast<QStandardItemModel*>(kinds.model())->item(0);
    EXPECT_FALSE(movie.isEnabled());
    EXPECT_TRUE(movie.toolTip().contains("multiple of 2"));
    EXPECT_TRUE(Get<QLabel>("exportUnfit").text().contains("MP4, H.264"));
    EXPECT_EQ(kinds.currentText(), "MOV, ProRes 422 HQ");
    EXPECT_TRUE(Get<QLabel>("exportAbout").text().contains("alpha is dropped"));
    Open({.width = 47, .height = 33, .frames = 0});
    EXPECT_FALSE(Get<QLabel>("exportAbout").text().contains("alpha is dropped")) << "opaque";
    EXPECT_FALSE(Get<QPushButton>("exportStart").isEnabled());
    EXPECT_TRUE(Get<QLabel>("exportUnfit").text().contains("no duration"));
}

TEST_F(ExportDialogTest, AsksBeforeAnythingIsReplacedAndRefusesWhatCanNotBe) {
    for (const char* const name : {"old.mp4", "old.00002.png"}) folder.Write(name, "old");
    struct {
        const char* kind;
        fs::path typed;
        int first;
        bool asks;
        const char* complaint = "";
    } const rows[] = {{"mp4-h264", folder / "old", 0, true},
                      {"png-pictures", folder / "old.png", 2, true},
                      {"png-pictures", folder / "old.png", 3, false},
                      {"mkv-h264", folder / "old", 0, false},
                      {"mp4-h264", "", 0, false, "Name the file"},
                      {"mp4-h264", folder.Path(), 0, false, "Name the file"},
                      {"png-pictures", folder / "50%.png", 0, false, "50%.png"},
                      {"mp4-h264", folder / "none/a.mp4", 0, false, "no folder"},
                      {"mp4-h264", folder / "taken.mp4", 0, false, "Another export"}};
    for (const auto& row : rows)
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            SCOPED_TRACE(row.typed);
            Open();
            Choose(row.kind);
            Get<QCheckBox>("exportWhole").setChecked(false);
            Get<QSpinBox>("exportFirst").setValue(row.first);
            Get<QLineEdit>("exportPath").setText(QString::fromStdString(row.typed));
            EXPECT_EQ(Start(answer), row.asks);
            const bool accepts = *row.complaint == '\0' && (!row.asks || answer == QMessageBox::Yes);
            EXPECT_EQ(dialog->result() == QDialog::Accepted, accepts);
            EXPECT_TRUE(Get<QLabel>("exportComplaint").text().contains(row.complaint));
        }
}

} // namespace

#include "ExportPanelTest.moc"
