#include "shared/NodeAllocator.h"
#include "shared/PlistArray.h"
#include "shared/PlistValue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

using plist_detail::NodeAllocator;

namespace {

// Live blocks of every size, each filled with its own byte: an overlap or a
// block handed out twice shows as a changed byte.
TEST(NodeAllocatorTest, LiveBlocksNeverOverlap)
{
    struct Block
    {
        unsigned char *bytes;
        size_t size;
    };
    std::vector<Block> blocks;
    for (int round = 0; round < 3; ++round) {
        for (size_t size = 1; size <= NodeAllocator::kLargest + 40; size += 7) {
            auto *bytes = static_cast<unsigned char *>(NodeAllocator::allocate(size));
            std::memset(bytes, int(blocks.size() & 0xFF), size);
            blocks.push_back({bytes, size});
        }
        // Free every other one so that later rounds reuse blocks.
        for (size_t i = blocks.size(); i-- > 0;) {
            if (i % 2 == 1) {
                NodeAllocator::deallocate(blocks[i].bytes, blocks[i].size);
                blocks.erase(blocks.begin() + qsizetype(i));
            }
        }
    }
    std::vector<unsigned char> expected;
    for (size_t i = 0; i < blocks.size(); ++i) {
        const Block &b = blocks[i];
        for (size_t k = 0; k < b.size; ++k)
            ASSERT_EQ(b.bytes[k], b.bytes[0]) << "block " << i << " byte " << k;
        expected.push_back(b.bytes[0]);
    }
    for (size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(blocks[i].bytes[0], expected[i]);
        NodeAllocator::deallocate(blocks[i].bytes, blocks[i].size);
    }
}

// Values made on threads that end, freed on others, and the memory reused
// meanwhile: what a file browser's workers and the document window do.
TEST(NodeAllocatorTest, ValuesCrossThreadsThatEnd)
{
    auto makeStrings = [](int seed) {
        PlistArray a = PlistArray::create();
        for (int i = 0; i < 5000; ++i)
            a.append(PlistValue(QStringLiteral("value %1 of %2").arg(i).arg(seed)));
        return a;
    };
    std::vector<PlistArray> made(6);
    std::vector<std::thread> makers;
    for (int t = 0; t < 6; ++t)
        makers.emplace_back([&made, &makeStrings, t] { made[size_t(t)] = makeStrings(t); });
    for (std::thread &t : makers)
        t.join();

    // Free half on a worker that then ends, while this thread makes more.
    std::thread freer([&made] {
        for (size_t t = 0; t < 3; ++t)
            made[t] = PlistArray();
    });
    const PlistArray mine = makeStrings(99);
    freer.join();
    for (size_t t = 0; t < 3; ++t)
        made[t] = makeStrings(int(t));

    for (size_t t = 0; t < made.size(); ++t) {
        ASSERT_EQ(made[t].count(), 5000);
        EXPECT_EQ(made[t].at(4321).toString(), QStringLiteral("value 4321 of %1").arg(t));
    }
    EXPECT_EQ(mine.at(17).toString(), QStringLiteral("value 17 of 99"));
}

} // namespace
