#include "BinModel.h"

#include <algorithm>
#include <set>
#include <utility>

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

#include "Engine/ClipText.h"

namespace corvane::desktop {

namespace {

constexpr const char* kTitles[BinModel::kColumns] = {
    QT_TRANSLATE_NOOP("BinModel", "Clip"),     QT_TRANSLATE_NOOP("BinModel", "Frame size"),
    QT_TRANSLATE_NOOP("BinModel", "Rate"),     QT_TRANSLATE_NOOP("BinModel", "Fields"),
    QT_TRANSLATE_NOOP("BinModel", "Duration"), QT_TRANSLATE_NOOP("BinModel", "Settings in")};

} // namespace

BinModel::BinModel(Document& document, std::shared_ptr<Bundle> bundle, QSize thumbnail, qreal ratio,
                   QObject* parent)
    : QAbstractTableModel(parent), mDocument(document), mThumbnail(thumbnail), mRatio(ratio),
      mLoader(std::move(bundle), thumbnail * ratio) {
    mNoPicture = PictureOf({});
    connect(&mDocument, &Document::Changed, this, &BinModel::Follow);
    connect(&mLoader, &ClipLoader::Loaded, this, &BinModel::Take);
    connect(&mWatcher, &FileWatcher::FileChanged, this, &BinModel::Reload);
    Follow();
}

std::uint64_t BinModel::IdAt(int row) const {
    return row >= 0 && row < rowCount() ? ClipAt(row).id : 0;
}

int BinModel::RowOf(std::uint64_t id) const {
    const auto found = std::ranges::find_if(mRows, [id](const Row& row) { return row.wanted->id == id; });
    return found == mRows.end() ? -1 : static_cast<int>(found - mRows.begin());
}

const LoadedClip* BinModel::LoadedAt(int row) const {
    return row >= 0 && row < rowCount() ? mRows[static_cast<std::size_t>(row)].loaded.get() : nullptr;
}

void BinModel::RemoveMissing(const Project& project) {
    std::set<std::uint64_t> kept;
    for (const auto& clip : project.clips) kept.insert(clip->id);
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (kept.contains(IdAt(row))) continue;
        beginRemoveRows({}, row, row);
        mRows.erase(mRows.begin() + row);
        endRemoveRows();
    }
}

/// Makes the rows match the project. Rows that stay are kept, and the selection with them: no change moves a
/// clip past another.
void BinModel::Follow() {
    const Project& project = mDocument.GetProject();
    RemoveMissing(project);
    std::set<std::filesystem::path> files;
    for (const auto& clip : project.clips)
        if (clip->source.IsFile()) files.insert(clip->source.file);
    mWatcher.Watch(files);
    for (std::size_t place = 0; place < project.clips.size(); ++place) {
        const auto& clip = project.clips[place];
        const int row = static_cast<int>(place);
        if (IdAt(row) != clip->id) {
            beginInsertRows({}, row, row);
            mRows.insert(mRows.begin() + row, Row{.wanted = clip, .loaded = {}, .picture = mNoPicture});
            endInsertRows();
            mLoader.Request(*clip);
        } else if (const auto before = std::exchange(mRows[place].wanted, clip); before != clip) {
            Q_EMIT dataChanged(index(row, 0), index(row, kColumns - 1));
            if (before->source != clip->source) mLoader.Request(*clip);
        }
    }
    mWatcher.Look();
}

void BinModel::Take(const LoadedClip& loaded) {
    const int place = RowOf(loaded.id);
    if (place < 0) return;
    Row& row = mRows[static_cast<std::size_t>(place)];
    // A later request is on its way.
    if (loaded.source != row.wanted->source) return;
    row.loaded = std::make_unique<LoadedClip>(loaded);
    row.picture = PictureOf(loaded);
    Q_EMIT dataChanged(index(place, 0), index(place, kColumns - 1));
    Q_EMIT ClipLoaded(loaded.id);
}

