#include "ADPlistWindow.h"

#include <QCloseEvent>
#include <QPointer>

#include <memory>

ADPlistWindow::ADPlistWindow(QWidget *parent) : QMainWindow(parent) {}

void ADPlistWindow::closeWithoutAsking()
{
    _closeAgreed = true;
    close();
}

// The question may be answered at once, or later (a sheet): then the first
// close is refused, and a yes closes the window again, this time for good.
void ADPlistWindow::closeEvent(QCloseEvent *event)
{
    enum class Answer
    {
        Pending,
        Yes,
        No,
        Later
    };
    auto answer = std::make_shared<Answer>(Answer::Pending);
    if (!_closeAgreed && _mayClose) {
        _mayClose([window = QPointer(this), answer](bool mayClose) {
            if (*answer != Answer::Later) {
                *answer = mayClose ? Answer::Yes : Answer::No;
                return;
            }
            if (window && mayClose)
                window->closeWithoutAsking();
        });
        if (*answer != Answer::Yes) {
            if (*answer == Answer::Pending)
                *answer = Answer::Later;
            event->ignore();
            return;
        }
    }
    QMainWindow::closeEvent(event);
    emit windowClosed();
}
