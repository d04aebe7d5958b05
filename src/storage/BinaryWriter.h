#pragma once

#include "StorageResult.h"

/// Writes a value as a binary property list ("bplist00") the way the
/// platform's own writer lays it out: header, objects in depth-first order
/// (a container, then its keys, then its values), offset table, trailer.
/// Equal leaves (strings, numbers of the same kind, data, dates, booleans,
/// UIDs, null) are written once and shared; arrays and dictionaries are
/// written once per place they appear. References and offsets take the
/// smallest of 1, 2, 4 or 8 bytes that reaches them all.
///
/// Refuses a value that is none, holds none or null (which only JSON has), or
/// holds itself. Nesting lives on an explicit stack. Stateless; safe on any thread for values not
/// being changed meanwhile.
class BinaryWriter
{
public:
    static WriteResult write(const PlistValue &value);
};
