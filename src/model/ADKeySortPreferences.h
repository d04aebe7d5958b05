#pragma once

#include "shared/KZComparison.h"

#include <functional>

/// The user defaults that decide the order of a dictionary's keys when a tree
/// is built. Read through one provider, which the preferences install; until
/// then every default reads as off. The command line tool installs one that
/// keeps the file's order. Set the provider before trees are built on other
/// threads.
class ADKeySortPreferences
{
public:
    struct Values
    {
        bool sortCaseSensitive = false;
        bool sortNumeric = false;
        bool keepKeyOrder = false;
    };
    using Provider = std::function<Values()>;

    static Values current();
    static void setProvider(Provider provider);

    /// The comparison the two sort defaults name.
    static KZComparison keySortSelector() { return selectorFor(current()); }
    static KZComparison selectorFor(const Values &values);
    static bool keepKeyOrder() { return current().keepKeyOrder; }
};
