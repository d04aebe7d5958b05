#include "ADOutlineSelectionModel.h"

#include "ADPlistOutlineModel.h"

ADOutlineSelectionModel::ADOutlineSelectionModel(ADPlistOutlineModel *model)
    : QItemSelectionModel(model), _outline(model)
{
    connect(this, &QItemSelectionModel::selectionChanged, this, [this] {
        if (!_selecting)
            _committed = selection(); // cleared or reset by other means than `select`
        // The first row of the selection is the top of one of its ranges.
        ADPlistObject *first = nullptr;
        for (const QItemSelectionRange &range : selection()) {
            ADPlistObject *node = ADPlistOutlineModel::itemForIndex(range.topLeft());
            if (node && (!first || ADPlistOutlineModel::isBefore(node, first)))
                first = node;
        }
        ADPlistObject *up = first ? first->plistObjectParent() : nullptr;
        _selectedParent = up ? outline()->indexForItem(up) : QModelIndex();
    });
}

ADPlistOutlineModel *ADOutlineSelectionModel::outline() const
{
    return _outline;
}

ADPlistObject *ADOutlineSelectionModel::selectedParent() const
{
    return ADPlistOutlineModel::itemForIndex(_selectedParent);
}

void ADOutlineSelectionModel::select(const QModelIndex &index,
                                     QItemSelectionModel::SelectionFlags command)
{
    select(QItemSelection(index, index), command);
}

void ADOutlineSelectionModel::select(const QItemSelection &selection,
                                     QItemSelectionModel::SelectionFlags command)
{
    // A step of a selection being made builds on what was committed before
    // it; any other command first commits what was being made.
    if (!(command & Current))
        _committed = this->selection();
    QItemSelection proposal = command & Clear ? QItemSelection() : _committed;
    if (command & (Select | Deselect | Toggle))
        proposal.merge(selection, command);
    const QItemSelection held = heldToOneParent(proposal);
    _selecting = true;
    QItemSelectionModel::select(held, ClearAndSelect | Rows);
    _selecting = false;
    if (!(command & Current))
        _committed = this->selection();
}

QItemSelection ADOutlineSelectionModel::heldToOneParent(const QItemSelection &proposal) const
{
    const auto parentOf = [](const QItemSelectionRange &range) {
        return ADPlistOutlineModel::itemForIndex(range.topLeft())->plistObjectParent();
    };
    const ADPlistObject *parent = selectedParent();
    QItemSelection held;
    for (const QItemSelectionRange &range : proposal) {
        if (range.isValid() && parentOf(range) == parent && (parent || _selectedParent.isValid()))
            held.append(range);
    }
    if (!held.isEmpty() || proposal.isEmpty())
        return held;
    // None of the current parent's rows: the parent of the first proposed row wins.
    const ADPlistObject *first = nullptr;
    for (const QItemSelectionRange &range : proposal) {
        const ADPlistObject *node = ADPlistOutlineModel::itemForIndex(range.topLeft());
        if (range.isValid() && (!first || ADPlistOutlineModel::isBefore(node, first)))
            first = node;
    }
    const ADPlistObject *winner = first ? first->plistObjectParent() : nullptr;
    for (const QItemSelectionRange &range : proposal) {
        if (range.isValid() && parentOf(range) == winner)
            held.append(range);
    }
    return held;
}
