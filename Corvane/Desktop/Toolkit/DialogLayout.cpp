#include "DialogLayout.h"

#include <algorithm>

#include <QGroupBox>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include "Text.h"

namespace corvane::desktop {

namespace {

/// Whether it takes the room that is left over in its row.
bool Stretches(const LayoutNode& node) {
    return node.kind == WidgetKind::kNumber || node.kind == WidgetKind::kPopup ||
           node.kind == WidgetKind::kStaticText;
}

/// The cells of a row; anything else is a row of its own.
std::vector<const LayoutNode*> CellsOf(const LayoutNode& node) {
    if (node.kind != WidgetKind::kRow) return {&node};
    std::vector<const LayoutNode*> cells;
    for (const LayoutNode& child : node.children) cells.push_back(&child);
    return cells;
}

} // namespace

DialogLayout::DialogLayout(const Layout& layout, QWidget& window) : mWindow(window) {
    auto* const column = new QVBoxLayout(&window);
    for (const LayoutNode& node : layout.children) {
        if (node.kind == WidgetKind::kRow &&
            std::ranges::all_of(node.children, &IsButton, &LayoutNode::kind)) {
            column->addStretch();
            column->addLayout(MakeButtonRow(node.children));
        } else
            column->addWidget(Place(node));
    }
    AlignColumns();
}

void DialogLayout::AlignColumns() {
    for (const Cell& cell : mCells) {
        int width = cell.grid->columnMinimumWidth(cell.column); // never less, or the window would fidget
        for (const Cell& other : mCells)
            if (cell.LinesUpWith(other)) width = std::max(width, other.widget->sizeHint().width());
        cell.grid->setColumnMinimumWidth(cell.column, width);
    }
}

/// The widget of a node, with all that lies in it.
QWidget* DialogLayout::Place(const LayoutNode& node) {
    switch (node.kind) {
    case WidgetKind::kLabel: return MakeLabel(node);
    case WidgetKind::kGroup:
    case WidgetKind::kRow: return MakeGroup(node);
    default: return mWindow.findChild<QWidget*>(QString::fromStdString(node.id));
    }
}

/// A titled frame. A row inside another row, or beside groups, is a group without frame and title.
QWidget* DialogLayout::MakeGroup(const LayoutNode& node) {
    QWidget* const box = node.kind == WidgetKind::kGroup ? new QGroupBox(WithMnemonic(node.label), &mWindow)
                                                         : new QWidget(&mWindow);
    auto* const grid = new QGridLayout(box);
    if (node.kind == WidgetKind::kGroup) {
        box->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        Fill(*grid, node.children);
    } else {
        grid->setContentsMargins(0, 0, 0, 0);
        FillRow(*grid, 0, CellsOf(node), static_cast<int>(node.children.size()));
    }
    return box;
}

QWidget* DialogLayout::MakeLabel(const LayoutNode& node) {
    auto* const label = new QLabel(WithMnemonic(node.label), &mWindow);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(
        static_cast<Qt::Alignment>(mWindow.style()->styleHint(QStyle::SH_FormLayoutLabelAlignment)) |
        Qt::AlignVCenter);
    if (!node.target.empty())
        label->setBuddy(mWindow.findChild<QWidget*>(QString::fromStdString(node.target)));
    return label;
}

/// Buttons that end the dialog: at its right end.
QLayout* DialogLayout::MakeButtonRow(const std::vector<LayoutNode>& nodes) {
    auto* const row = new QHBoxLayout;
    row->addStretch();
    int width = mWindow.style()->pixelMetric(QStyle::PM_ButtonMargin);
    for (const LayoutNode& node : nodes) width = std::max(width, Place(node)->sizeHint().width());
    for (const LayoutNode& node : nodes) {
        QWidget* const button = Place(node);
        button->setMinimumWidth(width);
        row->addWidget(button);
    }
    return row;
}

void DialogLayout::Fill(QGridLayout& grid, const std::vector<LayoutNode>& nodes) {
    std::size_t columns = 1;
    for (const LayoutNode& node : nodes) columns = std::max(columns, CellsOf(node).size());
    int row = 0;
    for (const LayoutNode& node : nodes) FillRow(grid, row++, CellsOf(node), static_cast<int>(columns));
}

/// Puts the cells side by side; the last one takes the columns that are left.
void DialogLayout::FillRow(QGridLayout& grid, int row, const std::vector<const LayoutNode*>& nodes,
                           int columns) {
    int column = 0;
    for (const LayoutNode* const node : nodes) {
        QWidget* const cell = Place(*node);
        const int span = node == nodes.back() ? columns - column : 1;
        grid.addWidget(cell, row, column, 1, span);
        if (Stretches(*node) && column > 0)
            grid.setColumnStretch(column + span - 1, 1);
        else if (span == 1)
            mCells.push_back({&grid, column, columns, cell});
        ++column;
    }
}

} // namespace corvane::desktop
