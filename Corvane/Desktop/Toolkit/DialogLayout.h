#pragma once

#include <vector>

#include <QBoxLayout>
#include <QGridLayout>
#include <QWidget>

#include "Services/UI/UILayout.h"

namespace corvane::desktop {

/// Lays out the widgets of a dialog as its script says. The widgets are already children of `window`, named
/// by their identifiers; groups and labels are made here. UI thread.
class DialogLayout {
  public:
    DialogLayout(const Layout& layout, QWidget& window);

    /// Makes the first columns of all groups equally wide. To be called again when one of their titles has
    /// changed.
    void AlignColumns();

  private:
    QWidget* Place(const LayoutNode& node);
    QWidget* MakeGroup(const LayoutNode& node);
    QWidget* MakeLabel(const LayoutNode& node);
    QLayout* MakeButtonRow(const std::vector<LayoutNode>& nodes);
    void Fill(QGridLayout& grid, const std::vector<LayoutNode>& nodes);
    void FillRow(QGridLayout& grid, int row, const std::vector<const LayoutNode*>& nodes, int columns);

    QWidget& mWindow;
    /// A widget that makes its column at least as wide as itself.
    struct Cell {
        QGridLayout* grid;
        int column, columns;
        const QWidget* widget;

        bool LinesUpWith(const Cell& other) const {
            return column == other.column && (column == 0 || columns == other.columns);
        }
    };
    std::vector<Cell> mCells;
};

} // namespace corvane::desktop
