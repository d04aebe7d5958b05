#pragma once

#include "ADOutlineDragAndDrop.h"
#include "ADPlistOutlineModel.h"

#include "model/ADPlistObject.h"
#include "model/ADPlistParent.h"
#include "shared/KZNotificationCenter.h"

#include <QItemSelection>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantList>

#include <functional>
#include <memory>
#include <vector>

class ADPlistPasteboard;
class ADUndoManager;
class ADValueViewerRegistry;
class KZUserDefaults;

/// Identifiers of the outline's three columns.
inline const QString KeyColumnIdentifier = QStringLiteral("PropertyList");
inline const QString ClassColumnIdentifier = QStringLiteral("Class");
inline const QString ValueColumnIdentifier = QStringLiteral("Value");

/// What the outline controller asks of the window it serves.
class ADPlistOutlineControllerDelegate
{
public:
    virtual ~ADPlistOutlineControllerDelegate() = default;
    /// Whether the class menu may offer `type` for `object`; the delegate alone decides.
    virtual bool shouldAllowPlistType(ADPlistType type, const ADPlistObject &object) = 0;
};

/// What the controller asks of the view that shows its outline, beyond the
/// model: the row the user right-clicked, cell editing, and scrolling. A
/// controller with no view (in tests) has none of these.
class ADPlistOutlineViewAccess
{
public:
    virtual ~ADPlistOutlineViewAccess() = default;
    /// The item of a context-menu click while its menu is up; null otherwise.
    virtual ADPlistObject *clickedItem() const = 0;
    /// Ends the edit of a cell, keeping what was typed; false when the value is refused.
    virtual bool commitEditing() = 0;
    virtual void abortEditing() = 0;
    /// Starts editing the cell; with no range selects all its text.
    virtual void editColumn(int column, ADPlistObject *item) = 0;
    virtual void scrollItemToVisible(ADPlistObject *item) = 0;
    /// Whether the outline's window is the active window.
    virtual bool isInKeyWindow() const = 0;
};

/// Stands between one document's tree and its outline: answers the outline's
/// questions (through its model), follows every change of the tree row by
/// row, keeps selection and expansion across edits, undo and whole-tree
/// replacement, and decides which command is enabled.
///
/// It is the `ADPlistParent` of the root, so that the tree reaches the
/// document's undo manager and centre through it. While a command runs inside
/// `performOutlineUpdate`, changes of the tree move rows and select what
/// changed; any other change (the text side, a script) reloads the rows
/// concerned and leaves the selection alone.
///
/// Owns its model and its value viewer registry; the root is shared with the
/// document. Main thread.
class ADPlistOutlineController : public QObject, public ADPlistParent, public ADOutlineDragAndDrop
{
    Q_OBJECT

public:
    /// Starts with a root over an empty dictionary; reads its settings from `defaults`.
    explicit ADPlistOutlineController(KZUserDefaults &defaults, QObject *parent = nullptr);
    ~ADPlistOutlineController() override;

    ADPlistOutlineModel &model() { return _model; }
    ADValueViewerRegistry &valueViewerRegistry() { return *_registry; }
    void setView(ADPlistOutlineViewAccess *view) { _view = view; }
    void setDelegate(ADPlistOutlineControllerDelegate *delegate) { _delegate = delegate; }

    // --- ADPlistParent
    KZNotificationCenter *notificationCenter() const override { return _notificationCenter; }
    ADUndoManager *undoManager() const override { return _undoManager; }
    const void *scriptingObject() const override { return _scriptingObject; }
    ADPlistType plistType() const override { return ADPlistTypeUnknown; }
    ADStructureDefinition *structureDefinition() const override { return nullptr; }
    void setScriptingObject(const void *object) { _scriptingObject = object; }

    // --- state
    ADPlistObject *plistRoot() const { return _plistRoot.get(); }
    /// Shows another tree, keeping selected and expanded rows by their paths; undoable.
    void setPlistRoot(const ADPlistObject::Pointer &root);
    bool isEditable() const { return _editable; }
    void setEditable(bool editable);
    bool showRawKeysAndValues() const { return _showRawKeysAndValues; }
    void setShowRawKeysAndValues(bool showRaw);
    const QString &structureDefinitionIdentifier() const { return _structureDefinitionIdentifier; }
    void setStructureDefinitionIdentifier(const QString &identifier);
    ADPlistFormat plistFormat() const { return _plistFormat; }
    void setPlistFormat(ADPlistFormat format);
    void setNotificationCenter(KZNotificationCenter *center);
    void setUndoManager(ADUndoManager *undoManager) { _undoManager = undoManager; }

    /// Runs `block` as a command: changes of the tree meanwhile move rows and
    /// select what changed. Does not nest.
    void performOutlineUpdate(const std::function<void()> &block);
    bool isUpdatingOutline() const { return _updatingOutlineView; }

