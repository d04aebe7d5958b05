// The operations of ADPlistObject that change a tree.

#include "ADPlistObject.h"

#include "ADKeyOrder.h"
#include "ADKeySortPreferences.h"
#include "ADPlistCoercionHandler.h"
#include "ADPlistNotifications.h"
#include "ADUndoManager.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace {

// The value a keyed-archiver UID's dictionary stands for while it keeps the
// UID's shape, {"CF$UID": n}; otherwise the dictionary itself.
PlistValue archiverEntry(const PlistValue &shown)
{
    if (!shown.isDictionary())
        return shown;
    const PlistDictionary d = shown.toDictionary();
    if (d.count() != 1 || d.keyAt(0) != u"CF$UID")
        return shown;
    const PlistValue &n = d.valueAt(0);
    if (!n.isInteger() || (!n.isUnsigned() && n.toInteger() < 0))
        return shown;
    return PlistValue::uid(n.toUnsigned());
}

// Sort values where null stands for the null value, which sorts after every type.
int compareSortValues(KZComparison comparison, const ADPlistObject *a, const ADPlistObject *b)
{
    if (a)
        return a->compareUsingSelector(comparison, b);
    return b ? -b->compareUsingSelector(comparison, nullptr) : 0;
}

// The stable order of a container's values when none is a container (or a
// keyed-archiver UID): the order `compareUsingSelector` gives their nodes.
std::optional<std::vector<qint64>> leafOrder(const PlistValue &container, KZComparison comparison)
{
    const qint64 count = container.containerCount();
    for (qint64 i = 0; i < count; ++i) {
        const PlistValue &value = container.containerValueAt(i);
        if (value.isContainer() || value.kind() == PlistValue::Kind::Uid ||
            value.kind() == PlistValue::Kind::None)
            return std::nullopt;
    }
    const KZComparison keySort = ADKeySortPreferences::keySortSelector();
    const auto compare = [&](const PlistValue &a, const PlistValue &b) {
        if (comparison != KZComparison::PlistCompare)
            return KZCompareValues(comparison, a, b);
        const ADPlistType mine = a.plistType();
        const ADPlistType theirs = b.plistType();
        if (mine != theirs)
            return mine < theirs ? -1 : 1;
        if (mine == ADPlistTypeString)
            return KZCompareStrings(keySort, a.stringView(), b.stringView());
        return a.plistCompare(b);
    };
    std::vector<qint64> order(static_cast<size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](qint64 a, qint64 b) {
        return compare(container.containerValueAt(a), container.containerValueAt(b)) < 0;
    });
    return order;
}

} // namespace

void ADPlistObject::registerUndo(const Context &context,
                                 std::function<void(ADPlistObject &)> inverse)
{
    if (!context.undo)
        return;
    // The action holds the node, so undo can bring back a node that was removed.
    context.undo->registerUndo(
        this, [self = Pointer(this), inverse = std::move(inverse)] { inverse(*self); });
}

void ADPlistObject::setActionName(const Context &context, const QString &name)
{
    if (context.undo)
        context.undo->setActionName(name);
}

void ADPlistObject::renumberChildren()
{
    if (!_children)
        return;
    for (size_t i = 0; i < _children->size(); ++i) {
        if (const Pointer &child = (*_children)[i])
            child->_indexInParent = qint64(i);
    }
}

PlistValue ADPlistObject::entryValue() const
{
    return _showsUid ? archiverEntry(_plist) : _plist;
}

void ADPlistObject::writeThroughToParent()
{
    ADPlistObject *up = plistObjectParent();
    if (!up || _indexInParent < 0)
        return;
    // The parent's plain container lists its entries in the order of its children.
    if (up->hasKeys())
        up->_plist.toDictionary().replaceAt(_indexInParent, entryValue());
    else
        up->_plist.toArray().replace(_indexInParent, entryValue());
    up->writeThroughShadow();
}

