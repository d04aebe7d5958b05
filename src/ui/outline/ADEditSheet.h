#pragma once

#include "outline/ADEditSheetController.h"

#include <QDialog>

class ADPlistTextView;
class QLabel;

/// The sheet for editing one or several values in a large text view, on the
/// outline's window. Return makes a new line; Enter (the keypad's) or the
/// default button takes the text. Text that does not read for every value
/// keeps the sheet open with the reason under it, and nothing changes.
class ADEditSheet : public QDialog
{
    Q_OBJECT

public:
    ADEditSheet(ADValueViewerRegistry &registry, QWidget *window);

    /// Fills the sheet for the objects and shows it window-modal.
    void startEditingPlistObjects(const std::vector<ADPlistObject *> &objects, const QFont &font);
    ADPlistTextView *textView() const { return _textView; }
    QLabel *errorLabel() const { return _errorLabel; }
    void acceptEditValue();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ADEditSheetController _controller;
    ADPlistTextView *_textView; // child
    QLabel *_infoLabel;         // child
    QLabel *_errorLabel;        // child
};