    // --- selection
    /// The selected items in outline order.
    std::vector<ADPlistObject *> selectedItems() const;
    /// The first selected item, or the root when none is.
    ADPlistObject *firstSelectedItem() const;
    /// What a command works on: a right-clicked row outside the selection
    /// alone, else the selection.
    std::vector<ADPlistObject *> clickedItems() const;
    /// The one clicked item, or null.
    ADPlistObject *singleClickedItem() const;
    ADPlistObject *selectedParent() const;
    void selectItems(const std::vector<ADPlistObject *> &items, bool registerUndo = false);
    void selectItemsRegisteringUndoFor(const std::vector<ADPlistObject *> &items,
                                       const std::vector<ADPlistObject *> &oldSelection);
    void registerUndoForCurrentSelection();
    /// Expands every node above the item, so that it shows as a row.
    void revealItem(ADPlistObject *item);
    QList<QVariantList> selectedPaths() const;
    void selectPaths(const QList<QVariantList> &paths);
    QList<QVariantList> expandedPaths() const;
    void expandPaths(const QList<QVariantList> &paths);
    /// The child to select once `indexes` of `parent` are gone: the one just
    /// above the first removed run that has one above it, else the parent.
    static ADPlistObject *objectToSelectAfterRemovingChildIndexes(const KZIndexSet &indexes,
                                                                  ADPlistObject *parent);

    // --- reloading
    void reloadDataPreservingSelection();
    void reloadViewsForItem(ADPlistObject *item);
    void reloadKeysForChildrenOfItem(ADPlistObject *item, bool recursive);
    void reloadViewsForChildrenOfItem(ADPlistObject *item, bool recursive);

    // --- editing in cells
    bool commitEditing();
    void abortEditing();
    /// The next column of the item's row, going round, whose cell can be
    /// edited; -1 when none but the start.
    int nextEditableColumn(const ADPlistObject &item, int startColumn, bool forward) const;
    /// Words that complete a partial entry; none until an index of keys and
    /// values exists, and none under a structure definition.
    QStringList completions(const QString &text, int column, const ADPlistObject &item) const;
    /// Sets a value from a cell, named "Edit Value" for undo; an equal one changes nothing.
    void setValue(ADPlistObject &item, const PlistValue &value);
    /// Sets a value typed in a cell with the viewer that shows it; the
    /// viewer's reason when the text does not parse.
    std::optional<QString> setValueFromCell(ADPlistObject &item, const QString &text);
    /// Gives a node another class, as the class cell's pop-up does.
    void changeClass(ADPlistObject &item, ADPlistType type);
    /// Whether a class menu may offer `type` for `object`: the delegate's
    /// answer when there is one, else what the structure definition allows.
    bool isClassMenuItemValid(ADPlistType type, const ADPlistObject &object) const;
    /// The types the class cell offers for the item, in order.
    std::vector<ADPlistType> allowedPlistTypes(const ADPlistObject &item) const;

    // --- editing commands: what each does to the tree and its undo name
    /// Makes a child of `type` with its default value in `parent` at
    /// `index`, selects it and, with `editOptions` (1 the key, 2 the value),
    /// starts editing it. Named "New Child".
    ADPlistObject *makeNewObjectOfType(ADPlistType type, ADPlistObject *parent, qint64 index,
                                       const QString &key, quint64 editOptions);
    /// A new first child of the clicked row's item; -1 takes the settings' default type.
    void addChild(ADPlistType type = -1);
    /// A new item just below the clicked row's item.
    void addSibling(ADPlistType type = -1);
    /// Wraps the selection in a new dictionary (or array) where it stood.
    void addDictionaryWithSelection();
    void addArrayWithSelection();
    /// Moves the objects into `parent` at `index`; keys made unique there.
    void movePlistObjects(const std::vector<ADPlistObject *> &objects, qint64 index,
                          ADPlistObject *parent);
    void copy();
    void cut();
    /// Inserts the clipboard's values below the clicked row.
    void paste();
    /// Inserts the clipboard's values at the top of each clicked container.
    void pasteChild();
    /// Copies the selection just below itself, leaving the clipboard alone.
    void duplicate();
    /// Removes the clicked items, selecting the survivor above them.
    void deletePlist();
    void removeItems(const std::vector<ADPlistObject *> &items);
    void selectAndEditItems(const std::vector<ADPlistObject *> &items);
    /// The items' values as one array (their parent is an array, or they are
    /// the root) or one dictionary under their keys.
    static void writePlistObjects(const std::vector<ADPlistObject *> &items,
                                  ADPlistPasteboard &pasteboard);
    /// Inserts the pasteboard's values at `index` of `parent`, keys made
    /// unique; the new objects.
    std::vector<ADPlistObject *> insertContentsOfPasteboard(const ADPlistPasteboard &pasteboard,
                                                            qint64 index, ADPlistObject *parent);
    /// The same for the elements of an array or the entries of a dictionary.
    std::vector<ADPlistObject *> insertPropertyList(const PlistValue &list, qint64 index,
                                                    ADPlistObject *parent);

