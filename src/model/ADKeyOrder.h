#pragma once

#include "ADKeySortPreferences.h"

#include "shared/KZComparison.h"
#include "shared/PlistValue.h"

#include <QtGlobal>

#include <vector>

class PlistDictionary;

/// Puts the keys of plain dictionaries into the order a tree shows them.
///
/// A tree over a file of a million keys sorts them when it is built, so the
/// order is worked out on a short prefix of each key kept side by side, and a
/// key's full text is compared only where two prefixes cannot tell them apart.
/// The result is exactly that of sorting with `KZCompareStrings` (stable: equal
/// keys keep their order).
class ADKeyOrder
{
public:
    /// The positions of the dictionary's keys in sorted order; empty when the
    /// keys are in that order already.
    static std::vector<qsizetype> sortedOrder(const PlistDictionary &dictionary,
                                              KZComparison comparison);
    /// Sorts every dictionary in `value` and below it, unless the preferences
    /// keep the file's order. Walks with an explicit stack.
    static void applyToSubtree(const PlistValue &value, const ADKeySortPreferences::Values &prefs);
};
