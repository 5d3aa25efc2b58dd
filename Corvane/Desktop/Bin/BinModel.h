#pragma once

#include <memory>
#include <vector>

#include <QAbstractTableModel>
#include <QIcon>

#include "ClipLoader.h"
#include "Document.h"
#include "FileWatcher.h"

namespace corvane::desktop {

/// The clips of a document as rows, with what is known of them. Clips are opened and their thumbnails made as
/// they come into view, the others behind them; a settings file that changes is opened again. UI thread.
class BinModel final : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// The columns, in the order in which they are shown at first.
    enum Column { kName, kSize, kRate, kFields, kDuration, kSource, kColumns };

    /// `document` outlives the model. `thumbnail` is the room for a picture, in device-independent pixels, of
    /// which one has `ratio` x `ratio` real ones.
    BinModel(Document& document, std::shared_ptr<Bundle> bundle, QSize thumbnail, qreal ratio,
             QObject* parent = nullptr);

    /// The id of a row's clip; 0 for a row that does not exist.
    std::uint64_t IdAt(int row) const;
    /// The row of a clip; -1 if it has none.
    int RowOf(std::uint64_t id) const;
    /// What is known of a row's clip; null while it has not been opened.
    const LoadedClip* LoadedAt(int row) const;
    /// A row's clip. The row must exist.
    const ProjectClip& ClipAt(int row) const { return *mRows[static_cast<std::size_t>(row)].wanted; }
    /// The room for a picture, in device-independent pixels.
    QSize ThumbnailSize() const { return mThumbnail; }
    /// Opens again what can't be shown and what changed on the disk.
    void Refresh();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Renames a clip, as a step of the document. False, and nothing is done, for a name without letters or
    /// for another column.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  Q_SIGNALS:
    /// A clip was opened, for the first time or again, or was found not to open.
    void ClipLoaded(std::uint64_t id);

  private:
    struct Row {
        std::shared_ptr<const ProjectClip> wanted;
        std::unique_ptr<LoadedClip> loaded; // of an earlier source until the wanted one is there
        QIcon picture;                      // as large as any other row's
    };

    void Follow();
    void Take(const LoadedClip& loaded);
    void Reload(const std::filesystem::path& file);
    void RemoveMissing(const Project& project);
    QString Text(const Row& row, int column) const;
    QString ToolTip(const Row& row) const;
    QIcon PictureOf(const LoadedClip& loaded) const;

    Document& mDocument;
    const QSize mThumbnail;
    const qreal mRatio;
    FileWatcher mWatcher;
    mutable ClipLoader mLoader; // asking what a row shows lets its clip come next
    QIcon mNoPicture;
    std::vector<Row> mRows;
};

} // namespace corvane::desktop
