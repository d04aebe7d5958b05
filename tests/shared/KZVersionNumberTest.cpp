// Dotted versions compare part by part as numbers.

#include "shared/KZVersionNumber.h"

#include <gtest/gtest.h>

namespace {

TEST(VersionNumber, ComparesPartByPartAsNumbers)
{
    struct Row
    {
        const char *a;
        const char *b;
        int order;
    };
    const Row rows[] = {
        {"6.4", "6.4.0", 0}, {"6.10", "6.9", 1}, {"10.9.2", "10.10", -1}, {"6.4.2-rc1", "6.4.2", 0},
        {"999", "6.4.2", 1}, {"", "0", 0},       {"1..2", "1", 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.a) + " vs " + row.b);
        const KZVersionNumber a = KZVersionNumber::versionWithString(QString::fromLatin1(row.a));
        const KZVersionNumber b = KZVersionNumber::versionWithString(QString::fromLatin1(row.b));
        EXPECT_EQ(a.compare(b), row.order);
        EXPECT_EQ(b.compare(a), -row.order);
    }
    EXPECT_GT(KZSystemVersionNumber(), KZVersionNumber::versionWithString(QStringLiteral("6.0")));
}

} // namespace
