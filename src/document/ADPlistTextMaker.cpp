#include "ADPlistTextMaker.h"

#include "model/ADPlistReadLease.h"

#include <memory>
#include <vector>

namespace {

// Below these a text is made in a few milliseconds, and a text shown at once
// is better than one that follows.
constexpr qsizetype kThreadValues = 20'000;
constexpr qsizetype kThreadBytes = 4 << 20;

qsizetype leafBytes(const PlistValue &value)
{
    if (value.isString())
        return value.stringLength();
    return value.plistType() == ADPlistTypeData ? value.dataView().size() : 0;
}

} // namespace

ADPlistTextMaker::ADPlistTextMaker(QObject *parent) : QObject(parent) {}

ADPlistTextMaker::~ADPlistTextMaker()
{
    discard();
}

bool ADPlistTextMaker::isWorthAThread(const PlistValue &plist)
{
    qsizetype values = 1;
    qsizetype bytes = 0;
    std::vector<PlistValue> work{plist};
    while (!work.empty()) {
        const PlistValue value = std::move(work.back());
        work.pop_back();
        const qsizetype count = value.containerCount();
        values += count;
        bytes += leafBytes(value);
        if (values > kThreadValues || bytes > kThreadBytes)
            return true;
        for (qsizetype i = 0; i < count; ++i)
            work.push_back(value.containerValueAt(i));
    }
    return false;
}

void ADPlistTextMaker::start(const PlistValue &plist, Make make)
{
    discard();
    const quint64 generation = ++_generation;
    // Taken here, before the worker runs, so that no edit slips in between.
    auto lease = std::make_unique<ADPlistReadLease>(plist);
    _made = std::async(std::launch::async, [this, plist, make = std::move(make),
                                            lease = std::move(lease), generation]() mutable {
        QString text = make(plist);
        // Queued before the lease ends, so an edit that waited finds it on its way.
        QMetaObject::invokeMethod(
            this, [this, generation] { deliver(generation); }, Qt::QueuedConnection);
        lease.reset();
        return text;
    });
}

std::optional<QString> ADPlistTextMaker::take()
{
    if (!_made.valid())
        return std::nullopt;
    ++_generation; // the delivery on its way finds nothing to deliver
    return _made.get();
}

void ADPlistTextMaker::deliver(quint64 generation)
{
    if (generation != _generation || !_made.valid())
        return;
    emit textMade(_made.get());
}
