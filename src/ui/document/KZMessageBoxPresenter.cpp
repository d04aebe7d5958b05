#include "KZMessageBoxPresenter.h"

#include "KZSheet.h"

#include "shared/KZLocalizedString.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>

#include <algorithm>
#include <vector>

namespace {

// Work shorter than this shows nothing.
constexpr int kProgressDelayMs = 100;

// The dialog goes with the indicator, unless its window took it first.
class ProgressDialogIndicator : public KZProgressIndicator
{
public:
    explicit ProgressDialogIndicator(QProgressDialog *dialog) : _dialog(dialog) {}
    ~ProgressDialogIndicator() override
    {
        if (!_dialog)
            return;
        _dialog->hide(); // at once, though it goes only when control is back in the event loop
        _dialog->deleteLater();
    }

private:
    QPointer<QProgressDialog> _dialog;
};

QMessageBox::ButtonRole roleOf(const KZQuestion &question, int index)
{
    if (index == question.cancelButton)
        return QMessageBox::RejectRole;
    return index == 0 ? QMessageBox::AcceptRole : QMessageBox::ActionRole;
}

} // namespace

KZMessageBoxPresenter::KZMessageBoxPresenter(QWidget *window) : _window(window) {}

void KZMessageBoxPresenter::ask(const KZQuestion &question, std::function<void(int button)> answer)
{
    auto *box = new QMessageBox(_window); // owned by the window; deletes itself when answered
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(QGuiApplication::applicationDisplayName());
    box->setIcon(QMessageBox::Warning);
    box->setText(question.title);
    box->setInformativeText(question.informativeText);
    std::vector<QAbstractButton *> buttons;
    for (int index = 0; index < question.buttons.size(); ++index)
        buttons.push_back(box->addButton(question.buttons[index], roleOf(question, index)));
    if (!buttons.empty())
        box->setDefaultButton(static_cast<QPushButton *>(buttons.front()));
    if (question.cancelButton >= 0 && size_t(question.cancelButton) < buttons.size())
        box->setEscapeButton(buttons[size_t(question.cancelButton)]);
    const int unanswered = std::max(question.cancelButton, 0);
    QObject::connect(
        box, &QMessageBox::finished, box, [box, buttons, unanswered, answer = std::move(answer)] {
            const auto chosen = std::find(buttons.begin(), buttons.end(), box->clickedButton());
            answer(chosen == buttons.end() ? unanswered : int(chosen - buttons.begin()));
        });
    KZSheet::show(box);
}

std::unique_ptr<KZProgressIndicator>
KZMessageBoxPresenter::beginProgress(const QString &title, std::function<void()> cancel)
{
    auto *dialog =
        new QProgressDialog(title, KZLocalizedStringWithID(276, QStringLiteral("Cancel")), 0, 0,
                            _window); // a busy bar; owned by the indicator
    dialog->setWindowTitle(QGuiApplication::applicationDisplayName());
    dialog->setWindowModality(Qt::NonModal);
    dialog->setAutoReset(false);
    dialog->setMinimumDuration(kProgressDelayMs);
    dialog->setValue(0); // starts the wait after which it shows
    QObject::connect(dialog, &QProgressDialog::canceled, dialog, std::move(cancel));
    return std::make_unique<ProgressDialogIndicator>(dialog);
}
