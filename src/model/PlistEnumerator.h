#pragma once

#include "ADPlistObject.h"

#include <vector>

/// Enumerates every descendant of a node, depth first with a node before its
/// children, never the node itself; dictionaries in the order of their keys.
/// Keeps the nodes it walks alive. Does not watch the tree: a child count
/// that shrinks under it only ends that container early. Iterative, so a
/// tree 100,000 deep is fine.
class PlistEnumerator
{
public:
    explicit PlistEnumerator(ADPlistObject::Pointer plistObject);

    /// The next descendant, or null when all were given.
    ADPlistObject *nextObject();

private:
    struct Frame
    {
        ADPlistObject::Pointer node;
        qint64 nextIndex = 0;
    };
    std::vector<Frame> _stack;
};
