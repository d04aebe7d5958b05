#include "ADPlistWindowController.h"

#include "ADPlistWindow.h"

#include "document/ADPlistDocument.h"
#include "document/KZDocumentPresenter.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZLocalizedString.h"
#include "shared/KZStringAdditions.h"
#include "ui/document/ADPlistTextView.h"
#include "ui/document/ADTextViewController.h"
#include "ui/document/KZFileDialogPanels.h"
#include "ui/document/KZMessageBoxPresenter.h"
#include "ui/outline/ADEditSheet.h"
#include "ui/outline/ADPlistOutlineView.h"
#include "ui/viewers/ADValueViewerMenu.h"
#include "viewers/ADValueViewerRegistry.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>

namespace {

// The text pane's height when it is brought back into view.
constexpr int kExposedTextHeight = 120;

QString localized(int number, const char *text)
{
    return KZLocalizedStringWithID(number, QString::fromUtf8(text));
}

// The four storage formats in the order the Format pop-up lists them.
const std::vector<std::pair<ADPlistFormat, const char *>> &formats()
{
    static const std::vector<std::pair<ADPlistFormat, const char *>> list{
        {ADPlistFormatXML, "XML"},
        {ADPlistFormatBinary, "Binary"},
        {ADPlistFormatASCII, "ASCII"},
        {ADPlistFormatJSON, "JSON"},
    };
    return list;
}

// "{640, 480}", the stored form of a size.
QSize sizeFromString(const QString &text)
{
    static const QRegularExpression form(QStringLiteral(R"(\{\s*(\d+)\s*,\s*(\d+)\s*\})"));
    const QRegularExpressionMatch match = form.match(text);
    return match.hasMatch() ? QSize(match.captured(1).toInt(), match.captured(2).toInt()) : QSize();
}

QString stringFromSize(QSize size)
{
    return QStringLiteral("{%1, %2}").arg(size.width()).arg(size.height());
}

} // namespace

ADPlistWindowController::Editability
ADPlistWindowController::editabilityFor(ADEditMode mode, bool allowEditing, ADPlistFormat format)
{
    const bool textCouldBeEdited = allowEditing && format != ADPlistFormatBinary;
    switch (mode) {
    case ADEditModeOutline:
        return {false, allowEditing, textCouldBeEdited, false};
    case ADEditModeText:
        return {allowEditing, false, false, allowEditing};
    default:
        return {textCouldBeEdited, allowEditing, false, false};
    }
}

bool ADPlistWindowController::allowsPlistType(ADPlistType type, const ADPlistObject &object,
                                              bool inPreferenceDomain, ADPlistFormat format)
{
    if (inPreferenceDomain)
        return !object.isRoot();
    if (format == ADPlistFormatJSON)
        return type == ADPlistTypeArray || type == ADPlistTypeDictionary;
    return object.canBePlistType(type);
}

ADPlistWindowController::ADPlistWindowController(ADPlistDocument &document,
                                                 ADPreferences &preferences)
    : _document(document), _preferences(preferences), _window(std::make_unique<ADPlistWindow>()),
      _outlineController(preferences.userDefaults()), _refreshTimer(new QTimer(this))
{
    _documentAlive = &document;
    _refreshTimer->setSingleShot(true);
    _refreshTimer->setInterval(0);
    connect(_refreshTimer, &QTimer::timeout, this, &ADPlistWindowController::refreshActions);
    _presenter = std::make_unique<KZMessageBoxPresenter>(_window.get());
    _panels = std::make_unique<KZFileDialogPanels>(_window.get());
    buildWindow();
    buildToolbar();
    buildMenus();
    setupPlistOutlineController();
    setupDocumentObservations();
    refreshSyncButtons();
    refreshPlistFormatToolbarItem();
    refreshDefinitionsToolbarItem();
    updateTextViewLayout();
    _document.setPresenter(_presenter.get());
    _document.setPanels(_panels.get());
    _document.setWindow(this);
    _document.setTextSide(_textViewController.get());
    _outlineView->setFocus();
    refreshTitle();
    refreshActions();
    // Nothing done while setting up is undoable.
    _document.undoManager().removeAllActions();
}

ADPlistWindowController::~ADPlistWindowController()
{
    detachFromDocument();
}

