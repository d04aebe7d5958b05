#include "ADPlistOutlineController.h"

#include "ADOutlineSelectionModel.h"

#include "model/ADPlistNotifications.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZLocalizedString.h"
#include "shared/PlistDictionary.h"
#include "viewers/ADValueViewer.h"
#include "viewers/ADValueViewerRegistry.h"

#include <QHash>

#include <algorithm>

namespace {

using Validator = bool (ADPlistOutlineController::*)() const;

// Each command that can be disabled, with the rule that decides it.
const QHash<QString, Validator> &validators()
{
    using C = ADPlistOutlineController;
    static const QHash<QString, Validator> table{
        {QStringLiteral("addChild"), &C::validate_addChild},
        {QStringLiteral("addSibling"), &C::validate_addSibling},
        {QStringLiteral("addChildKey"), &C::validate_addChildKey},
        {QStringLiteral("addSiblingKey"), &C::validate_addSiblingKey},
        {QStringLiteral("addChildElement"), &C::validate_editableOnly},
        {QStringLiteral("addSiblingElement"), &C::validate_editableOnly},
        {QStringLiteral("addDictionaryWithSelection"), &C::validate_editableOnly},
        {QStringLiteral("addArrayWithSelection"), &C::validate_editableOnly},
        {QStringLiteral("sortAllKeys"), &C::validate_editableOnly},
        {QStringLiteral("sortAllValues"), &C::validate_editableOnly},
        {QStringLiteral("sortBySubkey"), &C::validate_editableOnly},
        {QStringLiteral("chooseClass"), &C::validate_chooseClass},
        {QStringLiteral("copy"), &C::validate_copy},
        {QStringLiteral("copyAsSwiftLiteral"), &C::validate_copy},
        {QStringLiteral("copyAsObjcLiteral"), &C::validate_copy},
        {QStringLiteral("cut"), &C::validate_cut},
        {QStringLiteral("duplicate"), &C::validate_duplicate},
        {QStringLiteral("delete"), &C::validate_delete},
        {QStringLiteral("deletePlist"), &C::validate_delete},
        {QStringLiteral("editKey"), &C::validate_editKey},
        {QStringLiteral("editValue"), &C::validate_editValue},
        {QStringLiteral("selectParent"), &C::validate_selectParent},
        {QStringLiteral("setPlistDefaultValue"), &C::validate_setPlistDefaultValue},
        {QStringLiteral("sortKeys"), &C::validate_sortKeys},
        {QStringLiteral("sortValues"), &C::validate_sortValues},
        {QStringLiteral("sortBySubkeyMenuAction"), &C::validate_sortBySubkeyMenuAction},
        {QStringLiteral("viewBySubkeyMenuAction"), &C::validate_viewBySubkeyMenuAction},
        {QStringLiteral("viewAs"), &C::validate_viewAs},
        {QStringLiteral("toggleRawKeysAndValues"), &C::validate_toggleRawKeysAndValues},
        {QStringLiteral("undo"), &C::validate_undo},
        {QStringLiteral("redo"), &C::validate_redo},
    };
    return table;
}

bool isContainerType(ADPlistType type)
{
    return type == ADPlistTypeArray || type == ADPlistTypeDictionary;
}

} // namespace

ADPlistOutlineController::ADPlistOutlineController(KZUserDefaults &defaults, QObject *parent)
    : QObject(parent), _registry(std::make_unique<ADValueViewerRegistry>()), _defaults(defaults)
{
    _showRawKeysAndValues = _defaults.boolForKey(ADPlistOutlineShowRawKeysAndValuesKey);
    _model.setDragAndDrop(this);
    _registry->setSavePreferredViewerIdentifiers(
        _defaults.boolForKey(SavePreferredViewerIdentifiersKey));
    connect(&_defaults, &KZUserDefaults::valueChanged, this, [this](const QString &key) {
        if (key != SavePreferredViewerIdentifiersKey)
            return;
        _registry->setSavePreferredViewerIdentifiers(
            _defaults.boolForKey(SavePreferredViewerIdentifiersKey));
        reloadDataPreservingSelection();
    });
    _model.setValueViewerRegistry(_registry.get());
    _model.setShowRawKeysAndValues(_showRawKeysAndValues);
    _plistRoot = ADPlistObject::createWithPlist(PlistDictionary::create(), this);
    _model.setRoot(_plistRoot.get());
}

