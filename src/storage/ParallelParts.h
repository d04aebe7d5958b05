#pragma once

#include <QtGlobal>

#include <functional>

/// Splits one large, uniform piece of work (encoding or copying tens of
/// megabytes of data while writing a file) over the machine's cores. Small
/// work runs on the caller's thread alone, as a thread costs more to start
/// than it would save.
class ParallelParts
{
public:
    /// Calls `part(from, to)` for consecutive ranges that cover [0, count),
    /// each of at least `minimum` units, and returns when all are done. The
    /// parts run at once on threads of their own and the caller's, so they
    /// must touch nothing in common but what they only read.
    static void run(qsizetype count, qsizetype minimum,
                    const std::function<void(qsizetype from, qsizetype to)> &part);
};
