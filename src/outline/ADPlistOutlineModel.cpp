#include "ADPlistOutlineModel.h"

#include "ADOutlineDragAndDrop.h"
#include "ADPlistPasteboard.h"

#include <QMimeData>

#include "ADOutlineSelectionModel.h"

#include "shared/KZLocalizedString.h"
#include "viewers/ADKeyViewer.h"
#include "viewers/ADValueViewer.h"
#include "viewers/ADValueViewerRegistry.h"

#include <algorithm>

namespace {

// More ranges than this go out as one layout change: each announced range
// costs a view time in proportion to its rows.
constexpr size_t kRangesOneByOne = 8;

// The tree row of the `row`-th member of [0, n) that is not in `skipped`.
qint64 nthNotIn(const KZIndexSet &skipped, qint64 row)
{
    qint64 at = row;
    for (const KZIndexSet::Range &r : skipped.ranges()) {
        if (r.location > at)
            break;
        at += r.length;
    }
    return at;
}

KZIndexSet without(const KZIndexSet &set, const KZIndexSet::Range &range)
{
    KZIndexSet rest;
    for (const KZIndexSet::Range &r : set.ranges()) {
        if (r != range)
            rest.addRange(r.location, r.length);
    }
    return rest;
}

} // namespace

ADPlistOutlineModel::ADPlistOutlineModel(QObject *parent)
    : QAbstractItemModel(parent), _selection(std::make_unique<ADOutlineSelectionModel>(this))
{}

ADPlistOutlineModel::~ADPlistOutlineModel() = default;

QItemSelectionModel *ADPlistOutlineModel::selectionModel() const
{
    return _selection.get();
}

void ADPlistOutlineModel::setRoot(ADPlistObject *root)
{
    beginResetModel();
    _root = root;
    _expanded.clear();
    endResetModel();
}

void ADPlistOutlineModel::setValueViewerRegistry(ADValueViewerRegistry *registry)
{
    _registry = registry;
}

void ADPlistOutlineModel::setShowRawKeysAndValues(bool showRaw)
{
    _showRaw = showRaw;
}

void ADPlistOutlineModel::setPlistFormat(ADPlistFormat format)
{
    _format = format;
}

ADPlistObject *ADPlistOutlineModel::itemForIndex(const QModelIndex &index)
{
    return index.isValid() ? static_cast<ADPlistObject *>(index.internalPointer()) : nullptr;
}

// --- rows while a change is announced ----------------------------------------------------

ADPlistObject *ADPlistOutlineModel::childForViewRow(ADPlistObject *parent, qint64 row) const
{
    if (!_announcing || _announcing->parent != parent)
        return parent->childAtIndex(row);
    if (!_announcing->hidden.isEmpty())
        return parent->childAtIndex(nthNotIn(_announcing->hidden, row));
    // Rows still shown keep their old numbers: those yet to go lie below all
    // that went, which are announced from the last up.
    if (_announcing->lingering.contains(row))
        return _announcing->removedNodes[size_t(_announcing->removed.countBelow(row))].get();
    return parent->childAtIndex(row - _announcing->lingering.countBelow(row));
}

ADPlistObject *ADPlistOutlineModel::lingeringParentOf(const ADPlistObject *node) const
{
    if (!_announcing || node->plistObjectParent())
        return nullptr;
    const auto found = _announcing->removedRows.constFind(node);
    if (found == _announcing->removedRows.constEnd() || !_announcing->lingering.contains(*found))
        return nullptr;
    return _announcing->parent;
}

qint64 ADPlistOutlineModel::viewRowOf(const ADPlistObject *item) const
{
    if (item == _root)
        return 0;
    if (lingeringParentOf(item))
        return _announcing->removedRows.value(item);
    if (!_announcing || item->plistObjectParent() != _announcing->parent)
        return item->indexInParent();
    const qint64 treeRow = item->indexInParent();
    if (!_announcing->hidden.isEmpty())
        return treeRow - _announcing->hidden.countBelow(treeRow);
    return nthNotIn(_announcing->lingering, treeRow);
}

QModelIndex ADPlistOutlineModel::indexForRow(ADPlistObject *node, qint64 viewRow, int column) const
{
    return createIndex(int(viewRow), column, node);
}