// Lets go of everything of the document's while it still stands: a closed
// document goes before its window controller.
void ADPlistWindowController::detachFromDocument()
{
    if (!_documentAlive)
        return;
    _outlineController.setNotificationCenter(nullptr);
    _outlineController.setUndoManager(nullptr);
    if (_document.window() == this)
        _document.setWindow(nullptr);
    if (_document.textSide() == _textViewController.get())
        _document.setTextSide(nullptr);
    if (_document.presenter() == _presenter.get())
        _document.setPresenter(nullptr);
    _document.setPanels(nullptr);
    _documentAlive = nullptr;
}

void ADPlistWindowController::buildWindow()
{
    _window->setWindowIcon(QIcon::fromTheme(QStringLiteral("arbordeck")));
    _outlineView = new ADPlistOutlineView(_outlineController);
    _outlineController.setView(_outlineView);

    _textViewController = std::make_unique<ADTextViewController>(_preferences);
    auto *textPane = new QWidget;
    auto *textLayout = new QVBoxLayout(textPane);
    textLayout->setContentsMargins(0, 0, 0, 0);
    textLayout->setSpacing(0);
    _syncButtonsView = new QWidget;
    auto *buttons = new QHBoxLayout(_syncButtonsView);
    buttons->setContentsMargins(6, 3, 6, 3);
    _syncOutlineButton = new QPushButton(localized(7301, "Sync Outline"));
    _syncOutlineButton->setToolTip(localized(7302, "Carry the text's edits over to the outline"));
    _syncTextButton = new QPushButton(localized(7303, "Sync Text"));
    _syncTextButton->setToolTip(localized(7304, "Carry the outline's edits over to the text"));
    _autoSyncTextButton = new QCheckBox(localized(7305, "Auto Sync Text"));
    buttons->addWidget(_syncOutlineButton);
    buttons->addWidget(_syncTextButton);
    buttons->addStretch();
    buttons->addWidget(_autoSyncTextButton);
    _syncButtonsView->setVisible(
        _preferences.userDefaults().boolForKey(PlistDocumentSyncButtonsVisibleKey));
    textLayout->addWidget(_syncButtonsView);
    textLayout->addWidget(_textViewController->plistTextView());
    connect(_syncOutlineButton, &QPushButton::clicked, this, &ADPlistWindowController::syncOutline);
    connect(_syncTextButton, &QPushButton::clicked, this, &ADPlistWindowController::syncText);
    connect(_autoSyncTextButton, &QCheckBox::clicked, this,
            &ADPlistWindowController::toggleAutoSyncText);

    _splitter = new QSplitter(Qt::Vertical);
    _splitter->addWidget(_outlineView);
    _splitter->addWidget(textPane);
    _splitter->setCollapsible(0, false);
    _splitter->setCollapsible(1, true);
    _splitter->setStretchFactor(0, 1);
    connect(_splitter, &QSplitter::splitterMoved, this, [this] {
        updateTextViewLayout();
        saveSplitPosition();
    });
    _window->setCentralWidget(_splitter);
    _window->setCloseQuestion([document = QPointer(&_document), this](auto answer) {
        if (!document || !commitEditing()) {
            answer(!document);
            return;
        }
        document->canCloseDocument(std::move(answer));
    });
    connect(_window.get(), &ADPlistWindow::windowClosed, this, [this] {
        saveColumnWidths();
        if (_documentAlive) // not closed yet
            _document.close();
        emit windowClosed();
    });
    restoreGeometry();
}

void ADPlistWindowController::buildToolbar()
{
    QToolBar *toolbar = _window->addToolBar(localized(7306, "Toolbar"));
    toolbar->setObjectName(QStringLiteral("PlistDocument"));
    toolbar->setMovable(false);
    // A caption before the item, where the item does not name itself.
    const auto addItem = [toolbar](const QString &label, const QString &toolTip, QWidget *item,
                                   bool captioned = true) {
        auto *box = new QWidget;
        auto *layout = new QHBoxLayout(box);
        layout->setContentsMargins(6, 0, 6, 0);
        if (captioned) {
            auto *caption = new QLabel(label);
            caption->setBuddy(item);
            layout->addWidget(caption);
        }
        layout->addWidget(item);
        item->setToolTip(toolTip);
        item->setAccessibleName(label);
        toolbar->addWidget(box);
    };
    _formatPopUp = new QComboBox;
    for (const auto &[format, name] : formats())
        _formatPopUp->addItem(QString::fromUtf8(name), QVariant::fromValue(format));
    addItem(localized(165, "Format"),
            localized(167, "Change the storage format for the property list"), _formatPopUp);
    connect(_formatPopUp, &QComboBox::activated, this, [this](int index) {
        _document.changePlistFormat(_formatPopUp->itemData(index).value<ADPlistFormat>());
        refreshPlistFormatToolbarItem();
    });

    _definitionPopUp = new QComboBox;
    addItem(localized(162, "Definition"),
            localized(164, "Change the plist definition used with this document"),
            _definitionPopUp);

    _viewAsButton = new QToolButton;
    _viewAsButton->setPopupMode(QToolButton::InstantPopup);
    _viewAsButton->setText(localized(168, "View As"));
    _viewAsMenu = new QMenu(_viewAsButton);
    _viewAsButton->setMenu(_viewAsMenu);
    // Filled when it opens: a selection of a million rows changes often and
    // is looked at seldom.
    connect(_viewAsMenu, &QMenu::aboutToShow, this,
            &ADPlistWindowController::refreshViewAsToolbarItem);
    addItem(localized(168, "View As"),
            localized(170, "View the selected object as a different data type"), _viewAsButton,
            false);
}

