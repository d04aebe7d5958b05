#pragma once

#include "shared/PlistValue.h"

/// Work on another thread that reads a tree's plain values (making the text of a
/// large document, say) holds a lease on the tree's root value while it reads.
/// Every edit of that tree first waits for the lease to end, because plain
/// containers change in place; reading beside it is safe, since plain values
/// change only through edits. With no lease held anywhere the check costs one
/// atomic load.
class ADPlistReadLease
{
public:
    /// Taken on the thread that owns the tree, before the reader starts.
    explicit ADPlistReadLease(PlistValue root);
    ~ADPlistReadLease();
    ADPlistReadLease(const ADPlistReadLease &) = delete;
    ADPlistReadLease &operator=(const ADPlistReadLease &) = delete;

    /// Returns once no lease is held on `root`.
    static void waitUntilReleased(const PlistValue &root);

private:
    PlistValue _root;
};
