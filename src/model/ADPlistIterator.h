#pragma once

#include "ADPlistObject.h"

/// A cursor over a subtree that goes both ways, depth first with a node
/// before its children; a container without children counts as a leaf. The
/// cursor stands in a container (`currentObject`) at a child index, or at -1
/// on the container itself. It can wrap at the ends, where the root stands
/// between the last node and the first, and jump to any node. It takes no
/// lock and does not watch the tree: each step asks for child counts again,
/// and an index past the end counts as the end of that container.
class ADPlistIterator
{
public:
    explicit ADPlistIterator(ADPlistObject::Pointer rootObject, bool wraps = false);

    /// The node under the cursor: null after the last node when not wrapping.
    ADPlistObject *currentObject() const;
    ADPlistObject *nextObject();
    ADPlistObject *previousObject();
    /// To `object`, or to the root for null or the root itself.
    void jumpToObject(ADPlistObject *object);

    bool wraps() const { return _wraps; }
    void setWraps(bool wraps) { _wraps = wraps; }

private:
    ADPlistObject *childUnderCursor() const;
    void climbPastTheEnd();

    ADPlistObject::Pointer _rootObject;
    ADPlistObject::Pointer _currentObject;
    qint64 _childIndex = -1;
    bool _iterationComplete = false;
    bool _wraps = false;
};
