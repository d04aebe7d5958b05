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
    // Taken here, before the worker runs, so that no edit slips in between,
    // and ended once the text is on its way, so that an edit that waited
    // finds it coming.
    auto lease = std::make_shared<ADPlistReadLease>(plist);
    _worker.start(
        [plist, make = std::move(make)] {
            try {
                return make(plist);
            } catch (const std::exception &) { // out of memory, say: the text shows empty
                return QString();
            }
        },
        [this](const QString &text) { emit textMade(text); },
        [lease = std::move(lease)]() mutable { lease.reset(); });
}
