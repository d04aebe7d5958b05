#pragma once

#include "document/KZDocumentPresenter.h"

#include <QPointer>
#include <QWidget>

/// Shows a document's questions as message boxes attached to its window,
/// modal for that window only; with no window, modal for the program. A box
/// goes when it is answered; closing it answers the question's cancel button.
/// Progress shows in a dialog that leaves the other windows usable. Main
/// thread only.
class KZMessageBoxPresenter : public KZDocumentPresenter
{
public:
    /// `window` may be null.
    explicit KZMessageBoxPresenter(QWidget *window = nullptr);

    void ask(const KZQuestion &question, std::function<void(int button)> answer) override;
    /// A progress dialog with a busy bar, shown after a tenth of a second.
    std::unique_ptr<KZProgressIndicator> beginProgress(const QString &title,
                                                       std::function<void()> cancel) override;

private:
    QPointer<QWidget> _window;
};
