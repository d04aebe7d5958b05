// The editing commands of the outline controller: new items, wrapping,
// moving, the clipboard, duplicating, deleting and sorting.

#include "ADPlistOutlineController.h"

#include "ADObjcLiteralWriter.h"
#include "ADPlistPasteboard.h"
#include "ADSwiftLiteralWriter.h"

#include "model/ADKeyOrder.h"
#include "model/ADKeySortPreferences.h"
#include "model/ADUndoManager.h"
#include "model/ArdeckKeyPath.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZComparison.h"
#include "shared/KZLocalizedString.h"
#include "shared/KZStringAdditions.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistFileIO.h"
#include "storage/PlistSerialization.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QSet>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <numeric>

namespace {

constexpr quint64 kEditKey = 1;
constexpr quint64 kEditValue = 2;

// A dictionary's entries in the order the settings sort keys; an array's values as they are.
std::pair<std::vector<PlistValue>, QStringList> valuesAndKeys(const PlistValue &list)
{
    std::vector<PlistValue> values;
    QStringList keys;
    if (!list.isDictionary()) {
        const PlistArray array = list.toArray();
        values.assign(array.begin(), array.end());
        return {std::move(values), keys};
    }
    const PlistDictionary dictionary = list.toDictionary();
    std::vector<qsizetype> order =
        ADKeyOrder::sortedOrder(dictionary, ADKeySortPreferences::keySortSelector());
    if (order.empty()) { // in order already
        order.resize(size_t(dictionary.count()));
        std::iota(order.begin(), order.end(), 0);
    }
    for (const qsizetype i : order) {
        values.push_back(dictionary.valueAt(i));
        keys << dictionary.keyAt(i);
    }
    return {std::move(values), keys};
}

std::vector<ADPlistObject *> plainPointers(const std::vector<ADPlistObject::Pointer> &objects)
{
    std::vector<ADPlistObject *> plain;
    for (const ADPlistObject::Pointer &object : objects)
        plain.push_back(object.get());
    return plain;
}

std::vector<PlistValue> valuesOf(const std::vector<ADPlistObject *> &items)
{
    std::vector<PlistValue> values;
    for (const ADPlistObject *item : items)
        values.push_back(item->plist());
    return values;
}

// The items' values as one array (their parent is an array, or they are the
// root) or one dictionary under their keys; the selection keeps them siblings.
PlistValue collectionOf(const std::vector<ADPlistObject *> &items)
{
    const ADPlistObject *parent = items.front()->plistObjectParent();
    if (!parent || !parent->hasKeys()) {
        PlistArray values = PlistArray::create(qsizetype(items.size()));
        for (const ADPlistObject *item : items)
            values.append(item->plist());
        return values.value();
    }
    PlistDictionary values = PlistDictionary::create(qsizetype(items.size()));
    for (const ADPlistObject *item : items)
        values.insert(item->key(), item->plist());
    return values.value();
}

// Marks a drag of this program's rows: which outline, and which of its drags.
const QString kOutlineDragType = QStringLiteral("application/x-arbordeck-outline-drag");

} // namespace

void ADPlistOutlineController::setActionName(int number, const char *name)
{
    if (_undoManager)
        _undoManager->setActionName(KZLocalizedStringWithID(number, QString::fromUtf8(name)));
}

ADPlistObject *ADPlistOutlineController::clickedRowItem() const
{
    if (ADPlistObject *clicked = _view ? _view->clickedItem() : nullptr)
        return clicked;
    const std::vector<ADPlistObject *> selected = selectedItems();
    ADPlistObject *current =
        ADPlistOutlineModel::itemForIndex(_model.selectionModel()->currentIndex());
    if (current && std::find(selected.begin(), selected.end(), current) != selected.end())
        return current;
    return selected.empty() ? nullptr : selected.back();
}

