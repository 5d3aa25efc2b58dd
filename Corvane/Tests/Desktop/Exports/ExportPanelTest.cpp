// Faults sought: options other than what was entered, files replaced without a question, a failed job without
// its reason, files left by cancelled jobs, a window that is closed while a job runs.
#include "Desktop/Exports/ExportPanel.h"

#include <fstream>

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
using corvane::ExportJob;
using corvane::desktop::ExportDialog;
using corvane::desktop::ExportPanel;
using corvane::desktop::ExportRow;
using corvane::testing::Settings;
using corvane::testing::TestFolder;

constexpr Settings kEndless{.width = 64, .height = 48, .frames = 1000000};

class ExportPanelTest : public testing::Test {
  protected:
    ExportPanelTest() {
        Platform();
        panel = std::make_unique<ExportPanel>(corvane::testing::LoadBundle());
        finished = std::make_unique<QSignalSpy>(panel.get(), &ExportPanel::JobFinished);
        panel->show();
    }
    void Add(const char* output, const Settings& settings) {
        ExportJob job{output, {{}, corvane::testing::TextOf(settings)}, {}};
        job.options.output = folder / output;
        panel->AddJob(job);
    }
    void WaitForFinished(int count) {
        while (finished->count() < count) ASSERT_TRUE(finished->wait(60000));
    }
    QList<ExportRow*> Rows() { return panel->findChildren<ExportRow*>(); }
    static QString StateOf(ExportRow& row) { return Find<QLabel>(row, "exportState").text(); }

    TestFolder folder;
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
    Add("50% a#b/good.mkv", {.width = 64, .height = 48});
    Add("odd.mp4", {.width = 47, .height = 33});
    WaitForFinished(2);
    EXPECT_EQ(finished->at(1).at(0), "odd.mp4");
    EXPECT_FALSE(panel->HasUnfinishedJobs());
    auto &good = *Rows()[0], &odd = *Rows()[1];
    EXPECT_TRUE(StateOf(good).startsWith("Done: 5 frames, "));
    EXPECT_TRUE(StateOf(odd).startsWith("Failed: libx264 can't encode frames of 47x33"));
    Find<QToolButton>(odd, "exportCopy").click();
    EXPECT_TRUE(QApplication::clipboard()->text().contains("odd.mp4: libx264"));
    Find<QToolButton>(good, "exportShow").click();
    fs::remove_all(folder / "50% a#b");
    Find<QToolButton>(good, "exportShow").click();
    EXPECT_EQ(opener.opened, QStringList(path)); // the second time it was gone
    EXPECT_TRUE(StateOf(good).contains(path));
    Find<QToolButton>(odd, "exportRemove").click();
    Find<QPushButton>(*panel, "exportClear").click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(Rows().empty());
}

TEST_F(ExportPanelTest, CancelsOneJobAndAllAndLeavesNoFile) {
    QSignalSpy counts(panel.get(), &ExportPanel::UnfinishedJobsChanged);
    for (const char* const name : {"a.mp4", "b.mp4", "c.mp4"}) Add(name, kEndless);
    ASSERT_TRUE(QTest::qWaitFor([&] { return StateOf(*Rows()[0]).endsWith(" left"); }, 60000));
    QTest::keyClick(&Find<QToolButton>(*Rows()[1], "exportCancel"), Qt::Key_Space);
    WaitForFinished(1);
    EXPECT_EQ(finished->at(0).at(0), "b.mp4");
    EXPECT_TRUE(panel->IsTaken(folder / "c.mp4"));
    Find<QPushButton>(*panel, "exportCancelAll").click();
    WaitForFinished(3);
    EXPECT_EQ(counts.last().at(0), 0);
    Add("d.y4m", kEndless); // and one that runs when the window closes
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
        dialog = std::make_unique<ExportDialog>(
            *corvane::testing::MakeClip(settings), "My clip",
            corvane::desktop::ExportPlace{
                QString::fromStdString(folder.Path()), 3,
                [this](const fs::path& path) { return path == folder / "taken.mp4"; }},
            nullptr);
        dialog->show();
    }
    void Choose(const char* id) {
        const auto choices = corvane::ExportChoices();
        Find<QComboBox>(*dialog, "exportKind")
            .setCurrentIndex(static_cast<int>(corvane::FindExportChoice(id) - choices.data()));
    }
    /// Presses Export and answers the question, where there is one. Tells whether there was one.
    bool Start(QMessageBox::StandardButton answer) {
        bool asked = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                asked = true;
                box->button(answer)->click();
            }
        });
        timer.start(0);
        Find<QPushButton>(*dialog, "exportStart").click();
        return asked;
    }

    TestFolder folder;
    std::unique_ptr<ExportDialog> dialog;
};

