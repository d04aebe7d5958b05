#pragma once

#include <QMetaObject>
#include <QObject>

#include <functional>
#include <future>
#include <optional>
#include <utility>

/// Runs one piece of work at a time on a thread of its own and hands the
/// result back on the thread of a context object, so that the program stays
/// live meanwhile. A result that was taken, or dropped by a newer start,
/// is never handed back. The context outlives the worker (make the worker a
/// member of it); the destructor waits for work still running.
template <typename T> class KZWorker
{
public:
    explicit KZWorker(QObject *context) : _context(context) {}
    ~KZWorker() { (void)take(); }
    KZWorker(const KZWorker &) = delete;
    KZWorker &operator=(const KZWorker &) = delete;

    /// Drops what is running (waiting for it), then runs `work`, which must
    /// not throw. Its result goes to `done`; `afterQueued` runs on the worker
    /// once the result is on its way, for what must end only then.
    void start(std::function<T()> work, std::function<void(T)> done,
               std::function<void()> afterQueued = {})
    {
        (void)take();
        _done = std::move(done);
        const quint64 generation = ++_generation;
        _result = std::async(std::launch::async, [this, generation, work = std::move(work),
                                                  afterQueued = std::move(afterQueued)]() mutable {
            T result = work();
            QMetaObject::invokeMethod(
                _context, [this, generation] { deliver(generation); }, Qt::QueuedConnection);
            if (afterQueued)
                std::exchange(afterQueued, {})();
            return result;
        });
    }

    bool isRunning() const { return _result.valid(); }

    /// Waits for the work running; its result, which then goes nowhere else.
    /// None when nothing runs.
    std::optional<T> take()
    {
        if (!_result.valid())
            return std::nullopt;
        ++_generation;
        return _result.get();
    }

private:
    void deliver(quint64 generation)
    {
        if (generation != _generation || !_result.valid())
            return;
        // Let go of what `done` holds once it has run: it may own the context.
        std::exchange(_done, {})(_result.get());
    }

    QObject *_context;
    std::future<T> _result;
    std::function<void(T)> _done;
    quint64 _generation = 0;
};
