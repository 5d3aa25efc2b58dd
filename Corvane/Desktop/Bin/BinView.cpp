#include "BinView.h"

#include <algorithm>

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

namespace corvane::desktop {

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
    constexpr int kWidths[BinModel::kColumns] = {220, 125, 80, 90, 180, 130};
    for (int column = 0; column < BinModel::kColumns; ++column) setColumnWidth(column, kWidths[column]);
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
