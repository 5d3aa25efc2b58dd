#include "BinView.h"

#include <algorithm>

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QtMath>

#include "Engine/ClipText.h"

namespace corvane::desktop {

namespace {

/// Cells with some room above and below, so that thumbnails don't touch.
class Cells final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 6);
    }
};

/// A text as wide as those of a column usually get; empty if they may have any width.
std::string WideText(int column) {
    switch (column) {
    case BinModel::kSize: return ShapeText({.size = {720, 576}, .aspect = {128, 117}});
    case BinModel::kRate: return RateText({120000, 1001});
    case BinModel::kFields: return FieldOrderText(FieldOrder::kUpperFirst);
    case BinModel::kDuration: return DurationText({.format = {}, .durationTicks = 1, .frames = 99999});
    default: return {};
    }
}

} // namespace

BinView::BinView(BinModel& model, QWidget* parent) : QTreeView(parent), mModel(model) {
    setObjectName(QStringLiteral("bin"));
    setAccessibleName(tr("Clips of the project"));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    // Rows that are known to be alike need not be measured, however many there are.
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::EditKeyPressed);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    setModel(&model);
    setIconSize(model.ThumbnailSize());
    setItemDelegate(new Cells(this));
    setColumnWidth(BinModel::kName, 220);
    setColumnWidth(BinModel::kSource, 130);
    const QFontMetricsF font(this->font());
    const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    for (int column = BinModel::kSize; column <= BinModel::kDuration; ++column)
        setColumnWidth(column,
                       margins + qCeil(font.horizontalAdvance(QString::fromStdString(WideText(column)))));
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&model, signal, viewport(), [this] { viewport()->update(); });
}

std::vector<std::uint64_t> BinView::Selected() const {
    QModelIndexList rows = selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    std::vector<std::uint64_t> ids;
    for (const QModelIndex& row : rows) ids.push_back(mModel.IdAt(row.row()));
    return ids;
}

std::uint64_t BinView::Current() const {
    return mModel.IdAt(currentIndex().row());
}

void BinView::Choose(std::uint64_t id) {
    const QModelIndex index = mModel.index(mModel.RowOf(id), 0);
    if (!index.isValid()) return;
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

void BinView::EditName() {
    const QModelIndex index = mModel.index(currentIndex().row(), BinModel::kName);
    if (index.isValid()) edit(index);
}

QByteArray BinView::SaveColumns() const {
    return header()->saveState();
}

void BinView::RestoreColumns(const QByteArray& columns) {
    header()->restoreState(columns);
}

void BinView::keyPressEvent(QKeyEvent* event) {
    const bool opens = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (opens && state() != EditingState && currentIndex().isValid())
        Q_EMIT OpenWanted();
    else
        QTreeView::keyPressEvent(event);
}

void BinView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid())
        Q_EMIT OpenWanted();
    else
        QTreeView::mouseDoubleClickEvent(event);
}

void BinView::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    if (mModel.rowCount() > 0) return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("No clips yet.\n\nMake one with Clip ▸ New Clip…, or open settings files with\n"
                        "File ▸ Open…, or drop them here."));
}

void BinView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTreeView::currentChanged(current, previous);
    Q_EMIT ChoiceChanged();
}

void BinView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    Q_EMIT ChoiceChanged();
}

} // namespace corvane::desktop
