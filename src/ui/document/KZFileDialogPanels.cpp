#include "KZFileDialogPanels.h"

#include "KZSheet.h"

#include "shared/KZLocalizedString.h"

#include <QFileDialog>

namespace {

// "Property List (*.plist)"; a type with no extension takes any file.
QString nameFilter(const KZFileTypeFilter &filter)
{
    QStringList patterns;
    for (const QString &extension : filter.extensions)
        patterns << QStringLiteral("*.") + extension;
    if (patterns.isEmpty())
        patterns << QStringLiteral("*");
    return QStringLiteral("%1 (%2)").arg(filter.label, patterns.join(u' '));
}

QFileDialog *makeDialog(QWidget *window, QFileDialog::AcceptMode mode, const QString &directory)
{
    auto *dialog = new QFileDialog(window); // owned by the window; deletes itself when answered
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(mode);
    dialog->setDirectory(directory);
    return dialog;
}

} // namespace

KZFileDialogPanels::KZFileDialogPanels(QWidget *window) : _window(window) {}

void KZFileDialogPanels::runSavePanel(
    const KZSavePanelRequest &request,
    std::function<void(const std::optional<KZSavePanelResult> &)> done)
{
    QFileDialog *dialog = makeDialog(_window, QFileDialog::AcceptSave, request.directory);
    QStringList filters;
    for (const KZFileTypeFilter &filter : request.filters)
        filters << nameFilter(filter);
    const auto suffixOf = [request, filters](const QString &filter) {
        const auto index = size_t(filters.indexOf(filter));
        return index < request.filters.size() ? request.filters[index].extensions.value(0)
                                              : QString();
    };
    dialog->setNameFilters(filters);
    dialog->selectNameFilter(filters.value(request.selectedFilter));
    dialog->setDefaultSuffix(suffixOf(dialog->selectedNameFilter()));
    dialog->selectFile(request.fileName);
    QObject::connect(
        dialog, &QFileDialog::filterSelected, dialog,
        [dialog, suffixOf](const QString &filter) { dialog->setDefaultSuffix(suffixOf(filter)); });
    QObject::connect(
        dialog, &QFileDialog::finished, dialog,
        [dialog, filters, done = std::move(done)](int result) {
            const QStringList chosen = dialog->selectedFiles();
            if (result != QDialog::Accepted || chosen.isEmpty()) {
                done(std::nullopt);
                return;
            }
            done(KZSavePanelResult{chosen.first(), filters.indexOf(dialog->selectedNameFilter())});
        });
    KZSheet::show(dialog);
}

void KZFileDialogPanels::runOpenPanel(const KZOpenPanelRequest &request,
                                      std::function<void(const QStringList &paths)> done)
{
    QFileDialog *dialog = makeDialog(_window, QFileDialog::AcceptOpen, request.directory);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    QStringList filters;
    for (const KZFileTypeFilter &filter : request.filters)
        filters << nameFilter(filter);
    filters << nameFilter(
        {KZLocalizedStringWithID(7125, QStringLiteral("All Files")), QString(), {}});
    dialog->setNameFilters(filters);
    QObject::connect(
        dialog, &QFileDialog::finished, dialog, [dialog, done = std::move(done)](int result) {
            done(result == QDialog::Accepted ? dialog->selectedFiles() : QStringList());
        });
    KZSheet::show(dialog);
}
