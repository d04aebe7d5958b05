#include "PlistNode.h"

#include "NodeAllocator.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace plist_detail {

namespace {

void destroyNode(PlistNode *n) noexcept
{
    switch (n->kind) {
    case NodeKind::String:
        StringNode::destroy(static_cast<StringNode *>(n));
        break;
    case NodeKind::Data:
        delete static_cast<DataNode *>(n);
        break;
    case NodeKind::SmallData:
        SmallDataNode::destroy(static_cast<SmallDataNode *>(n));
        break;
    case NodeKind::Array:
        delete static_cast<ArrayNode *>(n);
        break;
    case NodeKind::Dictionary:
        delete static_cast<DictionaryNode *>(n);
        break;
    default:
        delete static_cast<ScalarNode *>(n);
        break;
    }
}

} // namespace

void *PlistNode::operator new(size_t size)
{
    return NodeAllocator::allocate(size);
}

void PlistNode::operator delete(void *p, size_t size) noexcept
{
    NodeAllocator::deallocate(p, size);
}

void PlistNode::release(PlistNode *node) noexcept
{
    // A count of 1 held by the caller cannot change under it: nobody else
    // holds a reference to copy. That saves the atomic write on most frees.
    if (node->ref.load(std::memory_order_acquire) != 1 &&
        node->ref.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    if (node->kind != NodeKind::Array && node->kind != NodeKind::Dictionary) {
        destroyNode(node); // a leaf frees nothing further
        return;
    }
    // Freeing a container frees its children; a chain 100,000 deep would
    // recurse that far. The first container freed on a thread drains a queue
    // of its own, and containers freed meanwhile only join it. (A plain
    // pointer, not a thread-local vector: values in statics are freed after
    // thread-local objects are gone.)
    thread_local std::vector<PlistNode *> *pending = nullptr;
    if (pending) {
        pending->push_back(node);
        return;
    }
    std::vector<PlistNode *> queue{node};
    pending = &queue;
    while (!queue.empty()) {
        PlistNode *n = queue.back();
        queue.pop_back();
        destroyNode(n);
    }
    pending = nullptr;
}

StringNode *StringNode::create(const char16_t *units, qsizetype size)
{
    bool narrow = true;
    for (qsizetype i = 0; i < size && narrow; ++i)
        narrow = units[i] < 0x100;
    const size_t bytes = sizeof(StringNode) + size_t(size) * (narrow ? 1 : 2);
    auto *node = ::new (PlistNode::operator new(bytes)) StringNode;
    node->wide = !narrow;
    node->length = quint32(size);
    if (narrow) {
        char *out = reinterpret_cast<char *>(node + 1);
        for (qsizetype i = 0; i < size; ++i)
            out[i] = char(units[i]);
    } else if (size > 0) {
        std::memcpy(reinterpret_cast<char *>(node + 1), units, size_t(size) * 2);
    }
    return node;
}

StringNode *StringNode::createLatin1(const char *bytes, qsizetype size)
{
    auto *node = ::new (PlistNode::operator new(sizeof(StringNode) + size_t(size))) StringNode;
    node->length = quint32(size);
    if (size > 0)
        std::memcpy(reinterpret_cast<char *>(node + 1), bytes, size_t(size));
    return node;
}

void StringNode::destroy(StringNode *node) noexcept
{
    const size_t bytes = sizeof(StringNode) + size_t(node->length) * (node->wide ? 2 : 1);
    node->~StringNode();
    PlistNode::operator delete(node, bytes);
}

// Null when the bytes are too many for the node pool.
SmallDataNode *SmallDataNode::create(QByteArrayView bytes)
{
    if (bytes.size() > qsizetype(NodeAllocator::kLargest - sizeof(SmallDataNode)))
        return nullptr;
    auto *node =
        ::new (PlistNode::operator new(sizeof(SmallDataNode) + size_t(bytes.size()))) SmallDataNode;
    node->length = quint32(bytes.size());
    if (!bytes.isEmpty())
        std::memcpy(reinterpret_cast<char *>(node + 1), bytes.data(), size_t(bytes.size()));
    return node;
}

void SmallDataNode::destroy(SmallDataNode *node) noexcept
{
    const size_t bytes = sizeof(SmallDataNode) + node->length;
    node->~SmallDataNode();
    PlistNode::operator delete(node, bytes);
}

QAnyStringView StringNode::view() const noexcept
{
    if (wide)
        return QStringView(utf16(), qsizetype(length));
    return QLatin1StringView(latin1(), qsizetype(length));
}

quint32 StringNode::hashValue() const noexcept
{
    quint32 h = hash.load(std::memory_order_relaxed);
    if (h == 0) {
        h = hashUnits(view());
        hash.store(h, std::memory_order_relaxed);
    }
    return h;
}

bool StringNode::equals(const StringNode &other) const noexcept
{
    if (this == &other)
        return true;
    if (wide != other.wide || length != other.length)
        return false;
    return std::memcmp(this + 1, &other + 1, size_t(length) * (wide ? 2 : 1)) == 0;
}

namespace {

quint64 mixWord(quint64 h, quint64 word) noexcept
{
    h = (h ^ word) * 0x100000001b3ULL;
    return h ^ (h >> 29);
}

// Eight units a step, for text whose every unit fits in a byte: how a string
// node stores it, and how a UTF-16 view of the same text is hashed.
template <typename Unit> quint64 hashNarrow(const Unit *units, qsizetype size) noexcept
{
    quint64 h = 0xcbf29ce484222325ULL;
    qsizetype i = 0;
    for (; i + 8 <= size; i += 8) {
        quint64 word = 0;
        if constexpr (sizeof(Unit) == 1 && std::endian::native == std::endian::little) {
            std::memcpy(&word, units + i, 8);
        } else {
            for (int k = 0; k < 8; ++k)
                word |= quint64(units[i + k] & 0xFF) << (8 * k);
        }
        h = mixWord(h, word);
    }
    quint64 tail = 0;
    for (int shift = 0; i < size; ++i, shift += 8)
        tail |= quint64(units[i] & 0xFF) << shift;
    return mixWord(h, tail ^ (quint64(size) << 56));
}

// Four units a step, for text with a unit beyond Latin-1.
quint64 hashWide(const char16_t *units, qsizetype size) noexcept
{
    quint64 h = 0x84222325cbf29ce4ULL;
    qsizetype i = 0;
    for (; i + 4 <= size; i += 4) {
        h = mixWord(h, quint64(units[i]) | quint64(units[i + 1]) << 16 |
                           quint64(units[i + 2]) << 32 | quint64(units[i + 3]) << 48);
    }
    quint64 tail = 0;
    for (int shift = 0; i < size; ++i, shift += 16)
        tail |= quint64(units[i]) << shift;
    return mixWord(h, tail ^ (quint64(size) << 56));
}

quint64 hashUtf16(const char16_t *units, qsizetype size) noexcept
{
    const bool narrow = std::all_of(units, units + size, [](char16_t u) { return u < 0x100; });
    return narrow ? hashNarrow(units, size) : hashWide(units, size);
}

} // namespace

quint32 hashUnits(QAnyStringView view) noexcept
{
    // Equal text hashes equally whichever way it is stored or viewed. Never
    // 0, which marks "not computed".
    quint64 h = view.visit([](auto v) {
        if constexpr (std::is_same_v<decltype(v), QUtf8StringView>) {
            const QString text = v.toString();
            return hashUtf16(reinterpret_cast<const char16_t *>(text.utf16()), text.size());
        } else if constexpr (std::is_same_v<decltype(v), QLatin1StringView>) {
            return hashNarrow(reinterpret_cast<const unsigned char *>(v.data()), v.size());
        } else {
            return hashUtf16(v.utf16(), v.size());
        }
    });
    // The index takes the low bits, which the multiplications above leave
    // weak; spread the high bits down.
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdULL;
    h ^= h >> 33;
    const auto folded = quint32(h ^ (h >> 32));
    return folded == 0 ? 1 : folded;
}

} // namespace plist_detail
