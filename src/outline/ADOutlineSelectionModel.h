#pragma once

#include <QItemSelectionModel>
#include <QPersistentModelIndex>

class ADPlistObject;
class ADPlistOutlineModel;

/// The selection of an outline, held to one parent: whatever a click, a
/// shifted click, select-all or the program proposes, only rows of one parent
/// stay selected. Rows of the parent of the current selection keep priority;
/// when the proposal has none of them, the parent of its first row in the
/// outline wins. So extending a selection never leaves its parent, and a
/// click elsewhere moves the whole selection there. Whole rows are selected.
/// Owned by its model. Main thread.
class ADOutlineSelectionModel : public QItemSelectionModel
{
    Q_OBJECT

public:
    explicit ADOutlineSelectionModel(ADPlistOutlineModel *model);

    /// The parent of the first selected item when the selection last changed
    /// (none for the root or no selection).
    ADPlistObject *selectedParent() const;

    void select(const QModelIndex &index, QItemSelectionModel::SelectionFlags command) override;
    void select(const QItemSelection &selection,
                QItemSelectionModel::SelectionFlags command) override;

private:
    QItemSelection heldToOneParent(const QItemSelection &proposal) const;
    ADPlistOutlineModel *outline() const;

    ADPlistOutlineModel *const _outline;
    QPersistentModelIndex _selectedParent; // invalid for none
    // What is selected apart from a selection still being made (a drag),
    // which each step of that selection replaces.
    QItemSelection _committed;
    bool _selecting = false;
};
