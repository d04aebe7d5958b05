#pragma once

#include "shared/ADTypes.h"

class ADStructureDefinition;
class ADUndoManager;
class KZNotificationCenter;

/// What may stand above a tree node: another node, or above a root whatever
/// shows the tree (the outline controller). A node reaches the undo manager,
/// the notification centre and the structure definition only through this
/// chain, so a tree with nothing above it records no undo and posts nothing.
class ADPlistParent
{
public:
    virtual ~ADPlistParent() = default;

    virtual KZNotificationCenter *notificationCenter() const = 0; // may be null
    virtual ADUndoManager *undoManager() const = 0;               // may be null
    /// The identity of the object that stands for this parent in scripts.
    virtual const void *scriptingObject() const = 0;
    /// The parent's type code; what stands above a root answers -1.
    virtual ADPlistType plistType() const = 0;
    virtual ADStructureDefinition *structureDefinition() const = 0; // may be null
};