QModelIndex ADPlistOutlineModel::indexForItem(const ADPlistObject *item, int column) const
{
    if (!item || !isInTree(item))
        return {};
    return indexForRow(const_cast<ADPlistObject *>(item), viewRowOf(item), column);
}

bool ADPlistOutlineModel::isInTree(const ADPlistObject *node) const
{
    if (!_root || !node)
        return false;
    const ADPlistObject *top = node;
    while (const ADPlistObject *up = top->plistObjectParent())
        top = up;
    if (top == _root)
        return true;
    const ADPlistObject *shownUnder = lingeringParentOf(top);
    return shownUnder && isInTree(shownUnder);
}

// --- QAbstractItemModel ------------------------------------------------------------------

QModelIndex ADPlistOutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent))
        return {};
    if (!parent.isValid())
        return indexForRow(_root, 0, column);
    return indexForRow(childForViewRow(itemForIndex(parent), row), row, column);
}

QModelIndex ADPlistOutlineModel::parent(const QModelIndex &child) const
{
    ADPlistObject *node = itemForIndex(child);
    if (!node || node == _root)
        return {};
    ADPlistObject *up = node->plistObjectParent();
    if (!up)
        up = lingeringParentOf(node);
    return up ? indexForRow(up, viewRowOf(up), KeyColumn) : QModelIndex();
}

int ADPlistOutlineModel::rowCount(const QModelIndex &parent) const
{
    if (!_root)
        return 0;
    if (!parent.isValid())
        return 1;
    if (parent.column() != KeyColumn)
        return 0;
    const ADPlistObject *node = itemForIndex(parent);
    qint64 count = node->childCount();
    if (_announcing && _announcing->parent == node)
        count += _announcing->lingering.count() - _announcing->hidden.count();
    return int(count);
}

int ADPlistOutlineModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

bool ADPlistOutlineModel::hasChildren(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return _root != nullptr;
    // Containers open even when empty, so that they show what they are.
    return parent.column() == KeyColumn && itemForIndex(parent)->hasChildren();
}

QVariant ADPlistOutlineModel::data(const QModelIndex &index, int role) const
{
    const ADPlistObject *node = itemForIndex(index);
    if (!node)
        return {};
    if (role == PlistObjectRole)
        return QVariant::fromValue(quintptr(node));
    switch (index.column()) {
    case KeyColumn:
        return keyData(*node, role);
    case ClassColumn:
        if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
            return node->plistTypeName();
        if (role == Qt::EditRole)
            return QVariant::fromValue(node->plistType());
        return {};
    default:
        return valueData(*node, role);
    }
}

QVariant ADPlistOutlineModel::keyData(const ADPlistObject &node, int role) const
{
    if (role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::AccessibleTextRole)
        return ADKeyViewer::keyStringForPlistObject(node, _showRaw);
    return {};
}

QVariant ADPlistOutlineModel::valueData(const ADPlistObject &node, int role) const
{
    if (!_registry)
        return {};
    const ADValueViewerRegistry::Viewer viewer =
        const_cast<ADValueViewerRegistry *>(_registry)->viewerForPlistObject(node);
    if (!viewer)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return viewer->displayStringForPlist(node.plist()).value_or(QString());
    case Qt::EditRole:
        return viewer->editingStringForPlist(node.plist()).value_or(QString());
    case StyledTextRole:
        if (const auto styled = viewer->styledDisplayStringForPlist(node.plist()))
            return QVariant::fromValue(*styled);
        return {};
    case UsesOutlineFontRole: {
        const auto styled = viewer->styledDisplayStringForPlist(node.plist());
        return styled && styled->font == KZStyledText::Font::OutlineFont;
    }
    default:
        return {};
    }
}

QVariant ADPlistOutlineModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal ||
        (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
        return {};
    switch (section) {
    case KeyColumn:
        return KZLocalizedStringWithID(4050, QStringLiteral("Key"));
    case ClassColumn:
        return KZLocalizedStringWithID(7201, QStringLiteral("Type"));
    case ValueColumn:
        return KZLocalizedStringWithID(4051, QStringLiteral("Value"));
    default:
        return {};
    }
}

