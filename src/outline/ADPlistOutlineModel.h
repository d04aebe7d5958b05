#pragma once

#include "model/ADPlistObject.h"

#include "shared/KZIndexMap.h"
#include "shared/KZIndexSet.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QSet>

#include <functional>
#include <memory>
#include <optional>

class ADValueViewerRegistry;
class ADOutlineDragAndDrop;
class ADOutlineSelectionModel;

/// The outline of one tree as a Qt item model: one top row, the root, and
/// below each row the children of its node, in three columns (key, class,
/// value). Rows are made on demand from the tree: an index carries its node,
/// asking for a row makes that child node and nothing else, and the model
/// keeps no copy of the tree.
///
/// It also keeps what an outline view keeps: which items are expanded and
/// which are selected (its selection model, which holds a selection to one
/// parent), so that the controller's logic runs against it with no view. A
/// view shows this state and reports the user's expanding back.
///
/// The tree changes first and is announced after (it posts "did"
/// notifications), which Qt's models announce before. So the outline
/// operations map rows while a change is announced: rows that the tree has
/// already lost or gained stay as the view last saw them until Qt has been
/// told. Changes of many ranges, reorders and reloads go out as one layout
/// change that carries every persistent index over by the node it shows.
/// Nodes that left the tree must live until the operation returns, which
/// the tree's notifications guarantee.
///
/// The text of cells comes from the value viewer registry, the raw-keys flag
/// and the format set here. Main thread.
class ADPlistOutlineModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column
    {
        KeyColumn,
        ClassColumn,
        ValueColumn,
        ColumnCount,
    };
    enum Role
    {
        /// The row's node, as `ADPlistObject *` in a `quintptr`.
        PlistObjectRole = Qt::UserRole + 1,
        /// The value column's display text with its styling, a KZStyledText.
        StyledTextRole,
        /// Whether the cell's text is the outline font's (edit mode 0) rather than the cell's.
        UsesOutlineFontRole,
    };

    explicit ADPlistOutlineModel(QObject *parent = nullptr);
    ~ADPlistOutlineModel() override;

    /// Shows another tree (or none): a reset, nothing expanded or selected.
    void setRoot(ADPlistObject *root);
    ADPlistObject *root() const { return _root; }
    void setValueViewerRegistry(ADValueViewerRegistry *registry);
    ADValueViewerRegistry *valueViewerRegistry() const { return _registry; }
    void setShowRawKeysAndValues(bool showRaw);
    bool showRawKeysAndValues() const { return _showRaw; }
    void setPlistFormat(ADPlistFormat format);
    ADPlistFormat plistFormat() const { return _format; }

    QItemSelectionModel *selectionModel() const;
    /// The index of the node's row in `column`; invalid for no node or one outside the tree.
    QModelIndex indexForItem(const ADPlistObject *item, int column = KeyColumn) const;
    static ADPlistObject *itemForIndex(const QModelIndex &index);

    // --- outline operations, called after the tree changed
    /// Rows for children that are in the tree now, at `indexes` of `parent`.
    void insertItemsAtIndexes(const KZIndexSet &indexes, ADPlistObject *parent);
    /// Rows of children the tree no longer has; `removed`, when given, are
    /// the nodes that stood at `indexes`, in order.
    void removeItemsAtIndexes(const KZIndexSet &indexes, ADPlistObject *parent,
                              const ADPlistObjectList &removed);
    /// The rows of `parent` as `map` reordered its children.
    void moveItems(const KZIndexMap &map, ADPlistObject *parent);
    /// The item's row again; with `reloadChildren` its rows below, which may
    /// have come and gone in any way.
    void reloadItem(ADPlistObject *item, bool reloadChildren);
    /// The given columns of the rows of the item's children (and theirs, when recursive).
    void reloadColumnsOfChildren(ADPlistObject *item, bool recursive, int firstColumn,
                                 int lastColumn);
    /// Every row again, keeping expansion and selection of the nodes still in the tree.
    void reloadData();

    // --- expansion
    bool isItemExpanded(const ADPlistObject *item) const;
    void expandItem(ADPlistObject *item);
    void collapseItem(ADPlistObject *item, bool collapseChildren);
    /// Whether the item shows as a row: it is the root or every node above it is expanded.
    bool hasRow(const ADPlistObject *item) const;
    /// The expanded items that show as rows, in outline order.
    std::vector<ADPlistObject *> expandedItemsInOrder() const;
    /// Whether `a` comes before `b` in the outline.
    static bool isBefore(const ADPlistObject *a, const ADPlistObject *b);

    // --- QAbstractItemModel
    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // --- drag and drop, decided by the handler (none: no drags, no drops)
    void setDragAndDrop(ADOutlineDragAndDrop *handler) { _dragAndDrop = handler; }
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

signals:
    /// The expansion of an item changed here; a view follows.
    void expansionChanged(const QModelIndex &index, bool expanded);

private:
    /// A change of one parent's rows while Qt is being told of it: view rows
    /// map to nodes as the view last saw them.
    struct Announcing
    {
        ADPlistObject *parent = nullptr;
        KZIndexSet hidden;    // tree rows inserted but not yet announced
        KZIndexSet lingering; // old rows removed but not yet announced
        KZIndexSet removed;   // all old rows removed, and their nodes in order
        ADPlistObjectList removedNodes;
        QHash<const ADPlistObject *, qint64> removedRows; // a removed node's old row
    };

    ADPlistObject *childForViewRow(ADPlistObject *parent, qint64 row) const;
    qint64 viewRowOf(const ADPlistObject *item) const;
    /// The parent a node removed under announcement still shows under; null for any other.
    ADPlistObject *lingeringParentOf(const ADPlistObject *node) const;
    QModelIndex indexForRow(ADPlistObject *node, qint64 viewRow, int column) const;
    void relayout(const std::function<void()> &change = {});
    bool isInTree(const ADPlistObject *node) const;
    QVariant keyData(const ADPlistObject &node, int role) const;
    QVariant valueData(const ADPlistObject &node, int role) const;

    ADPlistObject *_root = nullptr;
    ADValueViewerRegistry *_registry = nullptr;
    bool _showRaw = false;
    ADPlistFormat _format = ADPlistFormatXML;
    std::optional<Announcing> _announcing;
    QSet<QPersistentModelIndex> _expanded;
    std::unique_ptr<ADOutlineSelectionModel> _selection;
    ADOutlineDragAndDrop *_dragAndDrop = nullptr;
};
