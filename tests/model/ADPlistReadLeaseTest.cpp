#include "model/ADPlistReadLease.h"
#include "model/ADPlistObject.h"
#include "support/ValueBuilders.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

namespace {

qint64 valueOf(const ADPlistObject::Pointer &root)
{
    return root->childForKey(QStringLiteral("a"))->plist().toInteger();
}

// A reader on another thread holds the root; an edit of that tree must not
// change containers under it, while other trees edit freely.
TEST(ADPlistReadLease, AnEditOfALeasedTreeWaitsUntilTheLeaseEnds)
{
    const ADPlistObject::Pointer leased =
        ADPlistObject::createWithPlist(dictionaryOf({{"a", PlistValue(1)}}));
    const ADPlistObject::Pointer other =
        ADPlistObject::createWithPlist(dictionaryOf({{"a", PlistValue(1)}}));
    auto lease = std::make_unique<ADPlistReadLease>(leased->plist());

    other->childForKey(QStringLiteral("a"))->setPlist(PlistValue(2));
    EXPECT_EQ(valueOf(other), 2);

    ADPlistObject *child = leased->childForKey(QStringLiteral("a"));
    std::future<void> edit =
        std::async(std::launch::async, [child] { child->setPlist(PlistValue(3)); });
    EXPECT_EQ(edit.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_EQ(valueOf(leased), 1);

    lease.reset();
    edit.get();
    EXPECT_EQ(valueOf(leased), 3);
}

} // namespace
