#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <QAction>
#include <QMenu>
#include <QObject>
#include <QStringList>
#include <QToolBar>

#include "Desktop/Bin/BinModel.h"
#include "Desktop/Bin/BinView.h"
#include "Desktop/Bin/Document.h"
#include "Engine/Preferences.h"
#include "MessageBar.h"

namespace corvane::desktop {

/// What a person does with the clips of the project. Each change is one step that can be undone. UI thread.
class ClipActions final : public QObject {
    Q_OBJECT

  public:
    /// The actions can be used while all of these live.
    ClipActions(Document& document, std::shared_ptr<Bundle> bundle, BinModel& model, BinView& view,
                MessageBar& messages);

    /// Adds the actions to a menu, and to the bin's own.
    void AddTo(QMenu& menu);
    /// Adds those that people use most to a tool bar.
    void AddTo(QToolBar& bar);

    /// Adds settings files as clips, in one step. The first that is new becomes the current clip, or else the
    /// first that is there already. Those that can't be opened are left out, and the message bar says why.
    void AddFiles(const QStringList& files);

  Q_SIGNALS:
    /// The person wants to export these clips, which can be shown.
    void ExportWanted(const std::vector<std::uint64_t>& ids);
    /// The person wants to compare this clip, which can be shown, with a video.
    void CompareWanted(std::uint64_t id);

  private:
    void NewClip();
    void EditSettings();
    void Duplicate();
    void Remove();
    void ShowInFolder();
    void Export();
    void Update();
    PreferencesAnswer Request(const PreferencesRequest& request);
    void Follow(const ProjectClip& clip, const PreferencesAnswer& answer);
    void TellIfNotSaved(const PreferencesAnswer& answer);
    bool Opens(const std::string& name, const ClipSource& source);

    Document& mDocument;
    const std::shared_ptr<Bundle> mBundle;
    BinModel& mModel;
    BinView& mView;
    MessageBar& mMessages;
    QAction *mNew, *mEdit, *mDuplicate, *mRename, *mRemove, *mShowInFolder, *mExport, *mCompare;
};

} // namespace corvane::desktop
