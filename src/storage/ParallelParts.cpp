#include "ParallelParts.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

void ParallelParts::run(qsizetype count, qsizetype minimum,
                        const std::function<void(qsizetype, qsizetype)> &part)
{
    const qsizetype most = count / std::max<qsizetype>(minimum, 1);
    if (most < 2) {
        part(0, count);
        return;
    }
    // Asking costs a few system calls, too many for every small block.
    static const auto cores = qsizetype(std::max(1u, std::thread::hardware_concurrency()));
    const qsizetype parts = std::min(most, cores);
    // Part p starts here; the remainder is spread over the parts.
    auto bound = [count, parts](qsizetype p) {
        return count / parts * p + count % parts * p / parts;
    };
    std::vector<std::jthread> helpers;
    helpers.reserve(size_t(parts - 1));
    qsizetype started = 1;
    try {
        for (; started < parts; ++started)
            helpers.emplace_back(part, bound(started), bound(started + 1));
    } catch (const std::system_error &) {
        // No thread to spare: the caller does the rest.
    }
    for (qsizetype p = started; p < parts; ++p)
        part(bound(p), bound(p + 1));
    part(0, bound(1));
}