// A dictionary showing a UID is no entry of its parent's container: after a
// change inside it, the parent's entry is made again from it.
void ADPlistObject::writeThroughShadow()
{
    if (_showsUid)
        writeThroughToParent();
}

void ADPlistObject::setPlist(const PlistValue &plist)
{
    setPlist(context(), plist);
}

void ADPlistObject::setPlist(const Context &context, const PlistValue &plist)
{
    if (!hasChildren() && plist.isEqualToPlist(_plist))
        return;
    const PlistValue old = _plist;
    const std::shared_ptr<ADValueViewer> oldViewer = valueViewer();
    registerUndo(context, [old](ADPlistObject &self) { self.setPlist(old); });
    if (hasChildren())
        destroyChildren(context, true);
    if (old.plistType() != plist.plistType())
        setValueViewer(context, nullptr);
    _plist = plist.kz_copyMutableContainers();
    _type = qint8(_plist.plistType());
    writeThroughToParent();
    if (hasChildren())
        createChildren(context, true);
    post(context, PlistObjectDidChangeNotification,
         {{PlistObjectOldValue, QVariant::fromValue(old)},
          {PlistObjectOldValueViewer, QVariant::fromValue(oldViewer)}});
}

void ADPlistObject::coerceToPlistType(ADPlistType type)
{
    coerceToPlistType(context(), type);
}

void ADPlistObject::coerceToPlistType(const Context &context, ADPlistType type)
{
    setPlist(context, ADPlistCoercionHandler::sharedCoercionHandler().coercePlist(_plist, type));
}

void ADPlistObject::setValueViewer(const std::shared_ptr<ADValueViewer> &viewer)
{
    setValueViewer(context(), viewer);
}

void ADPlistObject::setValueViewer(const Context &context,
                                   const std::shared_ptr<ADValueViewer> &viewer)
{
    if (viewer == valueViewer())
        return;
    extras().valueViewer = viewer;
    post(context, PlistObjectDidChangeNotification, {});
}

void ADPlistObject::setKey(const QString &key, qint64 childIndex)
{
    Q_ASSERT(hasKeys() && childIndex >= 0 && childIndex < childCount());
    const QString oldKey = keyAtIndex(childIndex);
    if (oldKey == key)
        return;
    const Context context = this->context();
    // A sibling under the new key gives way; the child at the index survives.
    if (const qint64 sibling = indexOfKey(key); sibling != KZNotFound) {
        removeChildrenAtIndexes(context, KZIndexSet(sibling));
        if (sibling < childIndex)
            --childIndex;
    }
    const qint64 index = childIndex;
    registerUndo(context, [oldKey, index](ADPlistObject &self) { self.setKey(oldKey, index); });
    _plist.toDictionary().renameAt(index, PlistValue(key));
    setActionName(context, KZLocalizedStringWithID(113, QStringLiteral("Edit Key")));
    writeThroughShadow();
    if (context.center)
        context.center->postNotification(PlistObjectDidChangeNotification, childAtIndex(index),
                                         {{PlistObjectOldKey, oldKey}});
}

void ADPlistObject::insertChildren(const std::vector<Pointer> &children, const QStringList &keys,
                                   const KZIndexSet &indexes)
{
    insertChildren(context(), children, std::vector<PlistValue>(keys.begin(), keys.end()), indexes);
}

void ADPlistObject::insertChildren(const Context &context, const std::vector<Pointer> &children,
                                   std::vector<PlistValue> keys, const KZIndexSet &indexes)
{
    Q_ASSERT(hasChildren() && !_childrenDropped && qint64(children.size()) == indexes.count());
    Q_ASSERT(!hasKeys() || keys.size() == children.size());
    registerUndo(context,
                 [indexes](ADPlistObject &self) { self.removeChildrenAtIndexes(indexes); });
    std::vector<PlistValue> values;
    values.reserve(children.size());
    for (const Pointer &child : children)
        values.push_back(child->entryValue());
    kz_insertAtIndexes(childSlots(), indexes, Slots(children));
    if (hasKeys()) {
        _plist.toDictionary().insert(indexes, keys, std::move(values));
    } else {
        _plist.toArray().insert(indexes, std::move(values));
    }
    for (const Pointer &child : children)
        attachChild(*child, child->_indexInParent);
    renumberChildren();
    writeThroughShadow();
    post(context, PlistObjectDidAddChildNotification,
         {{PlistObjectChildIndexesKey, QVariant::fromValue(indexes)}});
}

