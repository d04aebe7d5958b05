#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class KZError;

/// A question, or a message, for the user.
struct KZQuestion
{
    QString title;
    QString informativeText;
    QStringList buttons;   // the first is the default
    int cancelButton = -1; // what Escape chooses, and the answer when no one can be asked
};

/// Shown while it lives: see `KZDocumentPresenter::beginProgress`.
class KZProgressIndicator
{
public:
    virtual ~KZProgressIndicator() = default;
};

/// Where a document's questions go: conversions, reverting, a file changed on
/// disk, errors with their recovery options. The window side shows each as a
/// message attached to the document's window, modal for that window only (or
/// for the program while there is no window); tests answer from a script.
/// Not owned by the documents that use it. Main thread only.
class KZDocumentPresenter
{
public:
    virtual ~KZDocumentPresenter() = default;

    /// Shows `question` and calls `answer` once with the index of the button
    /// chosen, perhaps before returning.
    virtual void ask(const KZQuestion &question, std::function<void(int button)> answer) = 0;
    /// Long work of a document (reading a big file), shown as busy with a
    /// Cancel button once it has lasted long enough to notice; `cancel` runs
    /// when the user chooses it. Shown until the indicator goes; none here.
    virtual std::unique_ptr<KZProgressIndicator> beginProgress(const QString &title,
                                                               std::function<void()> cancel);

    /// Asks `presenter`; with none (no one to ask), logs the question and
    /// answers its cancel button.
    static void askOrDecline(KZDocumentPresenter *presenter, const KZQuestion &question,
                             std::function<void(int button)> answer);
    /// Shows an error with one button per recovery option, the last being the
    /// way out, or an OK button; runs the option chosen. `done` (may be
    /// empty) learns whether it recovered.
    static void presentError(KZDocumentPresenter *presenter, const KZError &error,
                             std::function<void(bool recovered)> done);
};
