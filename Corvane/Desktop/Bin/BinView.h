#pragma once

#include <cstdint>
#include <vector>

#include <QTreeView>

#include "BinModel.h"

namespace corvane::desktop {

/// The bin: the project's clips as a list of rows that can be selected, renamed and opened. UI thread.
class BinView final : public QTreeView {
    Q_OBJECT

  public:
    /// `model` outlives the view.
    explicit BinView(BinModel& model, QWidget* parent = nullptr);

    /// The clips that are selected, in the order of the rows.
    std::vector<std::uint64_t> Selected() const;
    /// The clip that the keyboard is at; 0 if there is none.
    std::uint64_t Current() const;
    /// Makes a clip the current one and the only one that is selected. Does nothing for one that has no row.
    void Choose(std::uint64_t id);
    /// Lets the person type another name for the current clip, if there is one.
    void EditName();

    /// The widths and the order of the columns, to be kept.
    QByteArray SaveColumns() const;
    /// Puts them back; what can't be restored is ignored.
    void RestoreColumns(const QByteArray& columns);

  Q_SIGNALS:
    /// The person wants to open the current clip's settings: Return, or a double click.
    void OpenWanted();
    /// Another clip is the current one, or others are selected.
    void ChoiceChanged();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

  private:
    BinModel& mModel;
};

} // namespace corvane::desktop
