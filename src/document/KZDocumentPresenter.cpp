#include "KZDocumentPresenter.h"

#include "shared/KZError.h"
#include "shared/KZLocalizedString.h"

#include <QtDebug>

#include <algorithm>

std::unique_ptr<KZProgressIndicator> KZDocumentPresenter::beginProgress(const QString &,
                                                                        std::function<void()>)
{
    return nullptr;
}

void KZDocumentPresenter::askOrDecline(KZDocumentPresenter *presenter, const KZQuestion &question,
                                       std::function<void(int button)> answer)
{
    if (presenter) {
        presenter->ask(question, std::move(answer));
        return;
    }
    qWarning("%s: %s", qPrintable(question.title), qPrintable(question.informativeText));
    answer(std::max(question.cancelButton, 0));
}

void KZDocumentPresenter::presentError(KZDocumentPresenter *presenter, const KZError &error,
                                       std::function<void(bool recovered)> done)
{
    KZQuestion question{error.localizedDescription(), error.localizedRecoverySuggestion(),
                        error.localizedRecoveryOptions()};
    const bool hasOptions = !question.buttons.isEmpty();
    if (!hasOptions)
        question.buttons = {KZLocalizedStringWithID(7116, QStringLiteral("OK"))};
    question.cancelButton = int(question.buttons.size()) - 1;
    askOrDecline(presenter, question, [error, hasOptions, done = std::move(done)](int button) {
        const bool recovered = hasOptions && !error.attemptRecovery(button);
        if (done)
            done(recovered);
    });
}
