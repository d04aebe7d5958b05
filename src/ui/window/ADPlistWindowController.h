#pragma once

#include "document/ADPlistDocumentWindow.h"
#include "outline/ADPlistOutlineController.h"
#include "shared/ADTypes.h"
#include "ui/outline/ADEditSheet.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class ADPlistDocument;
class ADPlistOutlineView;
class ADPlistWindow;
class ADPreferences;
class ADTextViewController;
class KZFileDialogPanels;
class KZMessageBoxPresenter;
class QAction;
class QCheckBox;
class QComboBox;
class QMenu;
class QPushButton;
class QSplitter;
class QTimer;
class QToolButton;

/// Ties one document to its window: the outline above, the text below in a
/// splitter (only the text collapses), the sync buttons, a toolbar with the
/// Format, Definition and View As pop-ups, and the menus. It holds no
/// document state: it follows the document's signals and keeps the two
/// editors' editability, the buttons, the toolbar and every command's
/// enabled state in step.
///
/// Owns the window, the outline controller and the text controller. The
/// document and the preferences outlive it; the program lets go of it when
/// the window has closed. Main thread only.
class ADPlistWindowController : public QObject,
                                public ADPlistDocumentWindow,
                                public ADPlistOutlineControllerDelegate
{
    Q_OBJECT

public:
    /// Who may edit what in an edit mode: once one side holds edits the
    /// other lacks, the other is locked until a sync.
    struct Editability
    {
        bool textEditable = false;
        bool outlineEditable = false;
        bool syncTextEnabled = false;
        bool syncOutlineEnabled = false;
        bool operator==(const Editability &) const = default;
    };
    static Editability editabilityFor(ADEditMode mode, bool allowEditing, ADPlistFormat format);
    /// The class menu's rule: in a preference domain every node but the
    /// root; in JSON only arrays and dictionaries; else what the node can be.
    static bool allowsPlistType(ADPlistType type, const ADPlistObject &object,
                                bool inPreferenceDomain, ADPlistFormat format);

    ADPlistWindowController(ADPlistDocument &document, ADPreferences &preferences);
    ~ADPlistWindowController() override;

    ADPlistWindow *window() const { return _window.get(); }
    ADPlistDocument &document() const { return _document; }
    ADPlistOutlineController &outlineController() { return _outlineController; }
    ADPlistOutlineView *outlineView() const { return _outlineView; }
    ADTextViewController &textViewController() const { return *_textViewController; }
    QSplitter *splitter() const { return _splitter; }
    /// A menu command by its name ("save", "gotoLine"...), or null.
    QAction *action(const QString &name) const { return _actions.value(name); }
    QComboBox *formatPopUp() const { return _formatPopUp; }
    QToolButton *viewAsButton() const { return _viewAsButton; }
    QPushButton *syncTextButton() const { return _syncTextButton; }
    QPushButton *syncOutlineButton() const { return _syncOutlineButton; }

    void showWindow();

    // --- ADPlistDocumentWindow
    bool commitEditing() override;
    void exposePlistTextView() override;
    void reloadStructureDefinition() override;
    void bringToFront() override;
    ADPlistObject *firstSelectedItem() override;
    ADPlistObjectList selectedItems() override;
    void selectItems(const ADPlistObjectList &items) override;
    void editValueForItem(ADPlistObject *item, KZRange range) override;
    void editKeyForItem(ADPlistObject *item, KZRange range) override;

    // --- ADPlistOutlineControllerDelegate
    bool shouldAllowPlistType(ADPlistType type, const ADPlistObject &object) override;

    // --- commands
    void syncOutline();
    void syncText();
    void toggleAutoSyncText(bool autoSync);
    bool validate_gotoLine() const;
    /// Asks for a line number, counted from 1, up to the text's number of lines.
    void gotoLine();
    /// Selects line `lineNumber` (from 1) of the text and shows the text pane.
    void acceptGotoLine(qint64 lineNumber);
    bool validate_scrollToSelection() const;
    void scrollToSelection();
    bool validate_showEditValueSheet() const;
    void showEditValueSheet();
    ADEditSheet *editSheet() const { return _editSheet; }

    void refreshSyncButtons();
    void refreshPlistFormatToolbarItem();
    void refreshViewAsToolbarItem();
    void refreshDefinitionsToolbarItem();
    void updateTextViewLayout();
    /// Enables and checks every menu command by its validator.
    void refreshActions();

signals:
    void newDocumentRequested();
    void openDocumentRequested();
    void openClipboardRequested();
    void quitRequested();
    /// The window has closed; the controller may go.
    void windowClosed();

private:
    void buildWindow();
    void buildToolbar();
    void buildMenus();
    QAction *addCommand(QMenu *menu, const QString &name, const QString &title,
                        std::function<void()> run, std::function<bool()> enabled = {});
    void setupPlistOutlineController();
    void setupDocumentObservations();
    void detachFromDocument();
    void plistFormatDidChange(ADPlistFormat format);
    void refreshTitle();
    void scheduleRefresh();
    void restoreGeometry();
    void saveSplitPosition();
    void saveColumnWidths();

    ADPlistDocument &_document;
    ADPreferences &_preferences;
    std::unique_ptr<ADPlistWindow> _window;
    ADPlistOutlineController _outlineController;
    std::unique_ptr<ADTextViewController> _textViewController;
    std::unique_ptr<KZMessageBoxPresenter> _presenter;
    std::unique_ptr<KZFileDialogPanels> _panels;
    ADPlistOutlineView *_outlineView = nullptr; // the window's
    QSplitter *_splitter = nullptr;             // the window's
    QWidget *_syncButtonsView = nullptr;        // the window's
    QPushButton *_syncOutlineButton = nullptr;  // the window's
    QPushButton *_syncTextButton = nullptr;     // the window's
    QCheckBox *_autoSyncTextButton = nullptr;   // the window's
    QComboBox *_formatPopUp = nullptr;          // the window's
    QComboBox *_definitionPopUp = nullptr;      // the window's
    QToolButton *_viewAsButton = nullptr;       // the window's
    QMenu *_viewAsMenu = nullptr;               // the window's
    QPointer<ADEditSheet> _editSheet;           // the window's, made on first use
    QTimer *_refreshTimer = nullptr;            // child
    QHash<QString, QAction *> _actions;         // the window's
    QHash<QAction *, std::function<bool()>> _validators;
    // Null once the document has closed (it may then go first).
    QPointer<ADPlistDocument> _documentAlive;
};