void ADPlistObject::insertChild(const Pointer &child, qint64 index, const QString &key)
{
    insertChildren({child}, hasKeys() ? QStringList{key} : QStringList(), KZIndexSet(index));
}

void ADPlistObject::addChild(const Pointer &child, const QString &key)
{
    insertChild(child, childCount(), key);
}

ADPlistObject *ADPlistObject::createNewChildOfType(ADPlistType type, qint64 index,
                                                   const QString &key)
{
    const QString newKey = hasKeys() ? uniqueKeyWithPrefix(key) : QString();
    const PlistValue value = defaultValueForPlistType(type);
    const Pointer child = createWithPlist(value.kz_copyMutableContainers(), this);
    insertChild(child, index, newKey);
    return child.get();
}

void ADPlistObject::removeChildrenAtIndexes(const KZIndexSet &indexes)
{
    removeChildrenAtIndexes(context(), indexes);
}

void ADPlistObject::removeChildrenAtIndexes(const Context &context, const KZIndexSet &indexes)
{
    if (indexes.isEmpty())
        return;
    const std::vector<Pointer> removed = childrenAtIndexes(indexes);
    std::vector<PlistValue> removedKeys;
    if (hasKeys()) {
        removedKeys.reserve(size_t(indexes.count()));
        indexes.forEach([&](qint64 i) { removedKeys.push_back(_plist.containerKeyAt(i)); });
    }
    registerUndo(context, [removed, removedKeys, indexes](ADPlistObject &self) {
        self.insertChildren(self.context(), removed, removedKeys, indexes);
    });
    if (hasKeys())
        _plist.toDictionary().remove(indexes);
    else
        _plist.toArray().remove(indexes);
    for (const Pointer &node : removed) {
        node->_parent = nullptr;
        node->_parentIsNode = false;
        node->_indexInParent = -1;
    }
    kz_removeAtIndexes(*_children, indexes);
    renumberChildren();
    writeThroughShadow();
    post(context, PlistObjectDidRemoveChildNotification,
         {{PlistObjectChildIndexesKey, QVariant::fromValue(indexes)},
          {PlistObjectChildKey, QVariant::fromValue(removed)}});
}

void ADPlistObject::removeChildAtIndex(qint64 index)
{
    removeChildrenAtIndexes(KZIndexSet(index));
}

void ADPlistObject::removeAllChildren()
{
    removeChildrenAtIndexes(KZIndexSet::range(0, childCount()));
}

void ADPlistObject::replaceChildAtIndex(qint64 index, const Pointer &object)
{
    const Context context = this->context();
    removeChildrenAtIndexes(context, KZIndexSet(index));
    insertChildren(context, {object}, std::vector<PlistValue>(), KZIndexSet(index));
}

void ADPlistObject::reorderChildrenUsingMap(const KZIndexMap &map,
                                            const std::vector<Pointer> &movedChildren)
{
    reorderChildrenUsingMap(context(), map, movedChildren);
}

