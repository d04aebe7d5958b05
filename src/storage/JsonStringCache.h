#pragma once

#include "shared/PlistValue.h"

#include <array>

/// Shares the values of short ASCII strings met again while one document is
/// read: keys repeat in nearly every file, and many values do too. Strings
/// are immutable leaves, so sharing them is invisible except for
/// `isSameObject`; it saves an allocation and the memory of a copy each.
/// A small direct-mapped table: a string whose slot holds another simply
/// takes the slot. Used by the JSON and old-style readers; one per parse.
class JsonStringCache
{
public:
    /// The string value of `size` ASCII bytes.
    PlistValue ascii(const char *bytes, qsizetype size);

private:
    static constexpr size_t kSlots = 1024;
    static constexpr qsizetype kLongest = 40; // longer strings repeat rarely

    std::array<PlistValue, kSlots> _slots;
};
