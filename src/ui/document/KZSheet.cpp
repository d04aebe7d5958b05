#include "KZSheet.h"

#include <QDialog>

void KZSheet::show(QDialog *dialog)
{
    if (dialog->parentWidget()) {
        dialog->open(); // window modal
        return;
    }
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
}
