#include "ProjectActions.h"

#include <utility>

#include <QFileDialog>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

#include "Desktop/Toolkit/Actions.h"
#include "Desktop/Toolkit/Text.h"
#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"
#include "SequenceDialog.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::desktop {

namespace fs = std::filesystem;

ProjectActions::ProjectActions(Document& document, Autosave& autosave, MessageBar& messages, QWidget& window)
    : mDocument(document), mAutosave(autosave), mMessages(messages), mWindow(window),
      mRecent(new RecentFiles(&window)) {
    connect(mRecent, &RecentFiles::Chosen, this, [this](const QString& file) { Open(ToPath(file)); });
    connect(&mAutosave, &Autosave::Failed, &mMessages, &MessageBar::Tell);
    connect(&mDocument, &Document::StepNoted, &mMessages, &MessageBar::Tell);
}

void ProjectActions::AddTo(QMenu& file, QMenu& project) {
    file.addAction(MakeAction(*this, tr("&New Project"), QKeySequence::New,
                              tr("Start over with an empty project"), [this] { New(); }));
    file.addAction(MakeAction(*this, tr("&Open…"), QKeySequence::Open,
                              tr("Open a project, or add settings files to this one"),
                              [this] { ChooseFiles(); }));
    file.addMenu(mRecent);
    file.addSeparator();
    file.addAction(MakeAction(*this, tr("&Save Project"), QKeySequence::Save,
                              tr("Save the project to its file"), [this] { Save(); }));
    file.addAction(MakeAction(*this, tr("Save Project &As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
                              tr("Save the project to another file"), [this] { SaveAs(); }));
    project.addAction(MakeAction(*this, tr("&Sequence Settings…"),
                                 QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P),
                                 tr("Set the frame size, pixel aspect and rate that new clips begin with"),
                                 [this] { EditSequence(); }));
}

void ProjectActions::New() {
    if (!LeavesChanges()) return;
    mAutosave.Discard();
    mDocument.Clear();
}

void ProjectActions::Open(const fs::path& file) {
    Project project;
    try {
        project = LoadProject(file);
    } catch (const Failure& failure) {
        return mMessages.Tell(QString::fromUtf8(failure.what()));
    }
    if (!LeavesChanges()) return;
    mDocument.Open(project, file);
    mRecent->Add(mDocument.GetPath());
}

void ProjectActions::ChooseFiles() {
    QFileDialog dialog(&mWindow, tr("Open"));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setNameFilters({tr("Projects and settings (*.cvproj *.synthex)"), tr("Projects (*.cvproj)"),
                           tr("Settings (*.synthex)"), tr("All files (*)")});
    if (!mDocument.GetPath().empty()) dialog.setDirectory(FromPath(mDocument.GetPath().parent_path()));
    if (dialog.exec() == QDialog::Accepted) Q_EMIT OpenWanted(dialog.selectedFiles());
}

bool ProjectActions::SaveTo(const fs::path& file) {
    try {
        if (const std::string lost = mDocument.Save(file); !lost.empty())
            mMessages.Tell(QString::fromStdString(SavedText(file, lost)));
    } catch (const Failure& failure) {
        mMessages.Tell(QString::fromUtf8(failure.what()));
        return false;
    }
    mRecent->Add(mDocument.GetPath());
    return true;
}

bool ProjectActions::Save() {
    return mDocument.GetPath().empty() ? SaveAs() : SaveTo(mDocument.GetPath());
}

bool ProjectActions::SaveAs() {
    QFileDialog dialog(&mWindow, tr("Save Project"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters({tr("Projects (*.cvproj)")});
    dialog.setDefaultSuffix(QStringLiteral("cvproj"));
    const fs::path& path = mDocument.GetPath();
    if (!path.empty()) dialog.setDirectory(FromPath(path.parent_path()));
    dialog.selectFile(mDocument.GetName() + QString::fromLatin1(kProjectSuffix));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
    return SaveTo(ToPath(dialog.selectedFiles().constFirst()));
}

void ProjectActions::OfferLost() {
    while (const std::optional<Autosave::Lost> lost = mAutosave.TakeLost()) {
        const QString name =
            lost->path.empty() ? tr("A project without a name") : QString::fromStdString(lost->path.string());
        QMessageBox box(QMessageBox::Question, tr("Recover"),
                        tr("%1 was changed until %2 and not saved before the program ended. "
                           "Do you want to go on with it?")
                            .arg(name, QLocale().toString(lost->when, QLocale::ShortFormat)),
                        QMessageBox::NoButton, &mWindow);
        box.setObjectName(QStringLiteral("recover"));
        QPushButton* const recover = box.addButton(tr("&Recover"), QMessageBox::AcceptRole);
        QPushButton* const discard = box.addButton(tr("&Discard It"), QMessageBox::DestructiveRole);
        QPushButton* const later = box.addButton(tr("&Not Now"), QMessageBox::RejectRole);
        box.setDefaultButton(recover);
        box.setEscapeButton(later);
        box.exec();
        if (box.clickedButton() == discard) {
            mAutosave.Discard();
            continue;
        }
        if (box.clickedButton() == recover)
            mDocument.Recover(lost->project, lost->path);
        else
            mAutosave.LeaveLost();
        return;
    }
}

bool ProjectActions::LeavesChanges() {
    if (!mDocument.IsModified()) return true;
    QMessageBox box(
        QMessageBox::Warning, tr("Unsaved Changes"),
        tr("%1 has changes that are not saved. Do you want to save them?").arg(mDocument.GetName()),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, &mWindow);
    box.setObjectName(QStringLiteral("unsaved"));
    box.setDefaultButton(QMessageBox::Save);
    switch (box.exec()) {
    case QMessageBox::Save: return Save();
    case QMessageBox::Discard: return true;
    default: return false;
    }
}

void ProjectActions::EditSequence() {
    SequenceDialog dialog(mDocument.GetProject().sequence, &mWindow);
    if (dialog.exec() != QDialog::Accepted) return;
    Project project = mDocument.GetProject();
    project.sequence = dialog.GetSequence();
    mDocument.Change(tr("Sequence Settings"), std::move(project));
}

} // namespace corvane::desktop
