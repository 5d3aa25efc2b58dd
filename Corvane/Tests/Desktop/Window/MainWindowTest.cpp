// Faults sought: work that is lost, a step that undo does not take back, one bad clip that spoils the others,
// files that change unnoticed, dialogs without the main window behind them.
#include <csignal>
#include <filesystem>
#include <fstream>

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QSpinBox>
#include <QTest>
#include <gmock/gmock.h>

#include "Desktop/Comparison/ComparisonWindow.h"
#include "Desktop/Exports/ExportPanel.h"
#include "Desktop/Toolkit/NumberField.h"
#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"
#include "Tests/TestFolder.h"
#include "WindowFixture.h"

namespace {

namespace fs = std::filesystem;
using corvane::desktop::BinModel;
using corvane::desktop::ComparisonWindow;
using corvane::desktop::ExportPanel;
using corvane::desktop::NumberField;
using corvane::desktop::Viewer;
using corvane::testing::ReadFile;
using testing::HasSubstr;

void SetWidth(QDialog& dialog, double width) {
    auto& field = Find<NumberField>(dialog, "frameWidthID");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QString::number(width));
    QTest::keyClick(&field, Qt::Key_Tab);
}

/// Presses a button of a question.
std::function<void(QDialog&)> Press(QMessageBox::StandardButton button) {
    return [button](QDialog& dialog) { dynamic_cast<QMessageBox&>(dialog).button(button)->click(); };
}

std::function<void(QDialog&)> SaveAs(const fs::path& file) {
    return [file](QDialog& dialog) {
        auto& edit = Find<QLineEdit>(dialog, "fileNameEdit");
        edit.setText(QString::fromStdString(file.string()));
        QTest::keyClick(&edit, Qt::Key_Return);
    };
}

/// Whether a project that is not saved is kept in the folder.
bool HasUnsaved(const fs::path& folder) {
    if (!fs::exists(folder)) return false;
    return std::ranges::any_of(fs::directory_iterator(folder),
                               [](const auto& entry) { return entry.path().extension() == ".autosave"; });
}

TEST_F(WindowTest, AProjectIsMadeEditedUndoneSavedAndOpenedAgain) {
    Open(Write("file.synthex"));
    WhenShown(Settings([this](QDialog& dialog) {
        EXPECT_EQ(dialog.parentWidget(), mWindow.get());
        SetWidth(dialog, 320);
    }));
    Choose("New Clip");
    WaitForClips();
    ASSERT_EQ(Model().rowCount(), 2);
    EXPECT_EQ(Cell(1, BinModel::kSize), "320 x 1080");
    EXPECT_EQ(Cell(1, BinModel::kSource), "the project");

    WhenShown(Settings([](QDialog& dialog) { SetWidth(dialog, 640); }));
    QTest::keyClick(&Bin(), Qt::Key_Return);
    WaitForClips();
    EXPECT_EQ(Cell(1, BinModel::kSize), "640 x 1080");
    Choose("Duplicate");
    WaitForClips();
    Model().setData(Model().index(2, BinModel::kName), QStringLiteral("Another"), Qt::EditRole);
    EXPECT_TRUE(Find<QLabel>(*mWindow, "viewerTitle").text().startsWith(QStringLiteral("Another ")));
    const corvane::Project whole = Project();
    const fs::path file = Folder() / "it.cvproj";
    WhenShown(SaveAs(file));
    Choose("Save Project");
    EXPECT_FALSE(mWindow->isWindowModified());
    EXPECT_THAT(ReadFile(file), HasSubstr(R"("file": "file.synthex")"));

    // Back to nothing and forth to all of it, over the saved state.
    while (mWindow->GetDocument().GetUndoStack().canUndo()) mWindow->GetDocument().GetUndoStack().undo();
    EXPECT_EQ(Model().rowCount(), 0);
    EXPECT_TRUE(mWindow->isWindowModified());
    while (mWindow->GetDocument().GetUndoStack().canRedo()) mWindow->GetDocument().GetUndoStack().redo();
    EXPECT_TRUE(Project().HoldsSameAs(whole));
    EXPECT_FALSE(mWindow->isWindowModified());

    Restart();
    Open(file);
    EXPECT_TRUE(Project().HoldsSameAs(whole));
    EXPECT_EQ(Cell(1, BinModel::kSize), "640 x 1080");
    EXPECT_EQ(Messages(), "");
}