TEST_F(ExportDialogTest, GivesWhatWasEnteredAndProposesItTheNextTime) {
    Open();
    Find<QSpinBox>(*dialog, "exportQuality").setValue(30);
    Find<QComboBox>(*dialog, "exportPreset").setCurrentText("ultrafast");
    EXPECT_FALSE(Start(QMessageBox::No));
    EXPECT_EQ(dialog->Options().output, folder / "My clip.mp4");
    EXPECT_EQ(dialog->Options().codec, "h264:preset=ultrafast:crf=30");
    EXPECT_EQ(dialog->Options().frames, std::nullopt);
    Open();
    Choose("png-picture");
    EXPECT_FALSE(Start(QMessageBox::No));
    EXPECT_EQ(dialog->Options().output, folder / "My clip.png");
    EXPECT_EQ(dialog->Options().frames, std::pair(std::int64_t{3}, std::int64_t{3}));
    Open();
    EXPECT_EQ(Find<QComboBox>(*dialog, "exportKind").currentText(), "Single PNG (one frame)");
    EXPECT_EQ(Find<QSpinBox>(*dialog, "exportQuality").value(), 30);
    Choose("png-pictures");
    Find<QCheckBox>(*dialog, "exportWhole").setChecked(false);
    Find<QSpinBox>(*dialog, "exportLast").setValue(3);
    Find<QSpinBox>(*dialog, "exportFirst").setValue(4); // takes the last frame with it
    EXPECT_FALSE(Start(QMessageBox::No));
    EXPECT_EQ(dialog->Options().output, folder / "My clip.%05d.png");
    EXPECT_EQ(dialog->Options().frames, std::pair(std::int64_t{4}, std::int64_t{4}));
}

TEST_F(ExportDialogTest, WhatDoesNotFitCanNotBeChosenAndSaysWhy) {
    Open({.width = 47, .height = 33});
    auto& kinds = Find<QComboBox>(*dialog, "exportKind");
    const QStandardItem& movie = *qobject_cast<QStandardItemModel*>(kinds.model())->item(0);
    EXPECT_FALSE(movie.isEnabled());
    EXPECT_TRUE(movie.toolTip().contains("multiple of 2"));
    EXPECT_TRUE(Find<QLabel>(*dialog, "exportUnfit").text().contains("MP4, H.264"));
    EXPECT_EQ(kinds.currentText(), "MOV, ProRes 422 HQ");
    EXPECT_TRUE(Find<QLabel>(*dialog, "exportAbout").text().contains("alpha is dropped"));
    Open({.width = 47, .height = 33, .frames = 0});
    EXPECT_FALSE(Find<QPushButton>(*dialog, "exportStart").isEnabled());
    EXPECT_TRUE(Find<QLabel>(*dialog, "exportUnfit").text().contains("no duration"));
}

TEST_F(ExportDialogTest, AsksBeforeAnythingIsReplacedAndRefusesWhatCanNotBe) {
    for (const char* const name : {"old.mp4", "old.00002.png"}) std::ofstream(folder / name) << "old";
    struct Row {
        const char* kind;
        fs::path typed;
        int first;
        bool asks;
        const char* complaint = "";
    };
    const Row rows[] = {{"mp4-h264", folder / "old", 0, true},
                        {"png-pictures", folder / "old.png", 2, true},
                        {"png-pictures", folder / "old.png", 3, false},
                        {"mkv-h264", folder / "old", 0, false},
                        {"mp4-h264", "", 0, false, "Name the file"},
                        {"mp4-h264", folder.Path(), 0, false, "Name the file"},
                        {"mp4-h264", folder / "none/a.mp4", 0, false, "no folder"},
                        {"mp4-h264", folder / "taken.mp4", 0, false, "Another export"}};
    for (const Row& row : rows)
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            SCOPED_TRACE(row.typed);
            Open();
            Choose(row.kind);
            Find<QCheckBox>(*dialog, "exportWhole").setChecked(false);
            Find<QSpinBox>(*dialog, "exportFirst").setValue(row.first);
            Find<QLineEdit>(*dialog, "exportPath").setText(QString::fromStdString(row.typed));
            EXPECT_EQ(Start(answer), row.asks);
            const bool accepts = *row.complaint == '\0' && (!row.asks || answer == QMessageBox::Yes);
            EXPECT_EQ(dialog->result() == QDialog::Accepted, accepts);
            EXPECT_TRUE(Find<QLabel>(*dialog, "exportComplaint").text().contains(row.complaint));
        }
}

} // namespace

#include "ExportPanelTest.moc"
