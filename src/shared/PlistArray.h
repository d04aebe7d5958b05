#pragma once

#include "KZIndexSet.h"
#include "PlistValue.h"

#include <vector>

/// A handle on one mutable plain array. Copies of the handle alias the same
/// array (as do PlistValues made from it); a null handle refers to none.
/// Indexes out of range are the caller's fault.
class PlistArray
{
public:
    PlistArray() noexcept = default;
    static PlistArray create(qsizetype reserve = 0);

    bool isNull() const noexcept { return _value.isNone(); }
    qsizetype count() const noexcept;
    bool isEmpty() const noexcept { return count() == 0; }
    const PlistValue &at(qsizetype index) const noexcept;
    std::vector<PlistValue>::const_iterator begin() const noexcept;
    std::vector<PlistValue>::const_iterator end() const noexcept;

    void reserve(qsizetype size);
    void append(PlistValue value);
    void insert(qsizetype index, PlistValue value);
    void replace(qsizetype index, PlistValue value);
    void removeAt(qsizetype index);
    /// Puts `values` at `indexes` of the result, in one pass.
    void insert(const KZIndexSet &indexes, std::vector<PlistValue> values);
    void remove(const KZIndexSet &indexes);
    void clear();
    /// Puts the element at `order[i]` at `i`; `order` is a permutation of all indexes.
    void reorder(const std::vector<qsizetype> &order);

    const PlistValue &value() const noexcept { return _value; }
    bool isSameObject(const PlistArray &other) const noexcept
    {
        return _value.isSameObject(other._value);
    }

private:
    friend class PlistValue;
    explicit PlistArray(PlistValue value) noexcept : _value(std::move(value)) {}
    std::vector<PlistValue> &items() const noexcept;

    PlistValue _value; // none, or an array
};