/// The thumbnail, or the mark of a clip that can't be shown, in the middle of the room that all rows have.
QIcon BinModel::PictureOf(const LoadedClip& loaded) const {
    QPixmap picture(mThumbnail * mRatio);
    picture.setDevicePixelRatio(mRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    if (!loaded.thumbnail.isNull()) {
        // Whole pixels, so that the thumbnail's fall on the picture's.
        const QSize free = picture.size() - loaded.thumbnail.size();
        const QPoint corner(free.width() / 2, free.height() / 2);
        painter.drawImage(QPointF(corner) / mRatio, [&] {
            QImage image = loaded.thumbnail;
            image.setDevicePixelRatio(mRatio);
            return image;
        }());
    } else if (!loaded.problem.isEmpty()) {
        const QIcon mark = QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
        mark.paint(&painter, QRect(QPoint(), mThumbnail));
    }
    painter.end();
    QIcon icon(picture);
    // The colors matter, and a style would tint those of a selected row.
    icon.addPixmap(picture, QIcon::Selected);
    return icon;
}

void BinModel::Reload(const std::filesystem::path& file) {
    for (const Row& row : mRows)
        if (row.wanted->source.file == file) mLoader.Request(*row.wanted);
}

void BinModel::Refresh() {
    mWatcher.Look();
    for (const Row& row : mRows)
        if (row.loaded && !row.loaded->problem.isEmpty()) mLoader.Request(*row.wanted);
}

int BinModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(mRows.size());
}

int BinModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QString BinModel::Text(const Row& row, int column) const {
    const ClipSource& source = row.wanted->source;
    if (column == kName) return QString::fromStdString(row.wanted->name);
    if (column == kSource)
        return source.IsFile() ? QString::fromStdString(source.file.filename().string()) : tr("the project");
    if (!row.loaded) return QStringLiteral("…");
    if (!row.loaded->clip) return QStringLiteral("–");
    const ClipInfo& info = row.loaded->clip->Info();
    switch (column) {
    case kSize: return QString::fromStdString(ShapeText(info.format));
    case kRate: return QString::fromStdString(RateText(info.format.rate));
    case kFields: return QString::fromStdString(FieldOrderText(info.format.order));
    default: return QString::fromStdString(DurationText(info));
    }
}

QString BinModel::ToolTip(const Row& row) const {
    QStringList lines;
    if (row.loaded && !row.loaded->problem.isEmpty()) lines << row.loaded->problem;
    const ClipSource& source = row.wanted->source;
    lines << (source.IsFile() ? tr("Settings file: %1").arg(QString::fromStdString(source.file.string()))
                              : tr("The settings are in the project."));
    return lines.join(u'\n');
}

QVariant BinModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Row& row = mRows[static_cast<std::size_t>(index.row())];
    const bool bad = row.loaded && !row.loaded->problem.isEmpty();
    switch (role) {
    case Qt::DisplayRole: return Text(row, index.column());
    case Qt::EditRole: return index.column() == kName ? Text(row, kName) : QVariant();
    case Qt::ToolTipRole: return ToolTip(row);
    case Qt::AccessibleDescriptionRole: return bad ? row.loaded->problem : QVariant();
    case Qt::DecorationRole:
        if (index.column() != kName) return {};
        // The view asks for what it shows.
        if (!row.loaded) mLoader.Hurry(row.wanted->id);
        return row.picture;
    default: return {};
    }
}

QVariant BinModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return tr(kTitles[section]);
}

Qt::ItemFlags BinModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    return index.column() == kName ? flags | Qt::ItemIsEditable : flags;
}

bool BinModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const std::string name = value.toString().trimmed().toStdString();
    if (role != Qt::EditRole || index.column() != kName || name.empty()) return false;
    Project project = mDocument.GetProject();
    project.Rename(IdAt(index.row()), name);
    mDocument.Change(tr("Rename Clip"), std::move(project));
    return true;
}

} // namespace corvane::desktop