    // --- drag and drop: rows carry their values (as XML plist and text); a
    // drop of this outline's own rows moves them, anything else is copied in,
    // and a file or text from another program comes in as one value.
    std::unique_ptr<QMimeData> mimeDataForItems(const std::vector<ADPlistObject *> &items) override;
    bool validateDrop(const QMimeData *data, ADPlistObject *parent, qint64 index) const override;
    bool acceptDrop(const QMimeData *data, Qt::DropAction action, ADPlistObject *parent,
                    qint64 index) override;

    // --- copying as text for other programs (plain text on the clipboard)
    void copyAsSwiftLiteral();
    void copyAsObjcLiteral();
    /// The clicked values as JSON; the reason when JSON cannot hold them.
    std::optional<QString> copyAsJSON();
    /// The clicked items' key paths as `ardeck get` takes them, a line each.
    void copyKeyPath();

    // --- sort commands: ascending, each named for undo by the tree
    void sortKeys();
    /// Every dictionary of the tree, the selection kept on the same objects.
    void sortAllKeys();
    /// Sorts the selected containers' children by value (keys travel along).
    void sortValues();
    void sortAllValues();
    /// Sorts the clicked containers' dictionaries by their value under `subkey`.
    void sortBySubkey(const QString &subkey);

    // --- commands and their validation
    /// Whether the named command is enabled now; a command with no rule is.
    bool validateCommand(const QString &command) const;
    /// The commands `validateCommand` has a rule for.
    static QStringList validatedCommands();
    void undo();
    void redo();
    void selectParent();
    void toggleRawKeysAndValues();
    void chooseValueViewer(const QString &identifier);
    void viewBySubkey(const QString &keyPath);
    /// The subkeys of all dictionaries among the children of `items`.
    static QStringList allSubkeysOfItems(const std::vector<ADPlistObject *> &items);
    /// Whether `allSubkeysOfItems` would list anything; stops at the first.
    static bool anySubkeys(const std::vector<ADPlistObject *> &items);

    /// The validation rules by command, for one lookup per command.
    bool validate_addChild() const;
    bool validate_addSibling() const;
    bool validate_addChildKey() const;
    bool validate_addSiblingKey() const;
    bool validate_editableOnly() const;
    bool validate_chooseClass() const;
    bool validate_copy() const;
    bool validate_cut() const;
    bool validate_duplicate() const;
    bool validate_delete() const;
    bool validate_editKey() const;
    bool validate_editValue() const;
    bool validate_selectParent() const;
    bool validate_setPlistDefaultValue() const;
    bool validate_sortKeys() const;
    bool validate_sortValues() const;
    bool validate_sortBySubkeyMenuAction() const;
    bool validate_viewBySubkeyMenuAction() const;
    bool validate_viewAs() const;
    bool validate_toggleRawKeysAndValues() const;
    bool validate_undo() const;
    bool validate_redo() const;

signals:
    /// The root changed (a new tree was shown).
    void plistRootChanged();

private:
    void plistChanged(const KZNotification &notification);
    void plistChangedChildren(const KZNotification &notification);
    void plistAdded(const KZNotification &notification);
    void plistRemoved(const KZNotification &notification);
    void observeCenter();
    void stopObservingCenter();
    bool notRoot(const ADPlistObject *item) const;
    /// The row a command acts at: a right-clicked one, else the current selected row.
    ADPlistObject *clickedRowItem() const;
    void wrapSelection(ADPlistType type);
    void setActionName(int number, const char *name);
    /// This outline's own rows that `data` carries, or none.
    std::vector<ADPlistObject *> ownDraggedItems(const QMimeData *data) const;
    /// What a drop from elsewhere brings: the list of values to insert.
    static std::optional<PlistValue> droppedList(const QMimeData *data);
    QItemSelection rowsOf(const std::vector<ADPlistObject *> &items) const;

    ADPlistOutlineModel _model;
    std::unique_ptr<ADValueViewerRegistry> _registry;
    KZUserDefaults &_defaults;
    ADPlistObject::Pointer _plistRoot;
    QString _structureDefinitionIdentifier;
    ADPlistFormat _plistFormat = ADPlistFormatXML;
    KZNotificationCenter *_notificationCenter = nullptr;
    std::vector<KZNotificationCenter::Token> _observations;
    ADUndoManager *_undoManager = nullptr;
    ADPlistOutlineControllerDelegate *_delegate = nullptr;
    ADPlistOutlineViewAccess *_view = nullptr;
    const void *_scriptingObject = nullptr;
    bool _editable = true;
    bool _showRawKeysAndValues = false;
    bool _updatingOutlineView = false;
    std::vector<ADPlistObject::Pointer> _draggedItems; // of this outline's drag under way
    quint64 _dragSerial = 0;
};
