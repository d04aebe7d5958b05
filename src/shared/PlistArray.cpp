#include "PlistArray.h"

#include "PlistNode.h"

using namespace plist_detail;

PlistArray PlistArray::create(qsizetype reserve)
{
    auto *node = new ArrayNode;
    node->items.reserve(size_t(reserve));
    return PlistArray(PlistValue(node));
}

std::vector<PlistValue> &PlistArray::items() const noexcept
{
    Q_ASSERT(!isNull());
    return static_cast<ArrayNode *>(_value.node())->items;
}

qsizetype PlistArray::count() const noexcept
{
    return isNull() ? 0 : qsizetype(items().size());
}

const PlistValue &PlistArray::at(qsizetype index) const noexcept
{
    Q_ASSERT(index >= 0 && index < count());
    return items()[size_t(index)];
}

std::vector<PlistValue>::const_iterator PlistArray::begin() const noexcept
{
    return items().cbegin();
}

std::vector<PlistValue>::const_iterator PlistArray::end() const noexcept
{
    return items().cend();
}

void PlistArray::reserve(qsizetype size)
{
    items().reserve(size_t(size));
}

void PlistArray::append(PlistValue value)
{
    items().push_back(std::move(value));
}

void PlistArray::insert(qsizetype index, PlistValue value)
{
    Q_ASSERT(index >= 0 && index <= count());
    items().insert(items().begin() + index, std::move(value));
}

void PlistArray::replace(qsizetype index, PlistValue value)
{
    Q_ASSERT(index >= 0 && index < count());
    items()[size_t(index)] = std::move(value);
}

void PlistArray::removeAt(qsizetype index)
{
    Q_ASSERT(index >= 0 && index < count());
    items().erase(items().begin() + index);
}

void PlistArray::insert(const KZIndexSet &indexes, std::vector<PlistValue> values)
{
    kz_insertAtIndexes(items(), indexes, std::move(values));
}

void PlistArray::remove(const KZIndexSet &indexes)
{
    kz_removeAtIndexes(items(), indexes);
}

void PlistArray::clear()
{
    items().clear();
}

void PlistArray::reorder(const std::vector<qsizetype> &order)
{
    Q_ASSERT(order.size() == items().size());
    std::vector<PlistValue> reordered;
    reordered.reserve(order.size());
    for (const qsizetype from : order)
        reordered.push_back(std::move(items()[size_t(from)])); // each item moves once
    items().swap(reordered);
}
