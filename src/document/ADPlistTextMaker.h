#pragma once

#include "shared/KZWorker.h"
#include "shared/PlistValue.h"

#include <QObject>
#include <QString>

#include <functional>
#include <optional>

/// Makes the text of a large plain value on a worker thread, so that a big
/// document's window shows before its text is ready. The value is leased
/// while the worker reads it (`ADPlistReadLease`): an edit of its tree waits
/// for the text rather than change what is being read. `textMade` comes on the
/// owner's thread unless the text was taken or discarded first. Owner's
/// thread only; the destructor waits for a worker still running.
class ADPlistTextMaker : public QObject
{
    Q_OBJECT

public:
    /// Makes the text; runs on the worker, so it may touch nothing but the value.
    using Make = std::function<QString(const PlistValue &)>;

    explicit ADPlistTextMaker(QObject *parent = nullptr) : QObject(parent) {}

    /// Whether making the text of `plist` is worth a thread: it holds many
    /// values, or a great many bytes of strings and data.
    static bool isWorthAThread(const PlistValue &plist);

    /// Discards what is being made and starts on `plist`.
    void start(const PlistValue &plist, Make make);
    /// Waits for the text being made; no `textMade` follows. None when idle.
    std::optional<QString> take() { return _worker.take(); }
    /// Waits for the worker and forgets its text.
    void discard() { (void)take(); }

signals:
    void textMade(const QString &text);

private:
    KZWorker<QString> _worker{this};
};
