#pragma once

#include "document/ADPlistTextSide.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <optional>

class ADPlistTextView;
class ADPreferences;
class ADTextUndoRecorder;
class ADUndoManager;
class ADXMLTagColorizer;
class QTextDocument;
class QTimer;
class QWidget;

/// The text side of a document. It owns the text view of the plist's text,
/// keeps the view's tag colouring and font in step with the preferences,
/// records typing on the document's undo manager with the text document as
/// the target, and answers the document's questions about the text and the
/// selection. Nothing here parses the text.
///
/// Tags are coloured only while syntax colouring is on (the window turns it
/// on for XML alone) and the "colorXMLTags" setting is on. Ranges are in
/// UTF-16 units; the range {KZNotFound, 0} given to an editing operation
/// means the whole text.
///
/// A long text goes into the view piece by piece, a piece each pass of the
/// event loop, so that its top shows at once and the window stays live;
/// meanwhile the view is read-only and `loadProgress` tells how far it is.
/// Every question about the text first puts in the rest (`finishLoading`).
///
/// The view is a child of the widget given, or owned by this controller
/// when none is. The preferences outlive it. Main thread only.
class ADTextViewController : public QObject, public ADPlistTextSide
{
    Q_OBJECT

public:
    explicit ADTextViewController(ADPreferences &preferences, QWidget *parentWidget = nullptr,
                                  QObject *parent = nullptr);
    ~ADTextViewController() override;

    ADPlistTextView *plistTextView() const { return _plistTextView; }
    void setUndoManager(ADUndoManager *manager) override;
    const void *undoTarget() const override { return textStorageForPrinting(); }

    bool syntaxColoringEnabled() const { return _syntaxColoringEnabled; }
    void setSyntaxColoringEnabled(bool enabled);
    bool editable() const { return _editable; }
    void setEditable(bool editable);

    /// The text font of the preferences, else the fixed-pitch system font of size 10.
    void refreshFonts();
    /// Colours the text again, with the present settings, as it is shown.
    void colorizeAllText();

    /// While a text is being made or goes into the view.
    bool isLoading() const { return _textBeingMade || !_pendingText.isNull(); }
    /// Puts the rest of a text being loaded into the view now.
    void finishLoading();

    QString currentText() override;
    /// The text document: what typing registers its undo with.
    QTextDocument *textStorageForPrinting() const;
    void updatePlistText(const QString &text) override;
    void showTextBeingMade() override;
    std::optional<QString> textInRange(KZRange range) override;
    QString selectedText() override;
    /// Also scrolls to the range and focuses the view.
    bool selectTextInRange(KZRange range) override;
    KZRange rangeOfString(const QString &string, qint64 options, bool wrap) override;
    bool replaceTextInRange(KZRange range, const QString &text) override;
    void scrollToSelection();
    void showFindIndicator() {}

signals:
    /// Of a text going into the view piece by piece; `loaded` == `total` at the end.
    void loadProgress(qint64 loaded, qint64 total);

private:
    void loadPiece(qsizetype end);
    /// Changes only the part of the shown text that differs from `text`;
    /// false when that cannot be done safely or would be too big for one pass.
    bool replaceChangedPart(const QString &text);
    void keepIfShown(const QString &text);
    /// Puts text into the view as no edit of the user's.
    void putText(const std::function<void()> &put);
    void userDefaultDidChange(const QString &key);
    void textDidChange();

    ADPreferences &_preferences;
    bool _syntaxColoringEnabled = false;
    bool _editable = true;
    QPointer<ADPlistTextView> _plistTextView;
    ADXMLTagColorizer *_colorizer;     // child
    ADTextUndoRecorder *_undoRecorder; // child
    QPointer<ADUndoManager> _undoManager;
    QTimer *_loadTimer; // child
    bool _textBeingMade = false;
    QString _shownText;   // the whole text last put in while the view shows exactly it, else null
    QString _pendingText; // null unless a text is being loaded
    qsizetype _pendingFrom = 0;
    quint64 _colorObservation;
};
