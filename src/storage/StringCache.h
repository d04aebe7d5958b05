#pragma once

#include "shared/PlistValue.h"

#include <array>

/// Shares the values of short ASCII strings met again while one document is
/// read: keys repeat in nearly every file, and many values do too. Strings
/// are immutable leaves, so sharing them is invisible except for
/// `isSameObject`; it saves an allocation and the memory of a copy each.
/// A small direct-mapped table: a string whose slot holds another simply
/// takes the slot. A slot keeps its bytes as words, so a lookup touches no
/// string node. Used by the text readers; one per parse.
class StringCache
{
public:
    /// The string value of `size` ASCII bytes.
    PlistValue ascii(const char *bytes, qsizetype size);

private:
    static constexpr int kSlotBits = 10;
    static constexpr qsizetype kLongest = 24; // longer strings repeat rarely

    // Up to 24 bytes as words that tell any two such strings apart.
    struct Words
    {
        quint64 head = 0, middle = 0, tail = 0;
        qsizetype size = -1;
        bool operator==(const Words &) const = default;
    };
    struct Slot
    {
        Words words;
        PlistValue value;
    };

    static Words wordsOf(const char *bytes, qsizetype size);
    static size_t slotFor(const Words &words);

    std::array<Slot, size_t(1) << kSlotBits> _slots;
};
