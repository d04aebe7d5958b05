#pragma once

// Short ways for tests to write plain values.

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValue.h"

#include <initializer_list>
#include <utility>

inline PlistValue str(const char *utf8)
{
    return PlistValue(QString::fromUtf8(utf8));
}

inline PlistValue arrayOf(std::initializer_list<PlistValue> items)
{
    PlistArray array = PlistArray::create();
    for (const PlistValue &item : items)
        array.append(item);
    return array;
}

/// Keys in the order given.
inline PlistValue dictionaryOf(std::initializer_list<std::pair<const char *, PlistValue>> entries)
{
    PlistDictionary dictionary = PlistDictionary::create();
    for (const auto &[key, value] : entries)
        dictionary.insert(QString::fromUtf8(key), value);
    return dictionary;
}