void ADPlistObject::reorderChildrenUsingMap(const Context &context, const KZIndexMap &map,
                                            const std::vector<Pointer> &movedChildren)
{
    if (childCount() == 0)
        return;
    Q_ASSERT(map.count() == childCount());
    const KZIndexMap inverse = map.inverseMap();
    registerUndo(context, [inverse, movedChildren](ADPlistObject &self) {
        self.reorderChildrenUsingMap(inverse, movedChildren);
    });
    if (_children)
        map.reorder(*_children);
    const std::vector<qsizetype> order(map.indices().begin(), map.indices().end());
    if (hasKeys())
        _plist.toDictionary().reorder(order); // the plain dictionary keeps the tree's order
    else
        _plist.toArray().reorder(order);
    renumberChildren();
    writeThroughShadow();
    QVariantMap info{{PlistObjectReorderMapKey, QVariant::fromValue(map)}};
    if (!movedChildren.empty())
        info.insert(PlistObjectMovedChildrenKey, QVariant::fromValue(movedChildren));
    post(context, PlistObjectDidChangeChildrenNotification, info);
}

void ADPlistObject::moveChildIndexes(const KZIndexSet &indexes, qint64 toIndex)
{
    const Context context = this->context();
    const KZIndexMap map = KZIndexMap::mapToMoveIndexes(indexes, toIndex, childCount());
    reorderChildrenUsingMap(context, map, childrenAtIndexes(indexes));
    setActionName(context, KZLocalizedStringWithID(117, QStringLiteral("Move")));
}

void ADPlistObject::sortKeysUsingSelector(KZComparison comparison, bool sortRecursively)
{
    const Context context = this->context();
    // Walks the subtree from a work list; dictionaries inside arrays are sorted too.
    std::vector<ADPlistObject *> work{this};
    while (!work.empty()) {
        ADPlistObject *node = work.back();
        work.pop_back();
        if (node->hasKeys()) {
            std::vector<qsizetype> order =
                ADKeyOrder::sortedOrder(node->_plist.toDictionary(), comparison);
            if (order.empty()) {
                order.resize(size_t(node->childCount()));
                std::iota(order.begin(), order.end(), 0);
            }
            node->reorderChildrenUsingMap(
                context, KZIndexMap(std::vector<qint64>(order.begin(), order.end())), {});
        }
        if (!sortRecursively)
            continue;
        for (qint64 i = 0; i < node->childCount(); ++i) {
            if (ADPlistObject *child = node->childAtIndex(i); child->hasChildren())
                work.push_back(child);
        }
    }
    setActionName(context, KZLocalizedStringWithID(114, QStringLiteral("Sort Keys")));
}

void ADPlistObject::sortValuesUsingSelector(KZComparison comparison, bool sortRecursively)
{
    const Context context = this->context();
    std::vector<ADPlistObject *> work{this};
    while (!work.empty()) {
        ADPlistObject *node = work.back();
        work.pop_back();
        if (!node->hasChildren())
            continue;
        // Leaves alone sort on their plain values, without a node for each.
        if (std::optional<std::vector<qint64>> order = leafOrder(node->_plist, comparison)) {
            node->reorderChildrenUsingMap(context, KZIndexMap(std::move(*order)), {});
            continue;
        }
        const std::vector<Pointer> children =
            node->childrenAtIndexes(KZIndexSet::range(0, node->childCount()));
        node->reorderChildrenUsingMap(
            context,
            KZIndexMap::sortMap(node->childCount(),
                                [&](qint64 a, qint64 b) {
                                    return children[size_t(a)]->compareUsingSelector(
                                        comparison, children[size_t(b)].get());
                                }),
            {});
        if (sortRecursively) {
            for (const Pointer &child : children)
                work.push_back(child.get());
        }
    }
    setActionName(context, KZLocalizedStringWithID(115, QStringLiteral("Sort Values")));
}

