// Faults sought: options other than what was entered, files replaced without a question, a failed job without
// its reason, files left by cancelled jobs, a window that is closed while a job runs.
#include "Desktop/ExportPanel.h"

#include <fstream>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <gmock/gmock.h>

#include "../Export/TestClips.h"
#include "../Export/TestFrames.h"
#include "Desktop/ExportDialog.h"
#include "Desktop/ExportRow.h"
#include "DesktopFixture.h"

namespace {

namespace fs = std::filesystem;
using corvane::ExportJob;
using corvane::ExportState;
using corvane::desktop::ExportDialog;
using corvane::desktop::ExportPanel;
using corvane::testing::Settings;
using corvane::testing::TestFolder;
using testing::ElementsAre;

constexpr Settings kSmall{.width = 64, .height = 48};
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
    std::vector<corvane::desktop::ExportRow*> Rows() {
        const auto rows = panel->findChildren<corvane::desktop::ExportRow*>();
        return {rows.begin(), rows.end()};
    }

    TestFolder folder;
    std::unique_ptr<ExportPanel> panel;
    std::unique_ptr<QSignalSpy> finished;
};

TEST_F(ExportPanelTest, TellsWhatBecameOfEachJob) {
    Add("good.mkv", kSmall);
    Add("odd.mp4", {.width = 47, .height = 33});
    EXPECT_TRUE(panel->HasUnfinishedJobs());
    WaitForFinished(2);
    EXPECT_EQ(finished->at(1).at(0), "odd.mp4");
    EXPECT_FALSE(panel->HasUnfinishedJobs());
    const auto rows = Rows();
    EXPECT_TRUE(Find<QLabel>(*rows[0], "exportState").text().startsWith("Done: 5 frames, "));
    EXPECT_TRUE(Find<QLabel>(*rows[1], "exportState")
                    .text()
                    .startsWith("Failed: libx264 can't encode frames of 47x33"));
    Find<QToolButton>(*rows[1], "exportCopy").click();
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith(QString::fromStdString(folder / "odd.mp4") +
                                                             ": libx264"));
    EXPECT_FALSE(Find<QToolButton>(*rows[1], "exportShow").isVisible());
    Find<QToolButton>(*rows[1], "exportRemove").click();
    Find<QPushButton>(*panel, "exportClear").click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(Rows().empty());
    EXPECT_THAT(folder.Names(), ElementsAre("good.mkv"));
}

/// Takes the place of the program that shows folders.
class FolderOpener : public QObject {
    Q_OBJECT
  public:
    FolderOpener() { QDesktopServices::setUrlHandler("file", this, "Open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler("file"); }
    Q_SLOT void Open(const QUrl& url) { opened << url.toLocalFile(); }
    QStringList opened;
};

TEST_F(ExportPanelTest, ShowsTheFolderOrSaysWhereItWas) {
    FolderOpener opener;
    fs::create_directory(folder / "50% a#b");
    Add("50% a#b/good.y4m", kSmall);
    WaitForFinished(1);
    const QString path = QString::fromStdString(folder / "50% a#b");
    Find<QToolButton>(*panel, "exportShow").click();
    EXPECT_EQ(opener.opened, QStringList(path));
    fs::remove_all(folder / "50% a#b");
    Find<QToolButton>(*panel, "exportShow").click();
    EXPECT_EQ(opener.opened.size(), 1);
    EXPECT_TRUE(Find<QLabel>(*panel, "exportState").text().contains(path));
}

TEST_F(ExportPanelTest, CancelsOneJobAndAllAndLeavesNoFile) {
    QSignalSpy counts(panel.get(), &ExportPanel::UnfinishedJobsChanged);
    for (const char* const name : {"a.mp4", "b.mp4", "c.mp4"}) Add(name, kEndless);
    const auto& bar = Find<QProgressBar>(*Rows()[0], "exportProgress");
    const auto& state = Find<QLabel>(*Rows()[0], "exportState");
    ASSERT_TRUE(QTest::qWaitFor([&] { return state.text().endsWith(" left"); }, 60000));
    EXPECT_TRUE(bar.isVisible());
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
    ExportDialog& Open(const Settings& settings = kSmall) {
        const auto clip = corvane::testing::MakeClip(settings);
        dialog = std::make_unique<ExportDialog>(
            *clip, "My clip",
            corvane::desktop::ExportPlace{
                QString::fromStdString(folder.Path()), 3,
                [this](const fs::path& path) { return path == folder / "taken.mp4"; }},
            nullptr);
        dialog->show();
        return *dialog;
    }
    void Choose(const char* id) {
        const auto choices = corvane::ExportChoices();
        Find<QComboBox>(*dialog, "exportKind")
            .setCurrentIndex(static_cast<int>(corvane::FindExportChoice(id) - choices.data()));
    }
    void Type(const fs::path& path) {
        Find<QLineEdit>(*dialog, "exportPath").setText(QString::fromStdString(path));
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

TEST_F(ExportDialogTest, AsksBeforeAnythingIsReplaced) {
    for (const char* const name : {"old.mp4", "old.00002.png"}) std::ofstream(folder / name) << "old";
    struct Row {
        const char* kind;
        const char* typed;
        int first;
        bool asks;
    };
    for (const Row& row : {Row{"mp4-h264", "old", 0, true}, Row{"png-pictures", "old.png", 2, true},
                           Row{"png-pictures", "old.png", 3, false}, Row{"mkv-h264", "old", 0, false}})
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            Open();
            Choose(row.kind);
            Find<QCheckBox>(*dialog, "exportWhole").setChecked(false);
            Find<QSpinBox>(*dialog, "exportFirst").setValue(row.first);
            Type(folder / row.typed);
            EXPECT_EQ(Start(answer), row.asks) << row.kind << row.first;
            EXPECT_EQ(dialog->result() == QDialog::Accepted, !row.asks || answer == QMessageBox::Yes)
                << row.kind;
        }
}

TEST_F(ExportDialogTest, DestinationsThatCanNotBeAreRefusedInASentence) {
    const std::pair<fs::path, const char*> rows[] = {{"", "Name the file"},
                                                     {folder.Path(), "Name the file"},
                                                     {folder / "none/a.mp4", "no folder"},
                                                     {folder / "taken.mp4", "Another export"}};
    Open();
    for (const auto& [typed, sentence] : rows) {
        Type(typed);
        EXPECT_FALSE(Start(QMessageBox::Yes));
        EXPECT_TRUE(dialog->isVisible()) << typed;
        EXPECT_TRUE(Find<QLabel>(*dialog, "exportComplaint").isVisible()) << typed;
        EXPECT_TRUE(Find<QLabel>(*dialog, "exportComplaint").text().contains(sentence)) << typed;
    }
}

} // namespace

#include "ExportPanelTest.moc"