ADPlistOutlineController::~ADPlistOutlineController()
{
    stopObservingCenter();
    if (_plistRoot)
        _plistRoot->setParent(nullptr);
}

// --- state ---------------------------------------------------------------------------------

void ADPlistOutlineController::setPlistRoot(const ADPlistObject::Pointer &root)
{
    if (root == _plistRoot)
        return;
    const QList<QVariantList> selected = selectedPaths();
    const QList<QVariantList> expanded = expandedPaths();
    if (_undoManager)
        _undoManager->registerUndo(this, [this, old = _plistRoot] { setPlistRoot(old); });
    if (_plistRoot)
        _plistRoot->setParent(nullptr);
    _plistRoot = root;
    if (_plistRoot)
        _plistRoot->setParent(this);
    _model.setRoot(_plistRoot.get());
    expandPaths(expanded);
    selectPaths(selected);
    emit plistRootChanged();
}

void ADPlistOutlineController::setEditable(bool editable)
{
    if (editable == _editable)
        return;
    _editable = editable;
    reloadDataPreservingSelection();
}

void ADPlistOutlineController::setShowRawKeysAndValues(bool showRaw)
{
    if (showRaw == _showRawKeysAndValues)
        return;
    _showRawKeysAndValues = showRaw;
    _model.setShowRawKeysAndValues(showRaw);
    reloadDataPreservingSelection();
}

void ADPlistOutlineController::setStructureDefinitionIdentifier(const QString &identifier)
{
    if (identifier == _structureDefinitionIdentifier)
        return;
    _structureDefinitionIdentifier = identifier;
    // A new, empty document takes the skeleton of its definition.
    if (_plistRoot && _plistRoot->childCount() == 0 && !identifier.isNull()) {
        const PlistValue skeleton = _plistRoot->defaultValue();
        if (!skeleton.isNone())
            _plistRoot->setPlist(skeleton.kz_copyMutableContainers());
    }
    reloadDataPreservingSelection();
}

void ADPlistOutlineController::setPlistFormat(ADPlistFormat format)
{
    if (format == _plistFormat)
        return;
    _plistFormat = format;
    _model.setPlistFormat(format);
    reloadDataPreservingSelection();
}

void ADPlistOutlineController::setNotificationCenter(KZNotificationCenter *center)
{
    if (center == _notificationCenter)
        return;
    stopObservingCenter();
    _notificationCenter = center;
    observeCenter();
}

void ADPlistOutlineController::observeCenter()
{
    if (!_notificationCenter)
        return;
    const auto observe = [this](const QString &name,
                                void (ADPlistOutlineController::*handler)(const KZNotification &)) {
        _observations.push_back(_notificationCenter->addObserver(
            name, nullptr, [this, handler](const KZNotification &n) { (this->*handler)(n); }));
    };
    observe(PlistObjectDidChangeNotification, &ADPlistOutlineController::plistChanged);
    observe(PlistObjectDidChangeChildrenNotification,
            &ADPlistOutlineController::plistChangedChildren);
    observe(PlistObjectDidAddChildNotification, &ADPlistOutlineController::plistAdded);
    observe(PlistObjectDidRemoveChildNotification, &ADPlistOutlineController::plistRemoved);
}

void ADPlistOutlineController::stopObservingCenter()
{
    if (_notificationCenter) {
        for (const KZNotificationCenter::Token token : _observations)
            _notificationCenter->removeObserver(token);
    }
    _observations.clear();
}

void ADPlistOutlineController::performOutlineUpdate(const std::function<void()> &block)
{
    _updatingOutlineView = true;
    block();
    _updatingOutlineView = false;
}

// --- following the tree ----------------------------------------------------------------------

