#include "document/ADTextChange.h"

#include <gtest/gtest.h>

namespace {

struct ChangeRow
{
    const char16_t *old;
    const char16_t *now;
    KZRange replaced;
    KZRange inserted;
};

// Long texts cross the block-wise comparison; pairs of surrogates never split.
TEST(ADTextChange, ReplacesOnlyWhatDiffers)
{
    const QString longStart = QString(10000, u'x');
    const ChangeRow rows[] = {
        {u"", u"", {0, 0}, {0, 0}},
        {u"abc", u"abc", {3, 0}, {3, 0}},
        {u"<string>a</string>", u"<string>bc</string>", {8, 1}, {8, 2}},
        {u"abc", u"", {0, 3}, {0, 0}},
        {u"aXa", u"aa", {1, 1}, {1, 0}},
        {u"aa", u"aaa", {2, 0}, {2, 1}}, // a repeat is taken at the end
        {u"a\U0001F600b", u"a\U0001F601b", {1, 2}, {1, 2}},
    };
    for (const ChangeRow &row : rows) {
        const QString old = QString::fromUtf16(row.old);
        const QString now = QString::fromUtf16(row.now);
        SCOPED_TRACE(now.toStdString());
        const ADTextChange change = ADTextChange::between(old, now);
        EXPECT_EQ(change.replaced, row.replaced);
        EXPECT_EQ(change.inserted, row.inserted);
        if (old == now)
            continue;
        const ADTextChange far =
            ADTextChange::between(longStart + old + longStart, longStart + now + longStart);
        EXPECT_EQ(far.replaced.location, row.replaced.location + longStart.size());
        EXPECT_EQ(far.inserted.length, row.inserted.length);
    }
}

} // namespace