ADPlistObject *ADPlistOutlineController::makeNewObjectOfType(ADPlistType type,
                                                             ADPlistObject *parent, qint64 index,
                                                             const QString &key,
                                                             quint64 editOptions)
{
    if (type < 0)
        type = ADPlistType(_defaults.integerForKey(DefaultPlistTypeKey));
    ADPlistObject *made = nullptr;
    performOutlineUpdate([&] { made = parent->createNewChildOfType(type, index, key); });
    if (made && editOptions != 0) {
        const bool value = editOptions == kEditValue || !parent->hasKeys();
        QTimer::singleShot(0, this, [this, value, item = ADPlistObject::Pointer(made)] {
            if (_view && item->plistObjectParent())
                _view->editColumn(value ? ADPlistOutlineModel::ValueColumn
                                        : ADPlistOutlineModel::KeyColumn,
                                  item.get());
        });
    }
    setActionName(205, "New Child");
    return made;
}

void ADPlistOutlineController::addChild(ADPlistType type)
{
    ADPlistObject *item = clickedRowItem();
    if (!item || !item->hasChildren())
        return;
    makeNewObjectOfType(type, item, 0, QString(), kEditKey);
}

void ADPlistOutlineController::addSibling(ADPlistType type)
{
    ADPlistObject *item = clickedRowItem();
    ADPlistObject *parent = item ? item->plistObjectParent() : nullptr;
    if (!parent)
        return;
    makeNewObjectOfType(type, parent, item->indexInParent() + 1, QString(), kEditKey);
}

void ADPlistOutlineController::addDictionaryWithSelection()
{
    wrapSelection(ADPlistTypeDictionary);
}

void ADPlistOutlineController::addArrayWithSelection()
{
    wrapSelection(ADPlistTypeArray);
}

// Under a parent, the items move into a new container where the first
// stood; at the root, all the root's children go one level down.
void ADPlistOutlineController::wrapSelection(ADPlistType type)
{
    const std::vector<ADPlistObject *> items = clickedItems();
    if (items.empty())
        return;
    ADPlistObject *first = items.front();
    if (ADPlistObject *parent = first->plistObjectParent()) {
        const QString key = items.size() == 1 ? first->key() : QString();
        ADPlistObject *container =
            makeNewObjectOfType(type, parent, first->indexInParent(), QString(), kEditKey);
        movePlistObjects(items, 0, container);
        selectItems(items);
        if (!key.isNull())
            parent->setKey(key, container->indexInParent());
        return;
    }
    const ADPlistObject::Pointer container = ADPlistObject::createWithPlistType(type);
    ADPlistObject *root = first;
    std::vector<ADPlistObject::Pointer> children;
    QStringList keys;
    for (qint64 i = 0; i < root->childCount(); ++i) {
        children.push_back(root->childPointerAtIndex(i));
        keys << root->keyAtIndex(i);
    }
    performOutlineUpdate([&] {
        root->removeAllChildren();
        root->addChild(container, root->uniqueKey());
        for (size_t i = 0; i < children.size(); ++i)
            container->addChild(children[i],
                                type == ADPlistTypeDictionary ? keys[qsizetype(i)] : QString());
    });
    selectItems({container.get()});
    _model.expandItem(container.get());
}

void ADPlistOutlineController::movePlistObjects(const std::vector<ADPlistObject *> &objects,
                                                qint64 index, ADPlistObject *parent)
{
    if (objects.empty())
        return;
    KZIndexSet indexes;
    for (const ADPlistObject *object : objects)
        indexes.addIndex(object->indexInParent());
    ADPlistObject *oldParent = objects.front()->plistObjectParent();
    performOutlineUpdate([&] {
        if (oldParent == parent) {
            parent->moveChildIndexes(indexes, index);
            return;
        }
        // Walking down while the target counts up: several objects land in
        // reverse of their old order, which wrapping relies on.
        qint64 target = index;
        const std::vector<qint64> old = indexes.toVector();
        for (auto at = old.rbegin(); at != old.rend(); ++at) {
            const ADPlistObject::Pointer child = oldParent->childPointerAtIndex(*at);
            const QString key =
                parent->hasKeys() ? parent->uniqueKeyWithPrefix(child->key()) : QString();
            oldParent->removeChildAtIndex(*at);
            parent->insertChild(child, target++, key);
        }
    });
}

