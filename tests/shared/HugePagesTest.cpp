#include "shared/HugePages.h"
#include "shared/HugePageAllocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

// Sizes on both sides of one huge page and of a few.
const std::size_t kSizes[] = {0,
                              1,
                              4095,
                              HugePages::kPageBytes - 1,
                              HugePages::kPageBytes,
                              HugePages::kPageBytes + 1,
                              5 * HugePages::kPageBytes + 12345};

void fill(char *bytes, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = char(i * 31 + (i >> 12));
}

TEST(HugePages, BuffersHoldWhatTheirPlainTwinsHold)
{
    for (const std::size_t size : kSizes) {
        QByteArray huge = HugePages::buffer(qsizetype(size));
        QByteArray plain = HugePages::Plain::buffer(qsizetype(size));
        ASSERT_EQ(huge.size(), qsizetype(size));
        fill(huge.data(), size);
        fill(plain.data(), size);
        EXPECT_EQ(huge, plain) << size;
        huge.append("tail"); // grows like any buffer
        EXPECT_TRUE(huge.endsWith("tail"));
    }
}

TEST(HugePages, AllocationsHoldEveryByteAskedFor)
{
    for (const std::size_t size : kSizes) {
        void *huge = HugePages::allocate(size);
        void *plain = HugePages::Plain::allocate(size);
        ASSERT_NE(huge, nullptr);
        fill(static_cast<char *>(huge), size); // past the end it would fault
        fill(static_cast<char *>(plain), size);
        EXPECT_EQ(std::memcmp(huge, plain, size), 0) << size;
        if (size >= HugePages::kPageBytes) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(huge) % HugePages::kPageBytes, 0u);
        }
        HugePages::release(huge, size);
        HugePages::Plain::release(plain, size);
    }
}

TEST(HugePages, AnAllocatorGrowsAcrossTheThresholdLikeTheStandardOne)
{
    std::vector<quint32, plist_detail::HugePageAllocator<quint32>> huge;
    std::vector<quint32> plain;
    for (quint32 i = 0; i < 3 * HugePages::kPageBytes / sizeof(quint32); ++i) {
        huge.push_back(i * 2654435761u);
        plain.push_back(i * 2654435761u);
    }
    EXPECT_TRUE(std::equal(huge.begin(), huge.end(), plain.begin(), plain.end()));
}

} // namespace
