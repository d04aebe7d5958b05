#include "ADKeyCellView.h"

#include "ADPlistOutlineView.h"

#include "viewers/ADKeyViewer.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

namespace {

// Asks the question an error carries, one button per recovery option; true
// when the chosen option lets the edit go on.
bool askToRecover(const KZError &error, QWidget *window)
{
    QMessageBox box(QMessageBox::Warning, error.localizedDescription(),
                    error.localizedDescription(), QMessageBox::NoButton, window);
    box.setInformativeText(error.localizedRecoverySuggestion());
    box.setWindowModality(Qt::WindowModal);
    std::vector<QAbstractButton *> buttons;
    for (const QString &title : error.localizedRecoveryOptions())
        buttons.push_back(box.addButton(title, buttons.empty() ? QMessageBox::AcceptRole
                                                               : QMessageBox::RejectRole));
    box.exec();
    const auto chosen = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    if (chosen == buttons.end())
        return false;
    return !error.attemptRecovery(chosen - buttons.begin());
}

} // namespace

QWidget *ADKeyCellView::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                     const QModelIndex &index) const
{
    return openedTextField(parent, index);
}

void ADKeyCellView::setModelData(QWidget *editor, QAbstractItemModel *,
                                 const QModelIndex &index) const
{
    ADPlistObject *item = itemAt(index);
    const QString text = static_cast<QLineEdit *>(editor)->text();
    const bool showRaw = controller().showRawKeysAndValues();
    const std::shared_ptr<ADKeyViewer> keyViewer =
        ADKeyViewer::keyViewerForPlistObject(item, showRaw);
    if (!item || !keyViewer || text == keyViewer->keyStringForPlistObject(*item))
        return;
    const std::optional<KZError> question = keyViewer->validateKeyString(text, *item);
    if (!question) {
        keyViewer->setKeyString(text, *item);
        return;
    }
    // Without a yes, the field shows the old key again.
    afterEditing([&outline = view(), question = *question, keyViewer, text,
                  node = ADPlistObject::Pointer(item)] {
        if (askToRecover(question, &outline) && node->plistObjectParent())
            keyViewer->setKeyString(text, *node);
    });
}