void ADPlistOutlineController::writePlistObjects(const std::vector<ADPlistObject *> &items,
                                                 ADPlistPasteboard &pasteboard)
{
    if (!items.empty())
        pasteboard.writePropertyList(collectionOf(items));
}

std::vector<ADPlistObject *>
ADPlistOutlineController::insertContentsOfPasteboard(const ADPlistPasteboard &pasteboard,
                                                     qint64 index, ADPlistObject *parent)
{
    const std::optional<PlistValue> list = pasteboard.propertyList();
    return list ? insertPropertyList(*list, index, parent) : std::vector<ADPlistObject *>();
}

std::vector<ADPlistObject *> ADPlistOutlineController::insertPropertyList(const PlistValue &list,
                                                                          qint64 index,
                                                                          ADPlistObject *parent)
{
    if (!parent || !parent->hasChildren() || !list.isContainer())
        return {};
    _model.expandItem(parent);
    const auto [values, sourceKeys] = valuesAndKeys(list);
    QSet<QString> used;
    if (parent->hasKeys()) {
        for (const QString &key : parent->keys().value_or(QStringList()))
            used.insert(key);
    }
    std::vector<ADPlistObject::Pointer> objects;
    QStringList keys;
    KZIndexSet indexes;
    for (size_t i = 0; i < values.size(); ++i) {
        objects.push_back(ADPlistObject::createWithPlist(values[i].kz_copyMutableContainers()));
        indexes.addIndex(index + qint64(i));
        if (!parent->hasKeys())
            continue;
        const QString source = sourceKeys.value(qsizetype(i));
        QString key = parent->uniqueKey();
        if (!source.isNull())
            key = parent->childForKey(source) ? kz_uniquifyInStrings(source, used) : source;
        keys << key;
        used.insert(key);
    }
    parent->insertChildren(objects, keys, indexes);
    return plainPointers(objects);
}

void ADPlistOutlineController::copy()
{
    writePlistObjects(clickedItems(), ADPlistPasteboard::general());
}

void ADPlistOutlineController::cut()
{
    copy();
    deletePlist();
    setActionName(201, "Cut");
}

void ADPlistOutlineController::paste()
{
    ADPlistObject *item = clickedRowItem();
    ADPlistObject *parent = item ? item->plistObjectParent() : nullptr;
    if (!parent)
        return;
    selectItems(insertContentsOfPasteboard(ADPlistPasteboard::general(), item->indexInParent() + 1,
                                           parent));
    setActionName(202, "Paste");
}

void ADPlistOutlineController::pasteChild()
{
    const std::vector<ADPlistObject *> targets = clickedItems();
    std::vector<ADPlistObject *> inserted;
    for (ADPlistObject *target : targets)
        inserted = insertContentsOfPasteboard(ADPlistPasteboard::general(), 0, target);
    if (targets.size() == 1)
        selectItems(inserted);
    setActionName(203, "Paste");
}

void ADPlistOutlineController::duplicate()
{
    const std::vector<ADPlistObject *> items = clickedItems();
    ADPlistObject *row = clickedRowItem();
    if (items.empty() || !row || !commitEditing())
        return;
    ADPlistObject *parent = items.front()->plistObjectParent();
    if (!parent)
        return;
    writePlistObjects(items, ADPlistPasteboard::privatePasteboard());
    selectAndEditItems(insertContentsOfPasteboard(ADPlistPasteboard::privatePasteboard(),
                                                  row->indexInParent() + 1, parent));
    setActionName(204, "Duplicate");
}

