#include "storage/ParallelParts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

struct Split
{
    std::vector<std::pair<qsizetype, qsizetype>> ranges; // in order
    std::set<std::thread::id> threads;
};

Split split(qsizetype count, qsizetype minimum)
{
    Split result;
    std::mutex mutex;
    ParallelParts::run(count, minimum, [&](qsizetype from, qsizetype to) {
        const std::scoped_lock lock(mutex);
        result.ranges.emplace_back(from, to);
        result.threads.insert(std::this_thread::get_id());
    });
    std::sort(result.ranges.begin(), result.ranges.end());
    return result;
}

} // namespace

TEST(ParallelParts, CoversTheWorkOnceInPartsOfAtLeastTheMinimum)
{
    const auto cores = qsizetype(std::max(1u, std::thread::hardware_concurrency()));
    for (const auto &[count, minimum] : std::vector<std::pair<qsizetype, qsizetype>>{
             {0, 10}, {5, 10}, {19, 10}, {20, 10}, {1000003, 1000}, {7, 0}}) {
        const Split s = split(count, minimum);
        const qsizetype expected =
            std::clamp<qsizetype>(minimum > 0 ? count / minimum : count, 1, cores);
        ASSERT_EQ(qsizetype(s.ranges.size()), expected) << count << " by " << minimum;
        EXPECT_EQ(qsizetype(s.threads.size()), expected);
        qsizetype next = 0;
        for (const auto &[from, to] : s.ranges) {
            EXPECT_EQ(from, next);
            if (expected > 1) {
                EXPECT_GE(to - from, minimum);
            }
            next = to;
        }
        EXPECT_EQ(next, count);
    }
}