Qt::ItemFlags ADPlistOutlineModel::flags(const QModelIndex &index) const
{
    const ADPlistObject *node = itemForIndex(index);
    if (!node)
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    bool editable = false;
    switch (index.column()) {
    case KeyColumn: {
        // The root and array elements have fixed keys.
        const ADPlistObject *up = node->plistObjectParent();
        editable = up && up->hasKeys();
        break;
    }
    case ClassColumn:
        editable = true;
        break;
    default:
        if (_registry) {
            const auto viewer =
                const_cast<ADValueViewerRegistry *>(_registry)->viewerForPlistObject(*node);
            editable = viewer && viewer->editable();
        }
        break;
    }
    if (_dragAndDrop && node->plistObjectParent())
        flags |= Qt::ItemIsDragEnabled;
    if (_dragAndDrop && node->hasChildren())
        flags |= Qt::ItemIsDropEnabled;
    return editable ? flags | Qt::ItemIsEditable : flags;
}

// --- drag and drop ---------------------------------------------------------------------------

QStringList ADPlistOutlineModel::mimeTypes() const
{
    return {PlistObjectsPboardType, QStringLiteral("text/plain"), QStringLiteral("text/uri-list")};
}

QMimeData *ADPlistOutlineModel::mimeData(const QModelIndexList &indexes) const
{
    if (!_dragAndDrop)
        return nullptr;
    std::vector<ADPlistObject *> items;
    for (const QModelIndex &index : indexes) {
        ADPlistObject *item = itemForIndex(index);
        if (item && std::find(items.begin(), items.end(), item) == items.end())
            items.push_back(item);
    }
    std::sort(items.begin(), items.end(), &ADPlistOutlineModel::isBefore);
    return _dragAndDrop->mimeDataForItems(items).release(); // the view owns it
}

Qt::DropActions ADPlistOutlineModel::supportedDragActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropActions ADPlistOutlineModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

bool ADPlistOutlineModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                          const QModelIndex &parent) const
{
    return _dragAndDrop && _dragAndDrop->validateDrop(data, itemForIndex(parent), row);
}

bool ADPlistOutlineModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int,
                                       const QModelIndex &parent)
{
    return _dragAndDrop && _dragAndDrop->acceptDrop(data, action, itemForIndex(parent), row);
}

// --- outline operations ------------------------------------------------------------------

void ADPlistOutlineModel::insertItemsAtIndexes(const KZIndexSet &indexes, ADPlistObject *parent)
{
    if (indexes.isEmpty() || !isInTree(parent))
        return;
    if (indexes.ranges().size() > kRangesOneByOne) {
        relayout();
        return;
    }
    _announcing = Announcing{parent, indexes, {}, {}, {}, {}};
    const QModelIndex parentIndex = indexForItem(parent);
    for (const KZIndexSet::Range &range : indexes.ranges()) {
        beginInsertRows(parentIndex, int(range.location), int(range.end() - 1));
        _announcing->hidden = without(_announcing->hidden, range);
        endInsertRows();
    }
    _announcing.reset();
}

void ADPlistOutlineModel::removeItemsAtIndexes(const KZIndexSet &indexes, ADPlistObject *parent,
                                               const ADPlistObjectList &removed)
{
    if (indexes.isEmpty() || !isInTree(parent))
        return;
    if (indexes.ranges().size() > kRangesOneByOne || qint64(removed.size()) != indexes.count()) {
        relayout();
        return;
    }
    _announcing = Announcing{parent, {}, indexes, indexes, removed, {}};
    qsizetype n = 0;
    indexes.forEach(
        [&](qint64 row) { _announcing->removedRows.insert(removed[size_t(n++)].get(), row); });
    const QModelIndex parentIndex = indexForItem(parent);
    // From the last range up, so that the rows above keep their numbers.
    const std::vector<KZIndexSet::Range> &ranges = indexes.ranges();
    for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
        beginRemoveRows(parentIndex, int(range->location), int(range->end() - 1));
        _announcing->lingering = without(_announcing->lingering, *range);
        endRemoveRows();
    }
    _announcing.reset();
}

void ADPlistOutlineModel::moveItems(const KZIndexMap &, ADPlistObject *parent)
{
    if (isInTree(parent))
        relayout();
}

void ADPlistOutlineModel::reloadItem(ADPlistObject *item, bool reloadChildren)
{
    if (!isInTree(item))
        return;
    if (reloadChildren)
        relayout();
    const QModelIndex first = indexForItem(item, KeyColumn);
    emit dataChanged(first, first.siblingAtColumn(ValueColumn));
}