void ADPlistOutlineController::selectAndEditItems(const std::vector<ADPlistObject *> &items)
{
    selectItems(items);
    if (items.size() != 1 || !_view)
        return;
    const ADPlistObject::Pointer item(items.front());
    QTimer::singleShot(0, this, [this, item] {
        ADPlistObject *parent = item->plistObjectParent();
        if (_view && parent)
            _view->editColumn(parent->hasKeys() ? ADPlistOutlineModel::KeyColumn
                                                : ADPlistOutlineModel::ValueColumn,
                              item.get());
    });
}

void ADPlistOutlineController::deletePlist()
{
    if (validate_delete())
        removeItems(clickedItems());
}

// No structure definition applies yet, so no key is required and nothing asks first.
void ADPlistOutlineController::removeItems(const std::vector<ADPlistObject *> &items)
{
    if (items.empty())
        return;
    ADPlistObject *parent = items.front()->plistObjectParent();
    if (!parent)
        return;
    KZIndexSet indexes;
    for (const ADPlistObject *item : items)
        indexes.addIndex(item->indexInParent());
    const std::vector<ADPlistObject *> oldSelection = selectedItems();
    selectItemsRegisteringUndoFor({objectToSelectAfterRemovingChildIndexes(indexes, parent)},
                                  oldSelection);
    performOutlineUpdate([&] { parent->removeChildrenAtIndexes(indexes); });
    setActionName(211, "Delete");
}

void ADPlistOutlineController::sortKeys()
{
    const KZComparison comparison = ADKeySortPreferences::keySortSelector();
    performOutlineUpdate([&] {
        for (ADPlistObject *item : clickedItems())
            item->sortKeysUsingSelector(comparison);
    });
}

void ADPlistOutlineController::sortAllKeys()
{
    const std::vector<ADPlistObject *> selected = selectedItems();
    const KZComparison comparison = ADKeySortPreferences::keySortSelector();
    performOutlineUpdate([&] { _plistRoot->sortKeysUsingSelector(comparison, true); });
    selectItems(selected);
}

void ADPlistOutlineController::sortValues()
{
    performOutlineUpdate([&] {
        for (ADPlistObject *item : selectedItems())
            item->sortValuesUsingSelector(KZComparison::PlistCompare);
    });
}

void ADPlistOutlineController::sortAllValues()
{
    const std::vector<ADPlistObject *> selected = selectedItems();
    performOutlineUpdate(
        [&] { _plistRoot->sortValuesUsingSelector(KZComparison::PlistCompare, true); });
    selectItems(selected);
}

void ADPlistOutlineController::sortBySubkey(const QString &subkey)
{
    performOutlineUpdate([&] {
        for (ADPlistObject *item : clickedItems())
            item->sortValuesBySubkey(subkey, KZComparison::PlistCompare);
    });
}

void ADPlistOutlineController::copyAsSwiftLiteral()
{
    QGuiApplication::clipboard()->setText(
        ADSwiftLiteralWriter(valuesOf(clickedItems())).swiftLiteral());
}

void ADPlistOutlineController::copyAsObjcLiteral()
{
    QGuiApplication::clipboard()->setText(
        ADObjcLiteralWriter(valuesOf(clickedItems())).objcLiteral());
}

// One value as itself; several as the array or dictionary a copy makes of them.
std::optional<QString> ADPlistOutlineController::copyAsJSON()
{
    const std::vector<ADPlistObject *> items = clickedItems();
    if (items.empty())
        return std::nullopt;
    const PlistValue value = items.size() == 1 ? items.front()->plist() : collectionOf(items);
    const WriteResult json = PlistSerialization::write(value, ADPlistFormatJSON, true);
    if (!json)
        return json.error;
    QGuiApplication::clipboard()->setText(QString::fromUtf8(json.data));
    return std::nullopt;
}

void ADPlistOutlineController::copyKeyPath()
{
    QStringList paths;
    for (const ADPlistObject *item : clickedItems())
        paths << ArdeckKeyPath::textOf(item->path());
    QGuiApplication::clipboard()->setText(paths.join(u'\n'));
}