TEST_F(WindowTest, AFileHoldsWhatItsDialogClosedWithAndUndoPutsItBack) {
    const fs::path file = Write("file.synthex");
    const std::string before = ReadFile(file);
    Open(file);
    WhenShown(Settings([](QDialog& dialog) { SetWidth(dialog, 96); }));
    Choose("Edit Settings");
    WaitUntil([&] { return Cell(0, BinModel::kSize) == "96 x 48"; }, "the edited file");
    EXPECT_THAT(ReadFile(file), HasSubstr(R"("mFrameWidth":96)"));
    Choose("Undo Edit Settings of file");
    WaitUntil([&] { return Cell(0, BinModel::kSize) == "64 x 48"; }, "the file as it was");
    EXPECT_EQ(ReadFile(file), before);
    Write("file.synthex", R"(,"mFrameHeight":20)");
    Choose("Redo Edit Settings of file");
    EXPECT_THAT(Messages(), HasSubstr("changed by another program"));
    EXPECT_THAT(ReadFile(file), HasSubstr(R"("mFrameHeight":20)"));
}

TEST_F(WindowTest, TheSavedFileBecomesTheSource) {
    const fs::path file = Folder() / "saved.synthex";
    WhenShown(Settings([&](QDialog& dialog) {
        WhenShown(SaveAs(file));
        Find<QAbstractButton>(dialog, "saveToPathButtonID").click();
        Find<QCheckBox>(dialog, "useAsCustomImporterID").click();
    }));
    Choose("New Clip");
    WaitForClips();
    ASSERT_EQ(Model().rowCount(), 1);
    EXPECT_EQ(Project().clips[0]->source.file, file);
    EXPECT_EQ(Cell(0, BinModel::kName), "saved");
    EXPECT_TRUE(CanChoose("Show in Folder"));
}

TEST_F(WindowTest, BadClipsSayWhyAndLeaveTheOthersAlone) {
    const struct {
        const char *name, *members, *why;
    } rows[] = {{"rate.synthex", R"(,"mVideoFrameRate":{"ticksperframe":0})", "no frame rate"},
                {"huge.synthex", R"(,"mFrameWidth":40000,"mFrameHeight":40000)", "40000 x 40000"}};
    for (const auto& row : rows) Open(Write(row.name, row.members));
    Open(Write("good.synthex"));
    ASSERT_EQ(Model().rowCount(), 3);
    for (int row = 0; row < 2; ++row) {
        const QString tip = Model().data(Model().index(row, 0), Qt::ToolTipRole).toString();
        EXPECT_THAT(tip.toStdString(), HasSubstr(rows[row].why));
        Bin().Choose(Model().IdAt(row));
        EXPECT_TRUE(CanChoose("Edit Settings")) << "it could not be mended";
        EXPECT_FALSE(CanChoose("Export"));
    }
    EXPECT_TRUE(Model().LoadedAt(2)->problem.isEmpty());
    EXPECT_FALSE(Model().LoadedAt(2)->thumbnail.isNull());
    EXPECT_EQ(Messages(), "");

    std::ofstream(Folder() / "rubbish.synthex") << "{\"mFrameWidth\":";
    mWindow->OpenFiles({mFolder.filePath(QStringLiteral("rubbish.synthex")),
                        mFolder.filePath(QStringLiteral("none.synthex")),
                        mFolder.filePath(QStringLiteral("half.cvproj"))});
    for (const char* const name : {"rubbish.synthex: ", "none.synthex: ", "half.cvproj: "})
        EXPECT_THAT(Messages(), HasSubstr(name));
    EXPECT_EQ(Model().rowCount(), 3);
}

TEST_F(WindowTest, AFileThatChangesIsReadAgainInItsPlace) {
    const fs::path file = Write("file.synthex");
    Open(file);
    for (const int column : {BinModel::kSize, BinModel::kRate, BinModel::kFields, BinModel::kDuration}) {
        const QAbstractItemView& bin = Bin();
        EXPECT_LE(bin.sizeHintForColumn(column), Bin().columnWidth(column)) << Cell(0, column);
    }
    auto& viewer = *mWindow->findChild<Viewer*>();
    viewer.SetCurrentFrame(200);
    const auto waitFor = [&](const char* size) {
        WaitUntil([&] { return Cell(0, BinModel::kSize) == size; }, size);
    };
    Write("file.synthex", R"(,"mFrameWidth":32)"); // in place
    waitFor("32 x 48");
    EXPECT_EQ(viewer.CurrentFrame(), 200);
    fs::rename(Write("other", R"(,"mFrameWidth":16)"), file); // under its name
    waitFor("16 x 48");
    fs::remove(file);
    waitFor("–");
    EXPECT_THAT(Model().LoadedAt(0)->problem.toStdString(), HasSubstr("file.synthex: there is no such file"));
    Write("file.synthex", R"(,"mFrameWidth":8)"); // back again
    waitFor("8 x 48");
    EXPECT_EQ(viewer.CurrentFrame(), 200);
}

