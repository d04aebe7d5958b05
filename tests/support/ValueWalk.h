#pragma once

// Iterative walks over plain values for tests: the corpus holds values nested
// 100,000 deep, too deep for recursion.

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValue.h"

#include <functional>
#include <vector>

/// Whether any leaf (a value that is no container) satisfies `test`.
inline bool anyLeaf(const PlistValue &root, const std::function<bool(const PlistValue &)> &test)
{
    std::vector<PlistValue> stack{root};
    while (!stack.empty()) {
        const PlistValue v = std::move(stack.back());
        stack.pop_back();
        if (v.isArray()) {
            for (const PlistValue &child : v.toArray())
                stack.push_back(child);
        } else if (v.isDictionary()) {
            for (qsizetype i = 0; i < v.toDictionary().count(); ++i)
                stack.push_back(v.toDictionary().valueAt(i));
        } else if (test(v)) {
            return true;
        }
    }
    return false;
}

/// A deep copy in which every leaf is replaced by `map` of it.
inline PlistValue mapLeaves(const PlistValue &root,
                            const std::function<PlistValue(const PlistValue &)> &map)
{
    const PlistValue copy = root.kz_copyMutableContainers();
    std::vector<PlistValue> stack{copy};
    while (!stack.empty()) {
        const PlistValue v = std::move(stack.back());
        stack.pop_back();
        if (PlistArray a = v.toArray(); !a.isNull()) {
            for (qsizetype i = 0; i < a.count(); ++i) {
                if (a.at(i).isContainer())
                    stack.push_back(a.at(i));
                else
                    a.replace(i, map(a.at(i)));
            }
        } else if (PlistDictionary d = v.toDictionary(); !d.isNull()) {
            for (qsizetype i = 0; i < d.count(); ++i) {
                if (d.valueAt(i).isContainer())
                    stack.push_back(d.valueAt(i));
                else
                    d.replaceAt(i, map(d.valueAt(i)));
            }
        }
    }
    return copy.isContainer() ? copy : map(copy);
}