void ADPlistOutlineController::plistChanged(const KZNotification &notification)
{
    auto *item =
        const_cast<ADPlistObject *>(static_cast<const ADPlistObject *>(notification.object));
    const QVariant oldValue = notification.userInfo.value(PlistObjectOldValue);
    // An absent old value counts as a container: a key-only change reloads once more, harmlessly.
    const bool wasContainer =
        !oldValue.isValid() || isContainerType(oldValue.value<PlistValue>().plistType());
    _model.reloadItem(item, wasContainer != item->hasChildren());
}

void ADPlistOutlineController::plistChangedChildren(const KZNotification &notification)
{
    auto *parent =
        const_cast<ADPlistObject *>(static_cast<const ADPlistObject *>(notification.object));
    commitEditing();
    _model.moveItems(notification.userInfo.value(PlistObjectReorderMapKey).value<KZIndexMap>(),
                     parent);
    if (!_updatingOutlineView)
        return;
    const auto moved =
        notification.userInfo.value(PlistObjectMovedChildrenKey).value<ADPlistObjectList>();
    if (!moved.empty()) {
        std::vector<ADPlistObject *> items;
        for (const ADPlistObject::Pointer &node : moved)
            items.push_back(node.get());
        selectItems(items);
    }
    reloadKeysForChildrenOfItem(parent, false);
}

void ADPlistOutlineController::plistAdded(const KZNotification &notification)
{
    auto *parent =
        const_cast<ADPlistObject *>(static_cast<const ADPlistObject *>(notification.object));
    const auto indexes =
        notification.userInfo.value(PlistObjectChildIndexesKey).value<KZIndexSet>();
    commitEditing();
    if (!_updatingOutlineView) {
        _model.insertItemsAtIndexes(indexes, parent);
        _model.reloadItem(parent, false);
        return;
    }
    _model.insertItemsAtIndexes(indexes, parent);
    std::vector<ADPlistObject *> added;
    for (const ADPlistObject::Pointer &child : parent->childrenAtIndexes(indexes))
        added.push_back(child.get());
    selectItems(added);
    reloadViewsForItem(parent); // its value shows a count
    if (parent->plistType() == ADPlistTypeArray)
        reloadKeysForChildrenOfItem(parent, false); // later indexes shifted
}

void ADPlistOutlineController::plistRemoved(const KZNotification &notification)
{
    auto *parent =
        const_cast<ADPlistObject *>(static_cast<const ADPlistObject *>(notification.object));
    const auto indexes =
        notification.userInfo.value(PlistObjectChildIndexesKey).value<KZIndexSet>();
    const auto removed =
        notification.userInfo.value(PlistObjectChildKey).value<ADPlistObjectList>();
    commitEditing();
    _model.removeItemsAtIndexes(indexes, parent, removed);
    if (!_updatingOutlineView) {
        _model.reloadItem(parent, false);
        return;
    }
    selectItems({objectToSelectAfterRemovingChildIndexes(indexes, parent)});
    reloadViewsForItem(parent);
    if (parent->plistType() == ADPlistTypeArray)
        reloadKeysForChildrenOfItem(parent, false);
}

ADPlistObject *
ADPlistOutlineController::objectToSelectAfterRemovingChildIndexes(const KZIndexSet &indexes,
                                                                  ADPlistObject *parent)
{
    for (qint64 i = 0; i < parent->childCount(); ++i) {
        if (!indexes.contains(i) && indexes.contains(i + 1))
            return parent->childAtIndex(i);
    }
    return parent;
}

// --- selection -------------------------------------------------------------------------------

std::vector<ADPlistObject *> ADPlistOutlineController::selectedItems() const
{
    std::vector<ADPlistObject *> items;
    for (const QModelIndex &index : _model.selectionModel()->selectedRows())
        items.push_back(ADPlistOutlineModel::itemForIndex(index));
    std::sort(items.begin(), items.end(), &ADPlistOutlineModel::isBefore);
    return items;
}

ADPlistObject *ADPlistOutlineController::firstSelectedItem() const
{
    const std::vector<ADPlistObject *> items = selectedItems();
    return items.empty() ? _plistRoot.get() : items.front();
}

