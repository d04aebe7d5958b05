// The operations of ADPlistObject that change a tree.

#include "ADPlistObject.h"

#include "ADKeySortPreferences.h"
#include "ADPlistCoercionHandler.h"
#include "ADPlistNotifications.h"
#include "ADUndoManager.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

namespace {

std::vector<PlistValue> plistsOf(const std::vector<ADPlistObject::Pointer> &nodes)
{
    std::vector<PlistValue> plists;
    plists.reserve(nodes.size());
    for (const ADPlistObject::Pointer &node : nodes)
        plists.push_back(node->plist());
    return plists;
}

// Sort values where null stands for the null value, which sorts after every type.
int compareSortValues(KZComparison comparison, const ADPlistObject *a, const ADPlistObject *b)
{
    if (a)
        return a->compareUsingSelector(comparison, b);
    return b ? -b->compareUsingSelector(comparison, nullptr) : 0;
}

} // namespace

void ADPlistObject::registerUndo(std::function<void(ADPlistObject &)> inverse)
{
    ADUndoManager *undo = undoManager();
    if (!undo)
        return;
    // The action holds the node, so undo can bring back a node that was removed.
    undo->registerUndo(
        this, [self = shared_from_this(), inverse = std::move(inverse)] { inverse(*self); });
}

void ADPlistObject::setActionName(const QString &name) const
{
    if (ADUndoManager *undo = undoManager())
        undo->setActionName(name);
}

void ADPlistObject::renumberChildren()
{
    if (!_children)
        return;
    for (size_t i = 0; i < _children->size(); ++i)
        (*_children)[i]->_indexInParent = qint64(i);
}

void ADPlistObject::writeThroughToParent()
{
    ADPlistObject *up = plistObjectParent();
    if (!up || _indexInParent < 0)
        return;
    // The parent's plain container lists its entries in the order of its children.
    if (up->hasKeys())
        up->_plist.toDictionary().replaceAt(_indexInParent, _plist);
    else
        up->_plist.toArray().replace(_indexInParent, _plist);
}

void ADPlistObject::setPlist(const PlistValue &plist)
{
    if (!hasChildren() && plist.isEqualToPlist(_plist))
        return;
    const PlistValue old = _plist;
    const std::shared_ptr<ADValueViewer> oldViewer = _valueViewer;
    registerUndo([old](ADPlistObject &self) { self.setPlist(old); });
    if (hasChildren())
        destroyChildrenAndNotify(true);
    if (old.plistType() != plist.plistType())
        setValueViewer(nullptr);
    _plist = plist.kz_copyMutableContainers();
    writeThroughToParent();
    if (hasChildren())
        createChildrenAndNotify(true);
    post(PlistObjectDidChangeNotification,
         {{PlistObjectOldValue, QVariant::fromValue(old)},
          {PlistObjectOldValueViewer, QVariant::fromValue(oldViewer)}});
}

void ADPlistObject::coerceToPlistType(ADPlistType type)
{
    setPlist(ADPlistCoercionHandler::sharedCoercionHandler().coercePlist(_plist, type));
}

void ADPlistObject::setValueViewer(const std::shared_ptr<ADValueViewer> &viewer)
{
    if (viewer == _valueViewer)
        return;
    _valueViewer = viewer;
    post(PlistObjectDidChangeNotification, {});
}

void ADPlistObject::setKey(const QString &key, qint64 childIndex)
{
    Q_ASSERT(hasKeys() && childIndex >= 0 && childIndex < childCount());
    const QString oldKey = keyAtIndex(childIndex);
    if (oldKey == key)
        return;
    // A sibling under the new key gives way; the child at the index survives.
    if (const qint64 sibling = indexOfKey(key); sibling != KZNotFound) {
        removeChildAtIndex(sibling);
        if (sibling < childIndex)
            --childIndex;
    }
    const qint64 index = childIndex;
    registerUndo([oldKey, index](ADPlistObject &self) { self.setKey(oldKey, index); });
    ADPlistObject *child = childAtIndex(index);
    (*_keys)[index] = key;
    _plist.toDictionary().renameAt(index, PlistValue(key));
    _childrenByKey->remove(oldKey);
    _childrenByKey->insert(key, child);
    setActionName(KZLocalizedStringWithID(113, QStringLiteral("Edit Key")));
    if (KZNotificationCenter *center = notificationCenter())
        center->postNotification(PlistObjectDidChangeNotification, child,
                                 {{PlistObjectOldKey, oldKey}});
}