void ADPlistObject::sortValuesBySubkey(const QString &subkey, KZComparison comparison)
{
    if (!hasChildren())
        return;
    KZIndexSet dictionaries, others;
    std::vector<const ADPlistObject *> dictionaryValues, otherValues;
    for (qint64 i = 0; i < childCount(); ++i) {
        const ADPlistObject *child = childAtIndex(i);
        if (child->hasKeys()) {
            dictionaries.addIndex(i);
            dictionaryValues.push_back(child->childForKey(subkey)); // null: the null value
        } else {
            others.addIndex(i);
            otherValues.push_back(child);
        }
    }
    auto groupMap = [comparison](const KZIndexSet &group,
                                 const std::vector<const ADPlistObject *> &values) {
        const KZIndexMap sorted =
            KZIndexMap::sortMap(qint64(values.size()), [&](qint64 a, qint64 b) {
                return compareSortValues(comparison, values[size_t(a)], values[size_t(b)]);
            });
        return KZIndexMap::mapWithIndexSet(group).mapByApplyingMap(sorted);
    };
    std::vector<qint64> order = groupMap(dictionaries, dictionaryValues).indices();
    const std::vector<qint64> rest = groupMap(others, otherValues).indices();
    order.insert(order.end(), rest.begin(), rest.end());
    const Context context = this->context();
    reorderChildrenUsingMap(context, KZIndexMap(std::move(order)), {});
    setActionName(context, KZStringWithFormat(
                               KZLocalizedStringWithID(116, QStringLiteral("Sort By Subkey “%@”")),
                               {subkey}));
}

QSet<QString> ADPlistObject::unionOfChildrenSubkeys() const
{
    QSet<QString> subkeys;
    for (qint64 i = 0; i < childCount(); ++i) {
        const PlistValue child = shownValueForPlist(entryAtIndex(i));
        if (!child.isDictionary())
            continue;
        const PlistDictionary d = child.toDictionary();
        for (qsizetype k = 0; k < d.count(); ++k)
            subkeys.insert(d.keyAt(k));
    }
    return subkeys;
}

bool ADPlistObject::hasChildrenSubkeys() const
{
    // A UID shows as a dictionary with one key; nothing else changes kind when shown.
    for (qint64 i = 0, n = childCount(); i < n; ++i) {
        const PlistValue &entry = entryAtIndex(i);
        if (entry.kind() == PlistValue::Kind::Uid ||
            (entry.isDictionary() && entry.containerCount() > 0))
            return true;
    }
    return false;
}

int ADPlistObject::plistCompare(const ADPlistObject *other) const
{
    const ADPlistType mine = plistType();
    const ADPlistType theirs = other ? other->plistType() : ADPlistTypeNull;
    if (theirs == ADPlistTypeUnknown)
        return -1;
    if (mine != theirs)
        return mine < theirs ? -1 : 1;
    if (!other)
        return 0; // null against the null value
    const KZComparison keySort = ADKeySortPreferences::keySortSelector();
    if (mine == ADPlistTypeString)
        return KZCompareStrings(keySort, _plist.stringView(), other->_plist.stringView());
    if (hasChildren()) {
        const ADPlistObject *up = plistObjectParent();
        if (!up)
            return 0;
        if (up->hasKeys())
            return KZCompareStrings(keySort, key(), other->key());
        return _indexInParent < other->_indexInParent
                   ? -1
                   : (_indexInParent > other->_indexInParent ? 1 : 0);
    }
    return _plist.plistCompare(other->_plist);
}

int ADPlistObject::compareUsingSelector(KZComparison comparison, const ADPlistObject *other) const
{
    if (comparison == KZComparison::PlistCompare)
        return plistCompare(other);
    return KZCompareValues(comparison, _plist, other ? other->_plist : PlistValue::null());
}

quint32 ADPlistObject::plistTypeEnum() const
{
    static const char *const kCodes[] = {"PLTA", "bool", "rdat", "ldt ", "cDCT", "nmbr", "TEXT"};
    const ADPlistType type = plistType();
    if (type < ADPlistTypeArray || type > ADPlistTypeString)
        return 0;
    const char *code = kCodes[type];
    return (quint32(quint8(code[0])) << 24) | (quint32(quint8(code[1])) << 16) |
           (quint32(quint8(code[2])) << 8) | quint32(quint8(code[3]));
}
