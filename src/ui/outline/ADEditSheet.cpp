#include "ADEditSheet.h"

#include "ui/document/ADPlistTextView.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

ADEditSheet::ADEditSheet(ADValueViewerRegistry &registry, QWidget *window)
    : QDialog(window), _controller(registry), _textView(new ADPlistTextView(this)),
      _infoLabel(new QLabel(this)), _errorLabel(new QLabel(this))
{
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Edit Value"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &ADEditSheet::acceptEditValue);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    buttons->button(QDialogButtonBox::Ok)->setAutoDefault(false);
    _errorLabel->setWordWrap(true);
    _errorLabel->setForegroundRole(QPalette::BrightText);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(_infoLabel);
    layout->addWidget(_textView, 1);
    layout->addWidget(_errorLabel);
    layout->addWidget(buttons);
    _textView->installEventFilter(this);
    resize(520, 360);
}

void ADEditSheet::startEditingPlistObjects(const std::vector<ADPlistObject *> &objects,
                                           const QFont &font)
{
    _controller.startEditingPlistObjects(objects);
    _textView->setFont(font);
    _textView->setPlainText(_controller.initialText());
    _textView->selectAll();
    _textView->verticalScrollBar()->setValue(0);
    _infoLabel->setText(_controller.infoText());
    _errorLabel->clear();
    _textView->setFocus();
    open();
}

void ADEditSheet::acceptEditValue()
{
    if (const std::optional<QString> refused =
            _controller.acceptEditValue(_textView->toPlainText())) {
        _errorLabel->setText(*refused);
        return;
    }
    accept();
}

bool ADEditSheet::eventFilter(QObject *watched, QEvent *event)
{
    // Enter, not Return, takes the text: Return is a new line in it.
    if (watched == _textView && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Enter) {
        acceptEditValue();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}