void ADPlistObject::insertChildren(const std::vector<Pointer> &children, const QStringList &keys,
                                   const KZIndexSet &indexes)
{
    Q_ASSERT(hasChildren() && qint64(children.size()) == indexes.count());
    Q_ASSERT(!hasKeys() || keys.size() == qsizetype(children.size()));
    registerUndo([indexes](ADPlistObject &self) { self.removeChildrenAtIndexes(indexes); });
    kz_insertAtIndexes(*_children, indexes, std::vector<Pointer>(children));
    if (hasKeys()) {
        std::vector<PlistValue> keyValues;
        keyValues.reserve(size_t(keys.size()));
        for (qsizetype i = 0; i < keys.size(); ++i) {
            keyValues.emplace_back(keys[i]);
            _childrenByKey->insert(keys[i], children[size_t(i)].get());
        }
        kz_insertAtIndexes(*_keys, indexes, QStringList(keys));
        _plist.toDictionary().insert(indexes, keyValues, plistsOf(children));
    } else {
        _plist.toArray().insert(indexes, plistsOf(children));
    }
    for (const Pointer &child : children)
        child->_parent = this;
    renumberChildren();
    post(PlistObjectDidAddChildNotification,
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
    if (indexes.isEmpty())
        return;
    const std::vector<Pointer> removed = childrenAtIndexes(indexes);
    QStringList removedKeys;
    if (hasKeys())
        indexes.forEach([&](qint64 i) { removedKeys << (*_keys)[i]; });
    registerUndo([removed, removedKeys, indexes](ADPlistObject &self) {
        self.insertChildren(removed, removedKeys, indexes);
    });
    if (hasKeys()) {
        _plist.toDictionary().remove(indexes);
        for (const QString &key : std::as_const(removedKeys))
            _childrenByKey->remove(key);
        kz_removeAtIndexes(*_keys, indexes);
    } else {
        _plist.toArray().remove(indexes);
    }
    for (const Pointer &node : removed) {
        node->_parent = nullptr;
        node->_indexInParent = -1;
    }
    kz_removeAtIndexes(*_children, indexes);
    renumberChildren();
    post(PlistObjectDidRemoveChildNotification,
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
    removeChildAtIndex(index);
    insertChild(object, index);
}

void ADPlistObject::reorderChildrenUsingMap(const KZIndexMap &map,
                                            const std::vector<Pointer> &movedChildren)
{
    if (childCount() == 0)
        return;
    Q_ASSERT(map.count() == childCount());
    const KZIndexMap inverse = map.inverseMap();
    registerUndo([inverse, movedChildren](ADPlistObject &self) {
        self.reorderChildrenUsingMap(inverse, movedChildren);
    });
    map.reorder(*_children);
    std::vector<qsizetype> order(map.indices().begin(), map.indices().end());
    if (hasKeys()) {
        QStringList keys;
        keys.reserve(_keys->size());
        for (const qint64 from : map.indices())
            keys << (*_keys)[from];
        _keys->swap(keys);
        _plist.toDictionary().reorder(order); // the plain dictionary keeps the tree's order
    } else {
        _plist.toArray().reorder(order);
    }
    renumberChildren();
    QVariantMap info{{PlistObjectReorderMapKey, QVariant::fromValue(map)}};
    if (!movedChildren.empty())
        info.insert(PlistObjectMovedChildrenKey, QVariant::fromValue(movedChildren));
    post(PlistObjectDidChangeChildrenNotification, info);
}

void ADPlistObject::moveChildIndexes(const KZIndexSet &indexes, qint64 toIndex)
{
    const KZIndexMap map = KZIndexMap::mapToMoveIndexes(indexes, toIndex, childCount());
    reorderChildrenUsingMap(map, childrenAtIndexes(indexes));
    setActionName(KZLocalizedStringWithID(117, QStringLiteral("Move")));
}

void ADPlistObject::sortKeysUsingSelector(KZComparison comparison, bool sortRecursively)
{
    // Walks the subtree from a work list; dictionaries inside arrays are sorted too.
    std::vector<ADPlistObject *> work{this};
    while (!work.empty()) {
        ADPlistObject *node = work.back();
        work.pop_back();
        if (node->hasKeys()) {
            const QStringList &keys = *node->_keys;
            node->reorderChildrenUsingMap(
                KZIndexMap::sortMap(node->childCount(), [&](qint64 a, qint64 b) {
                    return KZCompareStrings(comparison, keys[a], keys[b]);
                }));
        }
        if (sortRecursively && node->_children) {
            for (const Pointer &child : *node->_children)
                work.push_back(child.get());
        }
    }
    setActionName(KZLocalizedStringWithID(114, QStringLiteral("Sort Keys")));
}

void ADPlistObject::sortValuesUsingSelector(KZComparison comparison, bool sortRecursively)
{
    std::vector<ADPlistObject *> work{this};
    while (!work.empty()) {
        ADPlistObject *node = work.back();
        work.pop_back();
        if (!node->hasChildren())
            continue;
        const std::vector<Pointer> &children = *node->_children;
        node->reorderChildrenUsingMap(KZIndexMap::sortMap(node->childCount(), [&](qint64 a,
                                                                                  qint64 b) {
            return children[size_t(a)]->compareUsingSelector(comparison, children[size_t(b)].get());
        }));
        if (sortRecursively) {
            for (const Pointer &child : *node->_children)
                work.push_back(child.get());
        }
    }
    setActionName(KZLocalizedStringWithID(115, QStringLiteral("Sort Values")));
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
    reorderChildrenUsingMap(KZIndexMap(std::move(order)));
    setActionName(KZStringWithFormat(
        KZLocalizedStringWithID(116, QStringLiteral("Sort By Subkey “%@”")), {subkey}));
}

QSet<QString> ADPlistObject::unionOfChildrenSubkeys() const
{
    QSet<QString> subkeys;
    for (qint64 i = 0; i < childCount(); ++i) {
        const ADPlistObject *child = childAtIndex(i);
        if (child->hasKeys())
            subkeys.unite(QSet<QString>(child->_keys->begin(), child->_keys->end()));
    }
    return subkeys;
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