// --- drag and drop

std::unique_ptr<QMimeData>
ADPlistOutlineController::mimeDataForItems(const std::vector<ADPlistObject *> &items)
{
    std::vector<ADPlistObject *> siblings;
    for (ADPlistObject *item : items) {
        if (item->plistObjectParent() &&
            item->plistObjectParent() == items.front()->plistObjectParent())
            siblings.push_back(item);
    }
    if (siblings.empty())
        return std::make_unique<QMimeData>();
    std::unique_ptr<QMimeData> data =
        ADPlistPasteboard::mimeDataForPropertyList(collectionOf(siblings));
    _draggedItems.clear();
    for (ADPlistObject *item : siblings)
        _draggedItems.emplace_back(item);
    data->setData(kOutlineDragType,
                  QStringLiteral("%1:%2").arg(quintptr(this)).arg(++_dragSerial).toLatin1());
    return data;
}

std::vector<ADPlistObject *> ADPlistOutlineController::ownDraggedItems(const QMimeData *data) const
{
    const QByteArray mark = QStringLiteral("%1:%2").arg(quintptr(this)).arg(_dragSerial).toLatin1();
    if (!data || _draggedItems.empty() || data->data(kOutlineDragType) != mark)
        return {};
    std::vector<ADPlistObject *> items;
    for (const ADPlistObject::Pointer &item : _draggedItems) {
        if (!item->plistObjectParent())
            return {}; // removed since the drag began
        items.push_back(item.get());
    }
    return items;
}

std::optional<PlistValue> ADPlistOutlineController::droppedList(const QMimeData *data)
{
    if (!data)
        return std::nullopt;
    // Rows of another outline of the program come in as they were.
    if (data->hasFormat(kOutlineDragType))
        return ADPlistPasteboard::propertyListFromMimeData(data);
    // A file or text from elsewhere comes in as one value.
    PlistValue value;
    if (data->hasUrls() && data->urls().front().isLocalFile()) {
        value = PlistFileIO::readPlistFromFile(data->urls().front().toLocalFile(), false, nullptr,
                                               nullptr);
    } else if (data->hasText()) {
        value = PlistFileIO::readPlistFromData(data->text().toUtf8(), QString(), nullptr, nullptr);
    }
    if (value.isNone())
        return std::nullopt;
    PlistArray one = PlistArray::create(1);
    one.append(std::move(value));
    return one.value();
}

bool ADPlistOutlineController::validateDrop(const QMimeData *data, ADPlistObject *parent,
                                            qint64) const
{
    if (!_editable || !parent || !parent->hasChildren() || !data)
        return false;
    const std::vector<ADPlistObject *> own = ownDraggedItems(data);
    // Nothing goes into itself or below itself.
    for (const ADPlistObject *up = parent; up; up = up->plistObjectParent()) {
        if (std::find(own.begin(), own.end(), up) != own.end())
            return false;
    }
    return !own.empty() || data->hasFormat(PlistObjectsPboardType) || data->hasText() ||
           data->hasUrls();
}

bool ADPlistOutlineController::acceptDrop(const QMimeData *data, Qt::DropAction action,
                                          ADPlistObject *parent, qint64 index)
{
    if (!validateDrop(data, parent, index))
        return false;
    if (index < 0)
        index = parent->childCount();
    const std::vector<ADPlistObject *> own = ownDraggedItems(data);
    if (!own.empty() && action == Qt::MoveAction) {
        movePlistObjects(own, index, parent);
        selectItems(own);
        _draggedItems.clear();
        return true;
    }
    const std::optional<PlistValue> list = droppedList(data);
    if (!list)
        return false;
    const std::vector<ADPlistObject *> inserted = insertPropertyList(*list, index, parent);
    selectItems(inserted);
    setActionName(202, "Paste");
    return !inserted.empty();
}
