#include "ADPlistWindow.h"

#include <QCloseEvent>
#include <QPointer>

ADPlistWindow::ADPlistWindow(QWidget *parent) : QMainWindow(parent) {}

// The question may be answered later (a sheet): the first close is refused,
// and a yes closes the window again, this time for good.
void ADPlistWindow::closeEvent(QCloseEvent *event)
{
    if (_closeAgreed || !_mayClose) {
        QMainWindow::closeEvent(event);
        emit windowClosed();
        return;
    }
    event->ignore();
    _mayClose([window = QPointer(this)](bool mayClose) {
        if (!window || !mayClose)
            return;
        window->_closeAgreed = true;
        window->close();
    });
}