TEST_F(WindowTest, UnsavedChangesAreAskedFor) {
    Open(Write("file.synthex"));
    const fs::path unsaved = Folder() / "unsaved";
    WaitUntil([&] { return HasUnsaved(unsaved); }, "what is kept of the changes");
    for (const auto& file : fs::recursive_directory_iterator(unsaved))
        if (file.path().extension() == ".autosave") {
            EXPECT_EQ(file.status().permissions() & fs::perms(077), fs::perms::none) << "others may read it";
        }
    WhenShown(Press(QMessageBox::Cancel));
    EXPECT_FALSE(mWindow->close());
    WhenShown(Press(QMessageBox::Cancel));
    Choose("New Project");
    EXPECT_EQ(Model().rowCount(), 1);
    WhenShown([this](QDialog& question) { // Save, and a file that can't be made
        WhenShown(SaveAs(Folder() / "none" / "it.cvproj"));
        Press(QMessageBox::Save)(question);
    });
    EXPECT_FALSE(mWindow->close());
    EXPECT_EQ(Model().rowCount(), 1);
    WhenShown(Press(QMessageBox::Discard));
    EXPECT_TRUE(mWindow->close());
    EXPECT_TRUE(fs::is_empty(unsaved)) << "what was given up is offered again";
}

TEST_F(WindowTest, WhatAnEndedProgramDidNotSaveIsOffered) {
    const fs::path unsaved = Folder() / "Synthex/synthex/unsaved";
    for (const auto& [end, status] : {std::pair(&QProcess::kill, QProcess::CrashExit),
                                      std::pair(&QProcess::terminate, QProcess::NormalExit)}) {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), mFolder.path());
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(SYNTHEX_BUILD_DIR "/bin/synthex"),
                      {QStringLiteral("desktop"), QString::fromStdString(Write("file.synthex").string())});
        WaitUntil([&] { return HasUnsaved(unsaved); }, "what is kept of a running program");
        corvane::desktop::Document document;
        EXPECT_FALSE(corvane::desktop::Autosave(document, unsaved).TakeLost())
            << "its program is still there";
        (program.*end)();
        program.waitForFinished();
        EXPECT_EQ(program.exitStatus(), status);
        EXPECT_TRUE(status == QProcess::CrashExit || program.exitCode() == 128 + SIGTERM);

        fs::remove_all(Folder() / "unsaved");
        fs::rename(unsaved, Folder() / "unsaved");
        Restart();
        WhenShown([](QDialog& dialog) {
            EXPECT_EQ(dialog.objectName(), QStringLiteral("recover"));
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        mWindow->Begin({});
        WaitForClips();
        ASSERT_EQ(Model().rowCount(), 1);
        EXPECT_EQ(Cell(0, BinModel::kSize), "64 x 48");
        EXPECT_TRUE(mWindow->isWindowModified());
        // It is this program's now, and kept until it is saved.
        std::ignore = mWindow->GetDocument().Save(Folder() / "it.cvproj");
        EXPECT_TRUE(fs::is_empty(Folder() / "unsaved"));
    }
}