QAction *ADPlistWindowController::addCommand(QMenu *menu, const QString &name, const QString &title,
                                             std::function<void()> run,
                                             std::function<bool()> enabled)
{
    QAction *action = menu->addAction(title);
    action->setObjectName(name);
    connect(action, &QAction::triggered, this, [run = std::move(run)] { run(); });
    _actions.insert(name, action);
    if (enabled)
        _validators.insert(action, std::move(enabled));
    return action;
}

void ADPlistWindowController::buildMenus()
{
    QMenuBar *bar = _window->menuBar();
    const auto outlineCommand = [this](const QString &command) {
        return [this, command] { return _outlineController.validateCommand(command); };
    };

    QMenu *file = bar->addMenu(localized(7310, "&File"));
    addCommand(file, QStringLiteral("newDocument"), localized(7311, "&New"), [this] {
        emit newDocumentRequested();
    })->setShortcut(QKeySequence::New);
    addCommand(file, QStringLiteral("openDocument"), localized(7312, "&Open…"), [this] {
        emit openDocumentRequested();
    })->setShortcut(QKeySequence::Open);
    addCommand(file, QStringLiteral("openPlistTextFromClipboard"),
               localized(7313, "Open Plist Text from Clipboard"),
               [this] { emit openClipboardRequested(); });
    file->addSeparator();
    addCommand(file, QStringLiteral("performClose"), localized(7314, "&Close"), [this] {
        _window->close();
    })->setShortcut(QKeySequence::Close);
    addCommand(file, QStringLiteral("saveDocument"), localized(7315, "&Save"), [this] {
        if (commitEditing())
            _document.saveDocument();
    })->setShortcut(QKeySequence::Save);
    addCommand(file, QStringLiteral("saveDocumentAs"), localized(7316, "Save &As…"), [this] {
        if (commitEditing())
            _document.saveDocumentAs();
    })->setShortcut(QKeySequence::SaveAs);
    addCommand(file, QStringLiteral("saveDocumentTo"), localized(7317, "Save a Cop&y…"), [this] {
        if (commitEditing())
            _document.saveDocumentTo();
    });
    addCommand(
        file, QStringLiteral("revertDocumentToSaved"), localized(7318, "&Revert to Saved"),
        [this] { _document.revertDocumentToSaved(); },
        [this] { return !_document.fileURL().isEmpty() && _document.isDocumentEdited(); });
    file->addSeparator();
    addCommand(file, QStringLiteral("terminate"), localized(7319, "&Quit"), [this] {
        emit quitRequested();
    })->setShortcut(QKeySequence::Quit);

    QMenu *edit = bar->addMenu(localized(7320, "&Edit"));
    addCommand(
        edit, QStringLiteral("undo"), localized(7321, "&Undo"),
        [this] { _outlineController.undo(); }, outlineCommand(QStringLiteral("undo")))
        ->setShortcut(QKeySequence::Undo);
    addCommand(
        edit, QStringLiteral("redo"), localized(7322, "&Redo"),
        [this] { _outlineController.redo(); }, outlineCommand(QStringLiteral("redo")))
        ->setShortcut(QKeySequence::Redo);
    edit->addSeparator();
    const auto editableOutline = [this] { return _outlineController.isEditable(); };
    addCommand(
        edit, QStringLiteral("cut"), localized(7360, "Cu&t"), [this] { _outlineController.cut(); },
        outlineCommand(QStringLiteral("cut")))
        ->setShortcut(QKeySequence::Cut);
    addCommand(
        edit, QStringLiteral("copy"), localized(7361, "&Copy"),
        [this] { _outlineController.copy(); }, outlineCommand(QStringLiteral("copy")))
        ->setShortcut(QKeySequence::Copy);
    QMenu *copyAs = edit->addMenu(localized(7376, "Copy &As"));
    addCommand(
        copyAs, QStringLiteral("copyAsSwiftLiteral"), localized(7377, "Swift Literal"),
        [this] { _outlineController.copyAsSwiftLiteral(); },
        outlineCommand(QStringLiteral("copyAsSwiftLiteral")));
    addCommand(
        copyAs, QStringLiteral("copyAsObjcLiteral"), localized(7378, "Objective-C Literal"),
        [this] { _outlineController.copyAsObjcLiteral(); },
        outlineCommand(QStringLiteral("copyAsObjcLiteral")));
    addCommand(
        copyAs, QStringLiteral("copyAsJSON"), localized(7379, "JSON"),
        [this] {
            if (const std::optional<QString> failure = _outlineController.copyAsJSON())
                _presenter->ask({localized(7380, "Could not copy as JSON"),
                                 *failure,
                                 {localized(7381, "OK")},
                                 0},
                                [](int) {});
        },
        outlineCommand(QStringLiteral("copy")));
    addCommand(
        copyAs, QStringLiteral("copyKeyPath"), localized(7382, "Key Path"),
        [this] { _outlineController.copyKeyPath(); },
        [this] { return !_outlineController.clickedItems().empty(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_C));
    addCommand(
        edit, QStringLiteral("paste"), localized(7362, "&Paste"),
        [this] { _outlineController.paste(); }, editableOutline)
        ->setShortcut(QKeySequence::Paste);
    addCommand(
        edit, QStringLiteral("pasteChild"), localized(7363, "Paste as C&hild"),
        [this] { _outlineController.pasteChild(); },
        [this] {
            const std::vector<ADPlistObject *> items = _outlineController.clickedItems();
            return _outlineController.isEditable() && !items.empty() &&
                   std::all_of(items.begin(), items.end(),
                               [](const ADPlistObject *item) { return item->hasChildren(); });
        })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_V));
    addCommand(
        edit, QStringLiteral("duplicate"), localized(7364, "D&uplicate"),
        [this] { _outlineController.duplicate(); }, outlineCommand(QStringLiteral("duplicate")))
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
    addCommand(
        edit, QStringLiteral("delete"), localized(7365, "&Delete"),
        [this] { _outlineController.deletePlist(); }, outlineCommand(QStringLiteral("delete")))
        ->setShortcut(QKeySequence::Delete);
    edit->addSeparator();
    addCommand(
        edit, QStringLiteral("addChild"), localized(7366, "New C&hild"),
        [this] { _outlineController.addChild(); }, outlineCommand(QStringLiteral("addChild")))
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_N));
    addCommand(
        edit, QStringLiteral("addSibling"), localized(7367, "New &Sibling"),
        [this] { _outlineController.addSibling(); }, outlineCommand(QStringLiteral("addSibling")))
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    addCommand(
        edit, QStringLiteral("addDictionaryWithSelection"), localized(7368, "Wrap in Dictionary"),
        [this] { _outlineController.addDictionaryWithSelection(); },
        outlineCommand(QStringLiteral("addDictionaryWithSelection")));
    addCommand(
        edit, QStringLiteral("addArrayWithSelection"), localized(7369, "Wrap in Array"),
        [this] { _outlineController.addArrayWithSelection(); },
        outlineCommand(QStringLiteral("addArrayWithSelection")));
    QMenu *sort = edit->addMenu(localized(7370, "S&ort"));
    addCommand(
        sort, QStringLiteral("sortKeys"), localized(7371, "Sort &Keys"),
        [this] { _outlineController.sortKeys(); }, outlineCommand(QStringLiteral("sortKeys")));
    addCommand(
        sort, QStringLiteral("sortValues"), localized(7372, "Sort &Values"),
        [this] { _outlineController.sortValues(); }, outlineCommand(QStringLiteral("sortValues")));
    QMenu *bySubkey = sort->addMenu(localized(7373, "Sort by &Subkey"));
    connect(bySubkey, &QMenu::aboutToShow, this, [this, bySubkey] {
        bySubkey->clear();
        for (const QString &subkey :
             ADPlistOutlineController::allSubkeysOfItems(_outlineController.clickedItems()))
            bySubkey->addAction(subkey, this,
                                [this, subkey] { _outlineController.sortBySubkey(subkey); });
    });
    sort->addSeparator();
    addCommand(
        sort, QStringLiteral("sortAllKeys"), localized(7374, "Sort &All Keys"),
        [this] { _outlineController.sortAllKeys(); },
        outlineCommand(QStringLiteral("sortAllKeys")));
    addCommand(
        sort, QStringLiteral("sortAllValues"), localized(7375, "Sort All Va&lues"),
        [this] { _outlineController.sortAllValues(); },
        outlineCommand(QStringLiteral("sortAllValues")));
    _validators.insert(bySubkey->menuAction(),
                       outlineCommand(QStringLiteral("sortBySubkeyMenuAction")));
    edit->addSeparator();
    addCommand(
        edit, QStringLiteral("editKey"), localized(7323, "Edit &Key"),
        [this] {
            editKeyForItem(_outlineController.singleClickedItem(), {KZNotFound, 0});
        },
        outlineCommand(QStringLiteral("editKey")));
    addCommand(
        edit, QStringLiteral("editValue"), localized(7324, "Edit &Value"),
        [this] {
            editValueForItem(_outlineController.singleClickedItem(), {KZNotFound, 0});
        },
        outlineCommand(QStringLiteral("editValue")));
    addCommand(
        edit, QStringLiteral("showEditValueSheet"), localized(7325, "Edit Values in a &Sheet…"),
        [this] { showEditValueSheet(); }, [this] { return validate_showEditValueSheet(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    addCommand(
        edit, QStringLiteral("selectParent"), localized(7326, "Select &Parent"),
        [this] { _outlineController.selectParent(); },
        outlineCommand(QStringLiteral("selectParent")))
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Up));
    edit->addSeparator();
    addCommand(
        edit, QStringLiteral("gotoLine"), localized(7327, "&Go to Line…"), [this] { gotoLine(); },
        [this] { return validate_gotoLine(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    addCommand(
        edit, QStringLiteral("scrollToSelection"), localized(7328, "Scroll to Se&lection"),
        [this] { scrollToSelection(); }, [this] { return validate_scrollToSelection(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_J));

    QMenu *view = bar->addMenu(localized(7330, "&View"));
    QAction *raw = addCommand(
        view, QStringLiteral("toggleRawKeysAndValues"),
        localized(7331, "Show &Raw Keys and Values"),
        [this] { _outlineController.toggleRawKeysAndValues(); },
        outlineCommand(QStringLiteral("toggleRawKeysAndValues")));
    raw->setCheckable(true);
    raw->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    QMenu *viewAs = view->addMenu(localized(168, "View As"));
    connect(viewAs, &QMenu::aboutToShow, this, [this, viewAs] {
        refreshViewAsToolbarItem();
        viewAs->clear();
        viewAs->addActions(_viewAsMenu->actions());
    });
    QAction *syncButtons = addCommand(
        view, QStringLiteral("toggleSyncButtons"), localized(7332, "Show Sync &Buttons"), [this] {
            const bool visible = !_syncButtonsView->isVisible();
            _syncButtonsView->setVisible(visible);
            _preferences.userDefaults().setBool(visible, PlistDocumentSyncButtonsVisibleKey);
        });
    syncButtons->setCheckable(true);

    QMenu *format = bar->addMenu(localized(7340, "F&ormat"));
    for (const auto &[plistFormat, name] : formats()) {
        const ADPlistFormat code = plistFormat;
        QAction *item = addCommand(
            format, QStringLiteral("changePlistFormat%1").arg(code), QString::fromUtf8(name),
            [this, code] { _document.changePlistFormat(code); },
            [this, code] { return _document.validate_changePlistFormat(code).enabled; });
        item->setCheckable(true);
    }
    format->addSeparator();
    addCommand(
        format, QStringLiteral("syncText"), localized(7303, "Sync Text"), [this] { syncText(); },
        [this] { return _syncTextButton->isEnabled(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_T));
    addCommand(
        format, QStringLiteral("syncOutline"), localized(7301, "Sync Outline"),
        [this] { syncOutline(); }, [this] { return _syncOutlineButton->isEnabled(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_O));
    QAction *autoSync =
        addCommand(format, QStringLiteral("toggleAutoSyncText"), localized(7305, "Auto Sync Text"),
                   [this] { toggleAutoSyncText(!_document.autoSyncText()); });
    autoSync->setCheckable(true);

    for (QMenu *menu : {file, edit, view, format})
        connect(menu, &QMenu::aboutToShow, this, &ADPlistWindowController::refreshActions);
}

void ADPlistWindowController::setupPlistOutlineController()
{
    _outlineController.setDelegate(this);
    _outlineController.setNotificationCenter(&_document.notificationCenter());
    _outlineController.setUndoManager(&_document.undoManager());
    _outlineController.setPlistFormat(_document.plistFormat());
    _textViewController->setSyntaxColoringEnabled(_document.plistFormat() == ADPlistFormatXML);
    _outlineController.setPlistRoot(_document.plistRoot());
    _outlineController.setStructureDefinitionIdentifier(_document.structureDefinitionIdentifier());
    _outlineController.selectItems({_outlineController.plistRoot()});
}

void ADPlistWindowController::setupDocumentObservations()
{
    connect(_outlineController.model().selectionModel(), &QItemSelectionModel::selectionChanged,
            this, [this] {
                scheduleRefresh();
                KZNotificationCenter::defaultCenter().postNotification(
                    PlistDocumentSelectionDidChangeNotification, &_document);
            });
    connect(&_document, &ADPlistDocument::editModeChanged, this,
            &ADPlistWindowController::refreshSyncButtons);
    connect(&_document, &ADPlistDocument::autoSyncTextChanged, this,
            &ADPlistWindowController::refreshSyncButtons);
    connect(&_document, &ADPlistDocument::plistFormatChanged, this,
            &ADPlistWindowController::plistFormatDidChange);
    connect(&_document, &ADPlistDocument::plistRootChanged, this,
            [this](const ADPlistObject::Pointer &root) { _outlineController.setPlistRoot(root); });
    connect(&_document, &ADPlistDocument::structureDefinitionIdentifierChanged, this,
            [this](const QString &identifier) {
                _outlineController.setStructureDefinitionIdentifier(identifier);
                refreshDefinitionsToolbarItem();
            });
    connect(&_document, &KZDocument::documentEditedChanged, this,
            &ADPlistWindowController::refreshTitle);
    connect(&_document, &KZDocument::fileURLChanged, this, &ADPlistWindowController::refreshTitle);
    connect(&_document, &KZDocument::closed, this, [this] {
        detachFromDocument();
        _window->closeWithoutAsking();
    });
    connect(_document.undoManager().undoStack(), &QUndoStack::indexChanged, this,
            &ADPlistWindowController::scheduleRefresh);
}

void ADPlistWindowController::plistFormatDidChange(ADPlistFormat format)
{
    refreshPlistFormatToolbarItem();
    _outlineController.setPlistFormat(format);
    _textViewController->setSyntaxColoringEnabled(format == ADPlistFormatXML);
    refreshSyncButtons();
}

void ADPlistWindowController::showWindow()
{
    _window->show();
    _window->raise();
    _window->activateWindow();
}

// --- ADPlistDocumentWindow

bool ADPlistWindowController::commitEditing()
{
    return _outlineController.commitEditing();
}

void ADPlistWindowController::exposePlistTextView()
{
    const QList<int> sizes = _splitter->sizes();
    if (sizes.size() < 2 || sizes[1] > 0)
        return;
    const int total = sizes[0] + sizes[1];
    _splitter->setSizes({std::max(total - kExposedTextHeight, 0), kExposedTextHeight});
    updateTextViewLayout();
}

void ADPlistWindowController::reloadStructureDefinition()
{
    _outlineController.reloadDataPreservingSelection();
}

void ADPlistWindowController::bringToFront()
{
    showWindow();
}

ADPlistObject *ADPlistWindowController::firstSelectedItem()
{
    return _outlineController.firstSelectedItem();
}

ADPlistObjectList ADPlistWindowController::selectedItems()
{
    ADPlistObjectList items;
    for (ADPlistObject *item : _outlineController.selectedItems())
        items.push_back(ADPlistObject::Pointer(item));
    return items;
}

void ADPlistWindowController::selectItems(const ADPlistObjectList &items)
{
    std::vector<ADPlistObject *> plain;
    for (const ADPlistObject::Pointer &item : items)
        plain.push_back(item.get());
    _outlineController.selectItems(plain);
}

void ADPlistWindowController::editValueForItem(ADPlistObject *item, KZRange)
{
    if (item)
        _outlineView->editColumn(2, item);
}

void ADPlistWindowController::editKeyForItem(ADPlistObject *item, KZRange)
{
    if (item)
        _outlineView->editColumn(0, item);
}

bool ADPlistWindowController::shouldAllowPlistType(ADPlistType type, const ADPlistObject &object)
{
    return allowsPlistType(type, object, _document.userPreferences() != nullptr,
                           _document.plistFormat());
}

// --- commands

void ADPlistWindowController::syncOutline()
{
    _document.performSyncFromMode(ADEditModeText, true);
}

void ADPlistWindowController::syncText()
{
    _document.performSyncFromMode(ADEditModeOutline, true);
}

void ADPlistWindowController::toggleAutoSyncText(bool autoSync)
{
    _document.setAutoSyncText(autoSync);
}

bool ADPlistWindowController::validate_gotoLine() const
{
    return _document.plistFormat() != ADPlistFormatBinary;
}

void ADPlistWindowController::gotoLine()
{
    _document.finishMakingText();
    const qint64 lines = numberOfLines(_textViewController->currentText());
    auto *dialog = new QInputDialog(_window.get());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(localized(7327, "Go to Line"));
    dialog->setLabelText(localized(7329, "Line number:"));
    dialog->setInputMode(QInputDialog::IntInput);
    dialog->setIntRange(std::min<qint64>(lines, 1), int(std::min<qint64>(lines, INT_MAX)));
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QInputDialog::intValueSelected, this,
            [this](int line) { acceptGotoLine(line); });
    dialog->open();
}

void ADPlistWindowController::acceptGotoLine(qint64 lineNumber)
{
    if (lineNumber < 1)
        return;
    _document.finishMakingText();
    const QString text = _textViewController->currentText();
    const KZRange range = rangeForLineNumber(text, quint32(lineNumber - 1));
    if (range.location == KZNotFound)
        return;
    _textViewController->selectTextInRange(range);
    exposePlistTextView();
}

bool ADPlistWindowController::validate_scrollToSelection() const
{
    return !_outlineController.selectedItems().empty();
}

void ADPlistWindowController::scrollToSelection()
{
    if (_document.editMode() == ADEditModeText) {
        _textViewController->scrollToSelection();
        return;
    }
    if (_document.editMode() != ADEditModeOutline)
        return;
    if (ADPlistObject *first = _outlineController.firstSelectedItem())
        _outlineView->scrollItemToVisible(first);
}

bool ADPlistWindowController::validate_showEditValueSheet() const
{
    const std::vector<ADPlistObject *> items = _outlineController.clickedItems();
    if (items.empty() || !_outlineController.isEditable())
        return false;
    const ADPlistType type = items.front()->plistType();
    if (type == ADPlistTypeArray || type == ADPlistTypeDictionary)
        return false;
    return std::all_of(items.begin(), items.end(),
                       [type](const ADPlistObject *item) { return item->plistType() == type; });
}

void ADPlistWindowController::showEditValueSheet()
{
    if (!validate_showEditValueSheet() || !commitEditing())
        return;
    if (!_editSheet)
        _editSheet = new ADEditSheet(_outlineController.valueViewerRegistry(), _window.get());
    const QFont font = _preferences.fontForEditMode(ADEditModeOutline).value_or(QFont());
    _editSheet->startEditingPlistObjects(_outlineController.clickedItems(), font);
}

// --- refreshing

void ADPlistWindowController::refreshSyncButtons()
{
    const Editability editability =
        editabilityFor(_document.editMode(), true, _document.plistFormat());
    _textViewController->setEditable(editability.textEditable);
    _outlineController.setEditable(editability.outlineEditable);
    _syncTextButton->setEnabled(editability.syncTextEnabled);
    _syncOutlineButton->setEnabled(editability.syncOutlineEnabled);
    _autoSyncTextButton->setChecked(_document.autoSyncText());
    scheduleRefresh();
}

void ADPlistWindowController::refreshPlistFormatToolbarItem()
{
    const int index = _formatPopUp->findData(QVariant::fromValue(_document.plistFormat()));
    _formatPopUp->setCurrentIndex(index);
}

void ADPlistWindowController::refreshViewAsToolbarItem()
{
    _viewAsMenu->clear();
    const std::vector<ADPlistObject *> selected = _outlineController.selectedItems();
    if (selected.empty()) {
        _viewAsMenu->addAction(localized(171, "No selection"))->setEnabled(false);
        return;
    }
    ADValueViewerMenu::populateMenu(
        _viewAsMenu, _outlineController.valueViewerRegistry(),
        std::vector<const ADPlistObject *>(selected.begin(), selected.end()),
        [this](const QString &identifier) { _outlineController.chooseValueViewer(identifier); });
}

// Structure definitions have not come yet: the pop-up shows that there are none.
void ADPlistWindowController::refreshDefinitionsToolbarItem()
{
    _definitionPopUp->clear();
    _definitionPopUp->addItem(localized(7307, "None"));
    _definitionPopUp->setCurrentIndex(0);
    _definitionPopUp->setEnabled(false);
}

// Laying out a text that cannot be seen is wasted work.
void ADPlistWindowController::updateTextViewLayout()
{
    const QList<int> sizes = _splitter->sizes();
    const bool collapsed = sizes.size() > 1 && sizes[1] == 0;
    _textViewController->plistTextView()->setUpdatesEnabled(!collapsed);
}

void ADPlistWindowController::scheduleRefresh()
{
    _refreshTimer->start();
}

void ADPlistWindowController::refreshActions()
{
    for (auto it = _validators.cbegin(); it != _validators.cend(); ++it)
        it.key()->setEnabled(it.value()());
    ADUndoManager &undo = _document.undoManager();
    _actions.value(QStringLiteral("undo"))
        ->setText(undo.canUndo() ? localized(7321, "&Undo") + u' ' + undo.undoActionName()
                                 : localized(7321, "&Undo"));
    _actions.value(QStringLiteral("redo"))
        ->setText(undo.canRedo() ? localized(7322, "&Redo") + u' ' + undo.redoActionName()
                                 : localized(7322, "&Redo"));
    _actions.value(QStringLiteral("toggleRawKeysAndValues"))
        ->setChecked(_outlineController.showRawKeysAndValues());
    _actions.value(QStringLiteral("toggleSyncButtons"))->setChecked(_syncButtonsView->isVisible());
    _actions.value(QStringLiteral("toggleAutoSyncText"))->setChecked(_document.autoSyncText());
    for (const auto &[format, name] : formats()) {
        _actions.value(QStringLiteral("changePlistFormat%1").arg(format))
            ->setChecked(_document.plistFormat() == format);
    }
}

void ADPlistWindowController::refreshTitle()
{
    _window->setWindowTitle(_document.displayName() + QStringLiteral("[*]"));
    _window->setWindowFilePath(_document.fileURL());
    _window->setWindowModified(_document.isDocumentEdited());
}

// --- what the window keeps in the settings

void ADPlistWindowController::restoreGeometry()
{
    KZUserDefaults &defaults = _preferences.userDefaults();
    QSize size = sizeFromString(defaults.stringForKey(PlistDocumentDefaultSizeKey));
    if (!size.isValid())
        size = QSize(760, 640);
    _window->resize(size);
    const double split = defaults.doubleForKey(PlistDocumentSplitPositionKey);
    const int outline = split > 0 ? int(split) : size.height() * 3 / 5;
    _splitter->setSizes({outline, std::max(size.height() - outline, 0)});
    const PlistArray widths = defaults.arrayForKey(PlistDocumentColumnsWidthsKey);
    for (qsizetype column = 0; column < widths.count() && column < 3; ++column) {
        if (const qint64 width = widths.at(column).toInteger(); width > 0)
            _outlineView->header()->resizeSection(int(column), int(width));
    }
}

void ADPlistWindowController::saveSplitPosition()
{
    KZUserDefaults &defaults = _preferences.userDefaults();
    defaults.setDouble(_splitter->sizes().value(0), PlistDocumentSplitPositionKey);
    defaults.setString(stringFromSize(_window->size()), PlistDocumentDefaultSizeKey);
}

void ADPlistWindowController::saveColumnWidths()
{
    PlistArray widths = PlistArray::create();
    for (int column = 0; column < 3; ++column)
        widths.append(PlistValue(qint64(_outlineView->header()->sectionSize(column))));
    _preferences.userDefaults().setObject(widths.value(), PlistDocumentColumnsWidthsKey);
    _preferences.userDefaults().setString(stringFromSize(_window->size()),
                                          PlistDocumentDefaultSizeKey);
}
