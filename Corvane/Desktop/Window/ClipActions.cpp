#include "ClipActions.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include <unistd.h>

#include <QDesktopServices>
#include <QStyle>
#include <QUrl>
#include <fmt/format.h>

#include "Desktop/Toolkit/Actions.h"
#include "Desktop/Toolkit/Text.h"
#include "Engine/Failure.h"
#include "Services/Foundation/AtomicFile.h"

namespace corvane::desktop {

namespace {

namespace fs = std::filesystem;

/// The name that a clip gets from its file.
std::string NameOf(const fs::path& file) {
    return file.stem().string();
}

ClipSource SourceOf(const PreferencesAnswer& answer) {
    if (answer.outcome != PreferencesOutcome::kUseFile) return {.file = {}, .settings = answer.settings};
    return {.file = fs::absolute(answer.file).lexically_normal(), .settings = {}};
}

} // namespace

ClipActions::ClipActions(Document& document, std::shared_ptr<Bundle> bundle, BinModel& model, BinView& view,
                         MessageBar& messages)
    : mDocument(document), mBundle(std::move(bundle)), mModel(model), mView(view), mMessages(messages) {
    mNew = MakeAction(*this, tr("&New Clip…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N),
                      tr("Make a clip that lives in the project"), [this] { NewClip(); });
    mEdit = MakeAction(*this, tr("&Edit Settings…"), QKeySequence(Qt::CTRL | Qt::Key_E),
                       tr("Change what the clip shows (also Return or a double click)"),
                       [this] { EditSettings(); });
    mDuplicate = MakeAction(*this, tr("&Duplicate"), QKeySequence(Qt::CTRL | Qt::Key_D),
                            tr("Put a copy of the clip into the project"), [this] { Duplicate(); });
    mRename = MakeAction(*this, tr("Rena&me"), QKeySequence(Qt::Key_F2),
                         tr("Call the clip something else in this project"), [this] { mView.EditName(); });
    mRemove = MakeAction(*this, tr("&Remove"), QKeySequence::Delete,
                         tr("Take the clips out of the project; files stay"), [this] { Remove(); });
    mShowInFolder = MakeAction(*this, tr("Show in &Folder"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F),
                               tr("Show the folder of the clip's settings file"), [this] { ShowInFolder(); });
    mExport = MakeAction(*this, tr("E&xport…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E),
                         tr("Write frames of the clip to pictures or video"), [this] { Export(); });
    mCompare = MakeAction(*this, tr("Compare with &Video…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_V),
                          tr("See what a pipeline did to a video of the clip"),
                          [this] { Q_EMIT CompareWanted(mView.Current()); });
    const QStyle& style = *mView.style();
    mNew->setIcon(style.standardIcon(QStyle::SP_FileIcon));
    mEdit->setIcon(style.standardIcon(QStyle::SP_FileDialogDetailedView));
    mExport->setIcon(style.standardIcon(QStyle::SP_DialogSaveButton));
    // These keys are only the bin's: they mean other things where text is typed.
    for (QAction* const action : {mRename, mRemove}) action->setShortcutContext(Qt::WidgetShortcut);
    connect(&mView, &BinView::OpenWanted, this, &ClipActions::EditSettings);
    connect(&mView, &BinView::ChoiceChanged, this, &ClipActions::Update);
    connect(&mModel, &BinModel::ClipLoaded, this, &ClipActions::Update);
    connect(&mDocument, &Document::Changed, this, &ClipActions::Update);
    Update();
}

void ClipActions::AddTo(QMenu& menu) {
    for (QAction* const action :
         {mNew, mEdit, mDuplicate, mRename, mRemove, mShowInFolder, mExport, mCompare}) {
        if (action == mShowInFolder) menu.addSeparator();
        menu.addAction(action);
        mView.addAction(action);
    }
}

void ClipActions::AddTo(QToolBar& bar) {
    bar.addActions({mNew, mEdit, mExport});
}

void ClipActions::Update() {
    const std::vector<std::uint64_t> selected = mView.Selected();
    const int row = mModel.RowOf(mView.Current());
    const LoadedClip* const loaded = mModel.LoadedAt(row);
    const bool opens = loaded != nullptr && loaded->clip != nullptr;
    const bool shows = opens && loaded->problem.isEmpty();
    mEdit->setEnabled(opens);
    mDuplicate->setEnabled(opens);
    mRename->setEnabled(row >= 0);
    mRemove->setEnabled(!selected.empty());
    mShowInFolder->setEnabled(row >= 0 && mModel.ClipAt(row).source.IsFile());
    mExport->setEnabled(shows);
    mCompare->setEnabled(shows);
}

/// Whether a clip can be opened. If not, the message bar says why; the plug-in's dialog would not.
bool ClipActions::Opens(const std::string& name, const ClipSource& source) {
    try {
        OpenClip(mBundle, name, source);
        return true;
    } catch (const Failure& failure) {
        mMessages.Tell(QString::fromUtf8(failure.what()));
        return false;
    }
}

void ClipActions::AddFiles(const QStringList& files) {
    Project project = mDocument.GetProject();
    std::uint64_t chosen = 0; // the first clip that was there already
    std::vector<std::uint64_t> added;
    for (const QString& name : files) {
        const fs::path file = fs::absolute(ToPath(name)).lexically_normal();
        const auto known =
            std::ranges::find_if(project.clips, [&](const auto& clip) { return clip->source.file == file; });
        if (known != project.clips.end())
            chosen = chosen != 0 ? chosen : (*known)->id;
        else if (const ClipSource source{.file = file, .settings = {}}; Opens(NameOf(file), source))
            added.push_back(project.Add(NameOf(file), source));
    }
    mDocument.Change(files.size() == 1 ? tr("Open Clip") : tr("Open Clips"), std::move(project));
    if (!added.empty()) chosen = added.front();
    if (chosen != 0) mView.Choose(chosen);
}

/// Opens the dialog, and says what was not kept of files that are saved from within it.
PreferencesAnswer ClipActions::Request(const PreferencesRequest& request) {
    const FileJournal journal;
    PreferencesAnswer answer = RequestPreferences(*mBundle, request, journal);
    if (const std::string lost = journal.WhatWasLost(); !lost.empty())
        mMessages.Tell(QString::fromStdString(lost));
    return answer;
}

void ClipActions::NewClip() {
    const PreferencesAnswer answer =
        Request({.file = {}, .settings = {}, .sequence = mDocument.GetProject().sequence});
    if (answer.outcome == PreferencesOutcome::kCancelled) return;
    if (answer.outcome == PreferencesOutcome::kFailed || answer.outcome == PreferencesOutcome::kUnreadable)
        return mMessages.Tell(
            tr("The new clip was not made: %1.").arg(QString::fromStdString(answer.message)));
    TellIfNotSaved(answer);
    Project project = mDocument.GetProject();
    const ClipSource source = SourceOf(answer);
    const std::string name =
        source.IsFile() ? NameOf(source.file) : project.FreeName(tr("Clip").toStdString());
    const std::uint64_t id = project.Add(name, source);
    mDocument.Change(tr("New Clip"), std::move(project));
    mView.Choose(id);
}

/// Says that the settings are not in the file that was to be the clip's source; they go where the clip's are.
void ClipActions::TellIfNotSaved(const PreferencesAnswer& answer) {
    if (answer.outcome == PreferencesOutcome::kNotSaved)
        mMessages.Tell(
            tr("%1; the clip itself has its settings.").arg(QString::fromStdString(answer.message)));
}

void ClipActions::EditSettings() {
    const int row = mModel.RowOf(mView.Current());
    if (row < 0) return;
    // The dialog may stay open for long, and the row may go meanwhile.
    const ProjectClip clip = mModel.ClipAt(row);
    if (!Opens(clip.name, clip.source)) return;
    if (clip.source.IsFile() && ::access(clip.source.file.c_str(), W_OK) != 0)
        return mMessages.Tell(
            tr("%1: you are not allowed to write this file; duplicate the clip and edit the copy.")
                .arg(QString::fromStdString(clip.source.file.string())));
    Follow(clip, Request({.file = clip.source.file, .settings = clip.source.settings}));
}

/// Does what the person decided in the dialog of an existing clip.
void ClipActions::Follow(const ProjectClip& clip, const PreferencesAnswer& answer) {
    const QString text = tr("Edit Settings of %1").arg(QString::fromStdString(clip.name));
    const bool keepsFile = clip.source.IsFile() && answer.outcome != PreferencesOutcome::kUseFile;
    switch (answer.outcome) {
    case PreferencesOutcome::kDone:
    case PreferencesOutcome::kNotSaved:
    case PreferencesOutcome::kUseFile: {
        TellIfNotSaved(answer);
        if (keepsFile) break;
        Project project = mDocument.GetProject();
        project.SetSource(clip.id, SourceOf(answer));
        return mDocument.Change(text, std::move(project));
    }
    case PreferencesOutcome::kCancelled: return;
    default:
        return mMessages.Tell(
            tr("%1: the settings can't be edited (%2).")
                .arg(QString::fromStdString(clip.name), QString::fromStdString(answer.message)));
    }
    try {
        const std::string lost = mDocument.WriteSettings(text, clip.source.file, answer.settings);
        if (!lost.empty()) mMessages.Tell(QString::fromStdString(SavedText(clip.source.file, lost)));
    } catch (const Failure& failure) {
        mMessages.Tell(QString::fromUtf8(failure.what()));
    }
}

void ClipActions::Duplicate() {
    Project project = mDocument.GetProject();
    std::uint64_t copy = 0;
    for (const std::uint64_t id : mView.Selected()) {
        const int row = mModel.RowOf(id);
        const LoadedClip* const loaded = mModel.LoadedAt(row);
        if (loaded == nullptr || loaded->clip == nullptr) continue;
        const std::string name = project.FreeName(mModel.ClipAt(row).name);
        copy = project.Add(name, {.file = {}, .settings = loaded->clip->Settings()}, project.Find(id) + 1);
    }
    mDocument.Change(tr("Duplicate"), std::move(project));
    if (copy != 0) mView.Choose(copy);
}

void ClipActions::Remove() {
    const std::vector<std::uint64_t> ids = mView.Selected();
    if (ids.empty()) return;
    const int row = mModel.RowOf(ids.front());
    Project project = mDocument.GetProject();
    for (const std::uint64_t id : ids) project.Remove(id);
    mDocument.Change(ids.size() == 1 ? tr("Remove Clip") : tr("Remove %1 Clips").arg(ids.size()),
                     std::move(project));
    mView.Choose(mModel.IdAt(std::min(row, mModel.rowCount() - 1)));
}

void ClipActions::ShowInFolder() {
    const int row = mModel.RowOf(mView.Current());
    if (row < 0) return;
    const QString folder = FromPath(mModel.ClipAt(row).source.file.parent_path());
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        mMessages.Tell(tr("%1: no program shows folders here; open this one yourself.").arg(folder));
}

void ClipActions::Export() {
    std::vector<std::uint64_t> ids = mView.Selected();
    std::erase_if(ids, [this](std::uint64_t id) {
        const LoadedClip* const loaded = mModel.LoadedAt(mModel.RowOf(id));
        return loaded == nullptr || !loaded->problem.isEmpty();
    });
    if (!ids.empty()) Q_EMIT ExportWanted(ids);
}

} // namespace corvane::desktop
