#pragma once

#include "document/KZDocumentPanels.h"

#include <QPointer>
#include <QWidget>

/// The system's file dialogs as a document's save and open panels, attached
/// to its window and modal for that window only (for the program while
/// there is no window). The save dialog asks before it replaces a file, and
/// gives a name without an extension that of the type chosen. A dialog goes
/// when it is answered. Main thread only.
class KZFileDialogPanels : public KZDocumentPanels
{
public:
    /// `window` may be null.
    explicit KZFileDialogPanels(QWidget *window = nullptr);

    void runSavePanel(const KZSavePanelRequest &request,
                      std::function<void(const std::optional<KZSavePanelResult> &)> done) override;
    void runOpenPanel(const KZOpenPanelRequest &request,
                      std::function<void(const QStringList &paths)> done) override;

private:
    QPointer<QWidget> _window;
};