TEST_F(WindowTest, ExportsRunBehindTheWindow) {
    Open(Write("file.synthex"));
    std::ignore = mWindow->GetDocument().Save(Folder() / "it.cvproj");
    const auto exportTo = [this](const char* name) {
        WhenShown([&, name](QDialog& dialog) {
            EXPECT_EQ(dialog.parentWidget(), mWindow.get());
            auto& path = Find<QLineEdit>(dialog, "exportPath");
            EXPECT_EQ(path.text().toStdString(), Folder() / "file.mp4");
            path.setText(mFolder.filePath(QString::fromLatin1(name)));
            dialog.accept();
        });
        Choose("Export");
    };
    auto& panel = *mWindow->findChild<ExportPanel*>();
    exportTo("a.mp4");
    EXPECT_TRUE(panel.isVisible());
    WaitUntil([&] { return !panel.HasUnfinishedJobs(); }, "the export");
    EXPECT_GT(fs::file_size(Folder() / "a.mp4"), 1000u);
    WhenShown(SaveAs(Folder() / "a.mp4"));
    Choose("Compare with Video");
    EXPECT_EQ(mWindow->findChild<ComparisonWindow*>()->windowTitle(), "file and a.mp4 – Synthex");

    // One that would take forever.
    Write("file.synthex",
          R"(,"mFrameWidth":1920,"mFrameHeight":1080,"mVideoDuration":{"ticks":25427001600000000})");
    WaitUntil([&] { return Cell(0, BinModel::kSize) == "1920 x 1080"; }, "the long clip");
    exportTo("b.mp4");
    WhenShown(Press(QMessageBox::No));
    EXPECT_FALSE(mWindow->close());
    panel.CancelAll();
    WaitUntil([&] { return !panel.HasUnfinishedJobs(); }, "the end of the export");
    EXPECT_FALSE(fs::exists(Folder() / "b.mp4"));
}

TEST_F(WindowTest, NewClipsBeginWithTheSequence) {
    WhenShown([](QDialog& dialog) {
        auto& preset = Find<QComboBox>(dialog, "preset");
        preset.setCurrentText(QStringLiteral("DV PAL, 25 fps"));
        Q_EMIT preset.activated(preset.currentIndex());
        EXPECT_EQ(Find<QSpinBox>(dialog, "width").value(), 720);
        Find<QSpinBox>(dialog, "height").setValue(570);
        EXPECT_EQ(preset.currentIndex(), 0);
        dialog.accept();
    });
    Choose("Sequence Settings");
    WhenShown(Settings([](QDialog&) {}));
    Choose("New Clip");
    WaitForClips();
    EXPECT_EQ(Cell(0, BinModel::kSize), "720 x 570 (12:11)");
    EXPECT_EQ(Cell(0, BinModel::kRate), "25 fps");
    Choose("Undo New Clip");
    Choose("Undo Sequence Settings");
    EXPECT_EQ(Project().sequence, corvane::kDefaultSequence);
}

// Catches parts that are left on the screen, keys that no longer work there, and a next start without a menu.
TEST_F(WindowTest, ThePictureIsAloneUntilEscape) {
    Open(Write("a.synthex"));
    WaitForClips();
    auto& viewer = *mWindow->findChild<Viewer*>();
    const auto seen = [&] {
        std::string names;
        for (const char* const name : {"tools", "splitter", "scrubber", "viewerTitle"})
            names += mWindow->findChild<QWidget*>(QLatin1String(name))->isVisible() ? name[0] : '-';
        return names + (mWindow->menuBar()->isVisible() ? 'm' : '-') + (Bin().isVisible() ? 'b' : '-');
    };
    EXPECT_EQ(seen(), "tssvmb");
    QTest::keyClick(mWindow.get(), Qt::Key_F11);
    EXPECT_EQ(seen(), "-s----");
    EXPECT_TRUE(mWindow->isFullScreen());
    QTest::keyClick(viewer.focusProxy(), Qt::Key_End);
    EXPECT_EQ(viewer.CurrentFrame(), 299);
    QTest::keyClick(&Bin(), Qt::Key_Left); // the list's own keys act on the viewer, too
    EXPECT_EQ(viewer.CurrentFrame(), 298);
    QTest::keyClick(&Bin(), Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(viewer.CurrentFrame(), 298);
    QTest::keyClick(mWindow.get(), Qt::Key_Escape);
    EXPECT_EQ(seen(), "tssvmb");
    QTest::keyClick(mWindow.get(), Qt::Key_F11);
    Restart();
    EXPECT_EQ(seen(), "tssvmb");
}

TEST_F(WindowTest, FilesAreDroppedIn) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(Write("a.synthex").string())),
                  QUrl::fromLocalFile(QString::fromStdString(Write("b.synthex").string()))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(mWindow.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(mWindow.get(), &drop);
    WaitUntil([this] { return Model().rowCount() == 2; }, "the files");
    WaitForClips();
    Bin().selectAll();
    Choose("Remove");
    EXPECT_EQ(Model().rowCount(), 0);
    Choose("Undo Remove 2 Clips");
    EXPECT_EQ(Model().rowCount(), 2);
}

} // namespace