void ADPlistOutlineModel::reloadColumnsOfChildren(ADPlistObject *item, bool recursive,
                                                  int firstColumn, int lastColumn)
{
    if (!isInTree(item) || !isItemExpanded(item) || item->childCount() == 0)
        return;
    const QModelIndex parentIndex = indexForItem(item);
    emit dataChanged(index(0, firstColumn, parentIndex),
                     index(int(item->childCount() - 1), lastColumn, parentIndex));
    if (!recursive)
        return;
    for (qint64 i = 0; i < item->childCount(); ++i) {
        ADPlistObject *child = item->childAtIndex(i);
        if (child->hasChildren())
            reloadColumnsOfChildren(child, true, firstColumn, lastColumn);
    }
}

void ADPlistOutlineModel::reloadData()
{
    relayout();
}

// Carries every persistent index over to the row where its node stands now;
// one whose node left the tree goes.
void ADPlistOutlineModel::relayout(const std::function<void()> &change)
{
    emit layoutAboutToBeChanged();
    if (change)
        change();
    const QModelIndexList old = persistentIndexList();
    QModelIndexList now;
    now.reserve(old.size());
    for (const QModelIndex &index : old)
        now.append(indexForItem(itemForIndex(index), index.column()));
    changePersistentIndexList(old, now);
    emit layoutChanged();
}

// --- expansion -----------------------------------------------------------------------------

bool ADPlistOutlineModel::isItemExpanded(const ADPlistObject *item) const
{
    const QModelIndex index = indexForItem(item);
    return index.isValid() && _expanded.contains(QPersistentModelIndex(index));
}

void ADPlistOutlineModel::expandItem(ADPlistObject *item)
{
    const QModelIndex index = indexForItem(item);
    if (!index.isValid() || !item->hasChildren() || _expanded.contains(index))
        return;
    _expanded.insert(index);
    emit expansionChanged(index, true);
}

void ADPlistOutlineModel::collapseItem(ADPlistObject *item, bool collapseChildren)
{
    const QModelIndex index = indexForItem(item);
    if (!index.isValid())
        return;
    if (_expanded.remove(index))
        emit expansionChanged(index, false);
    if (!collapseChildren)
        return;
    const QSet<QPersistentModelIndex> all = _expanded;
    for (const QPersistentModelIndex &expanded : all) {
        ADPlistObject *node = itemForIndex(expanded);
        if (node && node != item && node->hasAncestor(item) && _expanded.remove(expanded))
            emit expansionChanged(expanded, false);
    }
}

bool ADPlistOutlineModel::hasRow(const ADPlistObject *item) const
{
    if (!isInTree(item))
        return false;
    for (const ADPlistObject *up = item->plistObjectParent(); up; up = up->plistObjectParent()) {
        if (!isItemExpanded(up))
            return false;
    }
    return true;
}

std::vector<ADPlistObject *> ADPlistOutlineModel::expandedItemsInOrder() const
{
    std::vector<ADPlistObject *> items;
    for (const QPersistentModelIndex &index : _expanded) {
        ADPlistObject *node = itemForIndex(index);
        if (node && hasRow(node))
            items.push_back(node);
    }
    std::sort(items.begin(), items.end(), &ADPlistOutlineModel::isBefore);
    return items;
}

bool ADPlistOutlineModel::isBefore(const ADPlistObject *a, const ADPlistObject *b)
{
    if (a == b)
        return false;
    const auto depthOf = [](const ADPlistObject *node) {
        int depth = 0;
        for (; node->plistObjectParent(); node = node->plistObjectParent())
            ++depth;
        return depth;
    };
    int depthA = depthOf(a), depthB = depthOf(b);
    // A node above the other comes first: bring the deeper one up to it.
    for (; depthA > depthB; --depthA) {
        a = a->plistObjectParent();
        if (a == b)
            return false;
    }
    for (; depthB > depthA; --depthB) {
        b = b->plistObjectParent();
        if (a == b)
            return true;
    }
    while (a->plistObjectParent() != b->plistObjectParent()) {
        a = a->plistObjectParent();
        b = b->plistObjectParent();
    }
    return a->indexInParent() < b->indexInParent();
}