std::vector<ADPlistObject *> ADPlistOutlineController::clickedItems() const
{
    ADPlistObject *clicked = _view ? _view->clickedItem() : nullptr;
    std::vector<ADPlistObject *> selected = selectedItems();
    if (clicked && std::find(selected.begin(), selected.end(), clicked) == selected.end())
        return {clicked};
    return selected;
}

ADPlistObject *ADPlistOutlineController::singleClickedItem() const
{
    const std::vector<ADPlistObject *> items = clickedItems();
    return items.size() == 1 ? items.front() : nullptr;
}

ADPlistObject *ADPlistOutlineController::selectedParent() const
{
    return static_cast<ADOutlineSelectionModel *>(_model.selectionModel())->selectedParent();
}

void ADPlistOutlineController::selectItems(const std::vector<ADPlistObject *> &items,
                                           bool registerUndo)
{
    if (registerUndo)
        selectItemsRegisteringUndoFor(items, selectedItems());
    else
        selectItemsRegisteringUndoFor(items, {});
}

void ADPlistOutlineController::selectItemsRegisteringUndoFor(
    const std::vector<ADPlistObject *> &items, const std::vector<ADPlistObject *> &oldSelection)
{
    commitEditing();
    if (!oldSelection.empty() && _undoManager) {
        std::vector<ADPlistObject::Pointer> keepNew, keepOld;
        for (ADPlistObject *item : items)
            keepNew.emplace_back(item);
        for (ADPlistObject *item : oldSelection)
            keepOld.emplace_back(item);
        _undoManager->registerUndo(this, [this, keepNew, keepOld] {
            std::vector<ADPlistObject *> restore, current;
            for (const auto &node : keepOld)
                restore.push_back(node.get());
            for (const auto &node : keepNew)
                current.push_back(node.get());
            selectItemsRegisteringUndoFor(restore, current);
        });
    }
    QItemSelectionModel *selection = _model.selectionModel();
    if (items.empty()) {
        selection->clearSelection();
        return;
    }
    revealItem(items.front());
    selection->select(rowsOf(items),
                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    const QModelIndex current = _model.indexForItem(items.front());
    selection->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
}

// The rows of the items as few ranges as they make. A selection of very many
// separate runs is the first item alone: every later change of such a
// selection would cost time in proportion to the square of its runs.
QItemSelection ADPlistOutlineController::rowsOf(const std::vector<ADPlistObject *> &items) const
{
    constexpr qsizetype kMostRuns = 1024;
    std::vector<QModelIndex> rows;
    rows.reserve(items.size());
    for (ADPlistObject *item : items) {
        if (const QModelIndex index = _model.indexForItem(item); index.isValid())
            rows.push_back(index);
    }
    const bool siblings = std::all_of(items.begin(), items.end(), [&](const ADPlistObject *item) {
        return item->plistObjectParent() == items.front()->plistObjectParent();
    });
    std::sort(rows.begin(), rows.end(), [siblings](const QModelIndex &a, const QModelIndex &b) {
        return siblings ? a.row() < b.row()
                        : ADPlistOutlineModel::isBefore(ADPlistOutlineModel::itemForIndex(a),
                                                        ADPlistOutlineModel::itemForIndex(b));
    });
    // Runs as plain indexes first: a selection range holds persistent ones,
    // which cost the model a record each.
    std::vector<std::pair<QModelIndex, QModelIndex>> runs;
    for (size_t first = 0; first < rows.size();) {
        size_t last = first;
        while (last + 1 < rows.size() && rows[last + 1].row() == rows[last].row() + 1 &&
               rows[last + 1].parent() == rows[first].parent())
            ++last;
        runs.emplace_back(rows[first], rows[last]);
        first = last + 1;
    }
    if (qsizetype(runs.size()) > kMostRuns)
        runs.resize(1, {_model.indexForItem(items.front()), _model.indexForItem(items.front())});
    QItemSelection selection;
    for (const auto &[top, bottom] : runs)
        selection.append(QItemSelectionRange(top, bottom));
    return selection;
}

void ADPlistOutlineController::registerUndoForCurrentSelection()
{
    const std::vector<ADPlistObject *> current = selectedItems();
    selectItemsRegisteringUndoFor(current, current);
}

void ADPlistOutlineController::revealItem(ADPlistObject *item)
{
    if (!item || _model.hasRow(item))
        return;
    ADPlistObject *up = item->plistObjectParent();
    if (!up)
        return;
    revealItem(up);
    _model.expandItem(up);
}

QList<QVariantList> ADPlistOutlineController::selectedPaths() const
{
    QList<QVariantList> paths;
    for (const ADPlistObject *item : selectedItems())
        paths.append(item->path());
    return paths;
}

void ADPlistOutlineController::selectPaths(const QList<QVariantList> &paths)
{
    std::vector<ADPlistObject *> items;
    for (const QVariantList &path : paths) {
        if (ADPlistObject *item = _plistRoot ? _plistRoot->objectAtPath(path) : nullptr)
            items.push_back(item);
    }
    selectItems(items);
}

QList<QVariantList> ADPlistOutlineController::expandedPaths() const
{
    QList<QVariantList> paths;
    for (const ADPlistObject *item : _model.expandedItemsInOrder())
        paths.append(item->path());
    return paths;
}

void ADPlistOutlineController::expandPaths(const QList<QVariantList> &paths)
{
    if (!_plistRoot)
        return;
    _model.collapseItem(_plistRoot.get(), true);
    for (const QVariantList &path : paths) {
        if (ADPlistObject *item = _plistRoot->objectAtPath(path)) {
            revealItem(item);
            _model.expandItem(item);
        }
    }
}

// --- reloading -------------------------------------------------------------------------------

void ADPlistOutlineController::reloadDataPreservingSelection()
{
    const std::vector<ADPlistObject *> selected = selectedItems();
    _model.reloadData();
    selectItems(selected);
}

void ADPlistOutlineController::reloadViewsForItem(ADPlistObject *item)
{
    _model.reloadItem(item, false);
}

void ADPlistOutlineController::reloadKeysForChildrenOfItem(ADPlistObject *item, bool recursive)
{
    _model.reloadColumnsOfChildren(item, recursive, ADPlistOutlineModel::KeyColumn,
                                   ADPlistOutlineModel::KeyColumn);
}

void ADPlistOutlineController::reloadViewsForChildrenOfItem(ADPlistObject *item, bool recursive)
{
    _model.reloadColumnsOfChildren(item, recursive, ADPlistOutlineModel::KeyColumn,
                                   ADPlistOutlineModel::ValueColumn);
}

// --- editing in cells ------------------------------------------------------------------------

bool ADPlistOutlineController::commitEditing()
{
    return _view ? _view->commitEditing() : true;
}

void ADPlistOutlineController::abortEditing()
{
    if (_view)
        _view->abortEditing();
}

int ADPlistOutlineController::nextEditableColumn(const ADPlistObject &item, int startColumn,
                                                 bool forward) const
{
    const QModelIndex row = _model.indexForItem(&item);
    for (int step = 1; step < ADPlistOutlineModel::ColumnCount; ++step) {
        const int column =
            (startColumn + (forward ? step : -step) + ADPlistOutlineModel::ColumnCount) %
            ADPlistOutlineModel::ColumnCount;
        if (_model.flags(row.siblingAtColumn(column)) & Qt::ItemIsEditable)
            return column;
    }
    return -1;
}

QStringList ADPlistOutlineController::completions(const QString &, int, const ADPlistObject &) const
{
    // Completion draws on the index of keys and values of the document, which
    // is not kept yet; under a structure definition it offers nothing at all.
    return {};
}

std::optional<QString> ADPlistOutlineController::setValueFromCell(ADPlistObject &item,
                                                                  const QString &text)
{
    const ADValueViewerRegistry::Viewer viewer = _registry->viewerForPlistObject(item);
    if (!viewer)
        return std::nullopt;
    QString error;
    const PlistValue value = viewer->plistForEditingString(text, &error);
    if (value.isNone())
        return error.isNull() ? std::nullopt : std::optional<QString>(error);
    setValue(item, value);
    return std::nullopt;
}

void ADPlistOutlineController::setValue(ADPlistObject &item, const PlistValue &value)
{
    if (value.isSameObject(item.plist()) || value.isEqualToPlist(item.plist()))
        return;
    item.setPlist(value);
    // Named once the edit has opened its undo group.
    if (_undoManager)
        _undoManager->setActionName(KZLocalizedStringWithID(249, QStringLiteral("Edit Value")));
}

void ADPlistOutlineController::changeClass(ADPlistObject &item, ADPlistType type)
{
    if (!commitEditing() || type == item.plistType())
        return;
    item.coerceToPlistType(type);
    if (_undoManager)
        _undoManager->setActionName(KZLocalizedStringWithID(140, QStringLiteral("Edit Class")));
}

bool ADPlistOutlineController::isClassMenuItemValid(ADPlistType type,
                                                    const ADPlistObject &object) const
{
    return _delegate ? _delegate->shouldAllowPlistType(type, object) : object.canBePlistType(type);
}

std::vector<ADPlistType>
ADPlistOutlineController::allowedPlistTypes(const ADPlistObject &item) const
{
    const ADPlistMask mask = ADPlistObject::plistTypeMaskForFormat(_plistFormat, item.isRoot());
    std::vector<ADPlistType> types;
    for (ADPlistType type = ADPlistTypeArray; type <= ADPlistTypeNull; ++type) {
        if (ADPlistMaskContainsType(mask, type) && item.canBePlistType(type))
            types.push_back(type);
    }
    return types;
}

// --- commands --------------------------------------------------------------------------------

QStringList ADPlistOutlineController::validatedCommands()
{
    return validators().keys();
}

bool ADPlistOutlineController::validateCommand(const QString &command) const
{
    const auto found = validators().constFind(command);
    return found == validators().constEnd() || (this->*found.value())();
}

void ADPlistOutlineController::undo()
{
    if (!_undoManager)
        return;
    performOutlineUpdate([this] {
        commitEditing();
        _undoManager->undo();
    });
}

void ADPlistOutlineController::redo()
{
    if (!_undoManager)
        return;
    performOutlineUpdate([this] {
        commitEditing();
        _undoManager->redo();
    });
}

void ADPlistOutlineController::selectParent()
{
    const std::vector<ADPlistObject *> selected = selectedItems();
    if (selected.empty())
        return;
    ADPlistObject *up = selected.front()->plistObjectParent();
    if (!up)
        return;
    selectItems({up});
    if (_view)
        _view->scrollItemToVisible(up);
}

void ADPlistOutlineController::toggleRawKeysAndValues()
{
    setShowRawKeysAndValues(!_showRawKeysAndValues);
    _defaults.setBool(_showRawKeysAndValues, ADPlistOutlineShowRawKeysAndValuesKey);
}

void ADPlistOutlineController::chooseValueViewer(const QString &identifier)
{
    const ADValueViewerRegistry::Viewer viewer = _registry->viewerForIdentifier(identifier);
    for (ADPlistObject *item : clickedItems()) {
        item->setValueViewer(viewer);
        if (viewer && _registry->savePreferredViewerIdentifiers() && !item->key().isNull())
            ADValueViewer::setPreferredViewerIdentifier(viewer->identifier(), item->key(),
                                                        item->plistType());
    }
}

void ADPlistOutlineController::viewBySubkey(const QString &keyPath)
{
    const ADValueViewerRegistry::Viewer viewer =
        _registry->viewerForDictionaryWithPreviewKeyPath(keyPath);
    for (ADPlistObject *item : clickedItems()) {
        for (qint64 i = 0; i < item->childCount(); ++i) {
            if (ADPlistObject *child = item->childAtIndex(i); child->hasKeys())
                child->setValueViewer(viewer);
        }
    }
}

QStringList ADPlistOutlineController::allSubkeysOfItems(const std::vector<ADPlistObject *> &items)
{
    QSet<QString> all;
    for (const ADPlistObject *item : items)
        all.unite(item->unionOfChildrenSubkeys());
    QStringList sorted(all.begin(), all.end());
    sorted.sort(Qt::CaseInsensitive);
    return sorted;
}

bool ADPlistOutlineController::anySubkeys(const std::vector<ADPlistObject *> &items)
{
    return std::any_of(items.begin(), items.end(),
                       [](const ADPlistObject *item) { return item->hasChildrenSubkeys(); });
}

bool ADPlistOutlineController::notRoot(const ADPlistObject *item) const
{
    return item != _plistRoot.get();
}

// --- validation ------------------------------------------------------------------------------

bool ADPlistOutlineController::validate_addChild() const
{
    const ADPlistObject *item = singleClickedItem();
    return _editable && item && item->hasChildren();
}

bool ADPlistOutlineController::validate_addSibling() const
{
    const ADPlistObject *item = singleClickedItem();
    return _editable && item && item->plistObjectParent();
}

// Keys come from a structure definition's dictionary, and no definition applies yet.
bool ADPlistOutlineController::validate_addChildKey() const
{
    return false;
}

bool ADPlistOutlineController::validate_addSiblingKey() const
{
    return false;
}

bool ADPlistOutlineController::validate_editableOnly() const
{
    return _editable;
}

bool ADPlistOutlineController::validate_chooseClass() const
{
    return _editable && singleClickedItem();
}

bool ADPlistOutlineController::validate_copy() const
{
    return !clickedItems().empty();
}

bool ADPlistOutlineController::validate_cut() const
{
    return _editable && !clickedItems().empty();
}

bool ADPlistOutlineController::validate_duplicate() const
{
    return _editable && !clickedItems().empty() && notRoot(singleClickedItem());
}

bool ADPlistOutlineController::validate_delete() const
{
    return _editable && (!_view || _view->isInKeyWindow()) && !clickedItems().empty() &&
           notRoot(singleClickedItem());
}

bool ADPlistOutlineController::validate_editKey() const
{
    const ADPlistObject *item = singleClickedItem();
    const ADPlistObject *up = item ? item->plistObjectParent() : nullptr;
    return _editable && up && up->hasKeys();
}

bool ADPlistOutlineController::validate_editValue() const
{
    return _editable && _model.selectionModel()->selectedRows().size() == 1;
}

bool ADPlistOutlineController::validate_selectParent() const
{
    const ADPlistObject *item = singleClickedItem();
    return item && item->plistObjectParent();
}

bool ADPlistOutlineController::validate_setPlistDefaultValue() const
{
    const std::vector<ADPlistObject *> items = clickedItems();
    return _editable && !items.empty() &&
           std::none_of(items.begin(), items.end(),
                        [](const ADPlistObject *item) { return item->defaultValue().isNone(); });
}

bool ADPlistOutlineController::validate_sortKeys() const
{
    const std::vector<ADPlistObject *> items = clickedItems();
    return _editable && !items.empty() &&
           std::all_of(items.begin(), items.end(),
                       [](const ADPlistObject *item) { return item->hasKeys(); });
}

bool ADPlistOutlineController::validate_sortValues() const
{
    const std::vector<ADPlistObject *> items = selectedItems();
    return _editable && !items.empty() &&
           std::all_of(items.begin(), items.end(),
                       [](const ADPlistObject *item) { return item->hasChildren(); });
}

bool ADPlistOutlineController::validate_sortBySubkeyMenuAction() const
{
    return _editable && anySubkeys(clickedItems());
}

bool ADPlistOutlineController::validate_viewBySubkeyMenuAction() const
{
    return anySubkeys(clickedItems());
}

bool ADPlistOutlineController::validate_viewAs() const
{
    return !clickedItems().empty();
}

bool ADPlistOutlineController::validate_toggleRawKeysAndValues() const
{
    return !_structureDefinitionIdentifier.isNull();
}

bool ADPlistOutlineController::validate_undo() const
{
    return _undoManager && _undoManager->canUndo();
}

bool ADPlistOutlineController::validate_redo() const
{
    return _undoManager && _undoManager->canRedo();
}
