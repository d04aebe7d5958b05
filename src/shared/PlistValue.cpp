#include "PlistValue.h"

#include "KZReferenceDate.h"
#include "NodeAllocator.h"
#include "PlistArray.h"
#include "PlistDictionary.h"
#include "PlistNode.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using namespace plist_detail;

namespace {

// Inline tags in the low three bits of the handle.
constexpr quintptr kTagInteger = 1;
constexpr quintptr kTagReal = 2;
constexpr quintptr kTagDate = 3;
constexpr quintptr kTagBoolean = 4;
constexpr quintptr kTagNull = 5;
constexpr quintptr kTagUid = 6;
constexpr quintptr kTagMask = 7;

constexpr qint64 kInlineIntegerMin = -(qint64(1) << 60);
constexpr qint64 kInlineIntegerMax = (qint64(1) << 60) - 1;

static_assert(sizeof(void *) == 8, "the tagged handle needs 64-bit pointers");
static_assert(alignof(PlistNode) >= 8 || alignof(std::max_align_t) >= 8);

quint64 doubleBits(double d)
{
    return std::bit_cast<quint64>(d);
}

double bitsDouble(quint64 bits)
{
    return std::bit_cast<double>(bits);
}

// Truncates toward zero and saturates, where a plain cast would be undefined.
qint64 realToInteger(double d)
{
    if (std::isnan(d))
        return 0;
    if (d >= 9223372036854775808.0)
        return std::numeric_limits<qint64>::max();
    if (d < -9223372036854775808.0)
        return std::numeric_limits<qint64>::min();
    return qint64(d);
}

enum class NumberClass
{
    Signed,
    Unsigned,
    Real
};

NumberClass numberClass(const PlistValue &v)
{
    if (v.isUnsigned())
        return NumberClass::Unsigned;
    return v.isReal() ? NumberClass::Real : NumberClass::Signed;
}

template <typename T> int threeWay(T a, T b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

// Exact comparison of a signed integer with a double, without the rounding of
// converting a large integer to double.
int compareIntegerReal(qint64 i, double d)
{
    if (std::isnan(d))
        return 0;
    if (d >= 9223372036854775808.0)
        return -1;
    if (d < -9223372036854775808.0)
        return 1;
    const double whole = std::floor(d);
    const auto wi = qint64(whole);
    if (i != wi)
        return threeWay(i, wi);
    return whole < d ? -1 : 0;
}

int compareUnsignedReal(quint64 u, double d)
{
    if (std::isnan(d))
        return 0;
    if (d >= 18446744073709551616.0)
        return -1;
    if (d < 9223372036854775808.0)
        return 1; // u is above the signed range
    const double whole = std::floor(d);
    const auto wu = quint64(whole);
    if (u != wu)
        return threeWay(u, wu);
    return whole < d ? -1 : 0;
}

int compareNumbers(const PlistValue &a, const PlistValue &b)
{
    const NumberClass ca = numberClass(a);
    const NumberClass cb = numberClass(b);
    if (ca == NumberClass::Real && cb == NumberClass::Real)
        return threeWay(a.toReal(), b.toReal());
    if (ca == NumberClass::Real)
        return -compareNumbers(b, a);
    if (cb == NumberClass::Real) {
        return ca == NumberClass::Unsigned ? compareUnsignedReal(a.toUnsigned(), b.toReal())
                                           : compareIntegerReal(a.toInteger(), b.toReal());
    }
    if (ca != cb)
        return ca == NumberClass::Unsigned ? 1 : -1; // unsigned values lie above the signed range
    return ca == NumberClass::Unsigned ? threeWay(a.toUnsigned(), b.toUnsigned())
                                       : threeWay(a.toInteger(), b.toInteger());
}

int compareData(QByteArrayView a, QByteArrayView b)
{
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    const int c = a.isEmpty() ? 0 : std::memcmp(a.constData(), b.constData(), size_t(a.size()));
    return threeWay(c, 0);
}

bool numberLike(const PlistValue &v)
{
    return v.isNumber() || v.isBoolean();
}

// Leaves compare equal under the plist rule when they are of one type and equal.
bool leavesEqual(const PlistValue &a, const PlistValue &b)
{
    if (a.kind() != b.kind())
        return false;
    switch (a.kind()) {
    case PlistValue::Kind::Boolean:
        return a.toBool() == b.toBool();
    case PlistValue::Kind::Number: {
        // NaN equals NaN here, so that a value always equals itself.
        const bool nanA = a.isReal() && std::isnan(a.toReal());
        const bool nanB = b.isReal() && std::isnan(b.toReal());
        return nanA || nanB ? nanA && nanB : compareNumbers(a, b) == 0;
    }
    case PlistValue::Kind::Date:
        return a.toDate() == b.toDate();
    case PlistValue::Kind::String:
        return QAnyStringView::equal(a.stringView(), b.stringView());
    case PlistValue::Kind::Data:
        return a.dataView() == b.dataView();
    case PlistValue::Kind::Uid:
        return a.toUid() == b.toUid();
    case PlistValue::Kind::Null:
    case PlistValue::Kind::None:
        return true;
    case PlistValue::Kind::Array:
    case PlistValue::Kind::Dictionary:
        break;
    }
    return a.isSameObject(b);
}

bool leavesIdentical(const PlistValue &a, const PlistValue &b)
{
    if (!leavesEqual(a, b))
        return false;
    if (a.isNumber())
        return numberClass(a) == numberClass(b) &&
               (!a.isReal() || doubleBits(a.toReal()) == doubleBits(b.toReal()));
    if (a.kind() == PlistValue::Kind::Date)
        return doubleBits(a.toDate()) == doubleBits(b.toDate());
    return true;
}

// Walks two values side by side on an explicit stack. `ordered` compares
// dictionaries entry by entry in order; otherwise by key lookup.
bool deepEqual(const PlistValue &a, const PlistValue &b, bool identical)
{
    struct Pair
    {
        PlistValue a, b;
    };
    std::vector<Pair> stack{{a, b}};
    while (!stack.empty()) {
        const Pair pair = std::move(stack.back());
        stack.pop_back();
        const PlistValue &x = pair.a;
        const PlistValue &y = pair.b;
        if (x.kind() != y.kind())
            return false;
        if (x.isArray()) {
            const PlistArray ax = x.toArray(), ay = y.toArray();
            if (ax.count() != ay.count())
                return false;
            for (qsizetype i = 0; i < ax.count(); ++i)
                stack.push_back({ax.at(i), ay.at(i)});
        } else if (x.isDictionary()) {
            const PlistDictionary dx = x.toDictionary(), dy = y.toDictionary();
            if (dx.count() != dy.count())
                return false;
            for (qsizetype i = 0; i < dx.count(); ++i) {
                if (identical) {
                    if (!leavesEqual(dx.keyValueAt(i), dy.keyValueAt(i)))
                        return false;
                    stack.push_back({dx.valueAt(i), dy.valueAt(i)});
                    continue;
                }
                const qsizetype j = dy.indexOf(dx.keyValueAt(i).stringView());
                if (j < 0)
                    return false;
                stack.push_back({dx.valueAt(i), dy.valueAt(j)});
            }
        } else if (identical ? !leavesIdentical(x, y) : !leavesEqual(x, y)) {
            return false;
        }
    }
    return true;
}

QString realText(double d)
{
    return QString::number(d, 'g', QLocale::FloatingPointShortest);
}

QString dateDescription(double seconds)
{
    return KZReferenceDate::toDateTime(seconds).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
           QStringLiteral(" +0000");
}

} // namespace

// --- construction -----------------------------------------------------------

PlistValue::PlistValue(PlistNode *node) noexcept : _bits(reinterpret_cast<quintptr>(node)) {}

PlistValue::PlistValue(bool b) noexcept : _bits((quintptr(b) << 3) | kTagBoolean) {}

PlistValue::PlistValue(qint64 i)
{
    if (i >= kInlineIntegerMin && i <= kInlineIntegerMax) {
        _bits = (quintptr(i) << 3) | kTagInteger;
        return;
    }
    *this = PlistValue(new ScalarNode(NodeKind::Integer, quint64(i)));
}

PlistValue::PlistValue(quint64 u)
{
    if (u <= quint64(std::numeric_limits<qint64>::max())) {
        *this = PlistValue(qint64(u));
        return;
    }
    *this = PlistValue(new ScalarNode(NodeKind::Unsigned, u));
}

PlistValue::PlistValue(double d)
{
    const quint64 bits = doubleBits(d);
    if ((bits & kTagMask) == 0) {
        _bits = quintptr(bits) | kTagReal;
        return;
    }
    *this = PlistValue(new ScalarNode(NodeKind::Real, bits));
}

PlistValue::PlistValue(const QString &s)
    : PlistValue(StringNode::create(reinterpret_cast<const char16_t *>(s.utf16()), s.size()))
{}

PlistValue::PlistValue(QLatin1StringView s)
    : PlistValue(StringNode::createLatin1(s.data(), s.size()))
{}

PlistValue::PlistValue(const PlistArray &array) noexcept : PlistValue(array.value()) {}

PlistValue::PlistValue(const PlistDictionary &dictionary) noexcept : PlistValue(dictionary.value())
{}

PlistValue PlistValue::null() noexcept
{
    PlistValue v;
    v._bits = kTagNull;
    return v;
}

PlistValue PlistValue::date(double secondsSinceReferenceDate)
{
    const quint64 bits = doubleBits(secondsSinceReferenceDate);
    if ((bits & kTagMask) == 0) {
        PlistValue v;
        v._bits = quintptr(bits) | kTagDate;
        return v;
    }
    return PlistValue(new ScalarNode(NodeKind::Date, bits));
}

PlistValue PlistValue::data(const QByteArray &bytes)
{
    if (SmallDataNode *small = SmallDataNode::create(bytes))
        return PlistValue(small);
    return PlistValue(new DataNode(bytes));
}

PlistValue PlistValue::dataCopy(QByteArrayView bytes)
{
    if (SmallDataNode *small = SmallDataNode::create(bytes))
        return PlistValue(small);
    return PlistValue(new DataNode(bytes.toByteArray()));
}

PlistValue PlistValue::uid(quint64 value)
{
    if (value < (quint64(1) << 61)) {
        PlistValue v;
        v._bits = (quintptr(value) << 3) | kTagUid;
        return v;
    }
    return PlistValue(new ScalarNode(NodeKind::Uid, value));
}

PlistValue PlistValue::fromUtf8(const char *bytes, qsizetype size)
{
    for (qsizetype i = 0; i < size; ++i) {
        if (static_cast<unsigned char>(bytes[i]) >= 0x80)
            return PlistValue(QString::fromUtf8(bytes, size));
    }
    return fromLatin1(bytes, size);
}

PlistValue PlistValue::fromLatin1(const char *bytes, qsizetype size)
{
    return PlistValue(StringNode::createLatin1(bytes, size));
}

PlistValue PlistValue::fromUtf16(const char16_t *units, qsizetype size)
{
    return PlistValue(StringNode::create(units, size));
}

// --- questions ----------------------------------------------------------------

bool PlistValue::isContainer() const noexcept
{
    const Kind k = kind();
    return k == Kind::Array || k == Kind::Dictionary;
}

bool PlistValue::isInteger() const noexcept
{
    if (tag() == kTagInteger)
        return true;
    const PlistNode *n = node();
    return n && (n->kind == NodeKind::Integer || n->kind == NodeKind::Unsigned);
}

bool PlistValue::isUnsigned() const noexcept
{
    const PlistNode *n = node();
    return n && n->kind == NodeKind::Unsigned;
}

bool PlistValue::isReal() const noexcept
{
    if (tag() == kTagReal)
        return true;
    const PlistNode *n = node();
    return n && n->kind == NodeKind::Real;
}

bool PlistValue::toBool() const noexcept
{
    if (tag() == kTagBoolean)
        return (_bits >> 3) != 0;
    if (isNumber())
        return isReal() ? toReal() != 0.0 : toUnsigned() != 0;
    return false;
}

qint64 PlistValue::toInteger() const noexcept
{
    switch (tag()) {
    case kTagInteger:
        return qint64(_bits) >> 3;
    case kTagBoolean:
        return qint64(_bits >> 3);
    default:
        break;
    }
    if (isReal())
        return realToInteger(toReal());
    const PlistNode *n = node();
    if (n && (n->kind == NodeKind::Integer || n->kind == NodeKind::Unsigned))
        return qint64(static_cast<const ScalarNode *>(n)->bits);
    return 0;
}

quint64 PlistValue::toUnsigned() const noexcept
{
    const PlistNode *n = node();
    if (n && n->kind == NodeKind::Unsigned)
        return static_cast<const ScalarNode *>(n)->bits;
    return quint64(toInteger());
}

double PlistValue::toReal() const noexcept
{
    if (tag() == kTagReal)
        return bitsDouble(_bits & ~kTagMask);
    const PlistNode *n = node();
    if (n && n->kind == NodeKind::Real)
        return bitsDouble(static_cast<const ScalarNode *>(n)->bits);
    if (isUnsigned())
        return double(toUnsigned());
    return double(toInteger());
}

double PlistValue::toDate() const noexcept
{
    if (tag() == kTagDate)
        return bitsDouble(_bits & ~kTagMask);
    const PlistNode *n = node();
    if (n && n->kind == NodeKind::Date)
        return bitsDouble(static_cast<const ScalarNode *>(n)->bits);
    return 0.0;
}

quint64 PlistValue::toUid() const noexcept
{
    if (tag() == kTagUid)
        return _bits >> 3;
    const PlistNode *n = node();
    if (n && n->kind == NodeKind::Uid)
        return static_cast<const ScalarNode *>(n)->bits;
    return 0;
}

QString PlistValue::toString() const
{
    return stringView().toString();
}

QAnyStringView PlistValue::stringView() const noexcept
{
    const PlistNode *n = node();
    if (!n || n->kind != NodeKind::String)
        return {};
    return static_cast<const StringNode *>(n)->view();
}

qsizetype PlistValue::stringLength() const noexcept
{
    const PlistNode *n = node();
    return n && n->kind == NodeKind::String ? static_cast<const StringNode *>(n)->length : 0;
}

QByteArray PlistValue::toData() const
{
    const PlistNode *n = node();
    if (n && n->kind == NodeKind::Data)
        return static_cast<const DataNode *>(n)->bytes;
    return dataView().toByteArray();
}

QByteArrayView PlistValue::dataView() const noexcept
{
    const PlistNode *n = node();
    if (!n)
        return {};
    if (n->kind == NodeKind::Data)
        return static_cast<const DataNode *>(n)->bytes;
    if (n->kind != NodeKind::SmallData)
        return {};
    const auto *small = static_cast<const SmallDataNode *>(n);
    return QByteArrayView(small->bytes(), qsizetype(small->length));
}

PlistArray PlistValue::toArray() const noexcept
{
    return isArray() ? PlistArray(*this) : PlistArray();
}

PlistDictionary PlistValue::toDictionary() const noexcept
{
    return isDictionary() ? PlistDictionary(*this) : PlistDictionary();
}

// --- comparison -----------------------------------------------------------------

bool PlistValue::isEqualToPlist(const PlistValue &other) const
{
    return deepEqual(*this, other, false);
}

bool PlistValue::isIdenticalTo(const PlistValue &other) const
{
    return deepEqual(*this, other, true);
}

int PlistValue::compare(const PlistValue &other) const
{
    if (numberLike(*this) && numberLike(other))
        return compareNumbers(*this, other);
    if (kind() != other.kind())
        return 0;
    switch (kind()) {
    case Kind::String:
        return threeWay(QAnyStringView::compare(stringView(), other.stringView()), 0);
    case Kind::Date:
        return threeWay(toDate(), other.toDate());
    case Kind::Data:
        return compareData(dataView(), other.dataView());
    default:
        return 0;
    }
}

int PlistValue::plistCompare(const PlistValue &other) const
{
    if (kind() == Kind::Null)
        return other.kind() == Kind::Null ? 0 : 1;
    if (isString() && other.isString()) {
        const int c =
            QAnyStringView::compare(stringView(), other.stringView(), Qt::CaseInsensitive);
        return threeWay(c, 0);
    }
    return compare(other);
}

QString PlistValue::displayString() const
{
    switch (kind()) {
    case Kind::String:
        return toString();
    case Kind::Boolean:
        return toBool() ? QStringLiteral("YES") : QStringLiteral("NO");
    case Kind::Number:
        if (isReal())
            return realText(toReal());
        return isUnsigned() ? QString::number(toUnsigned()) : QString::number(toInteger());
    case Kind::Date:
        return dateDescription(toDate());
    default:
        return QString();
    }
}

// --- deep copy --------------------------------------------------------------------

PlistValue PlistValue::kz_copyMutableContainers() const
{
    auto emptyLike = [](const PlistValue &v) -> PlistValue {
        if (v.isArray())
            return PlistArray::create(v.toArray().count());
        return PlistDictionary::create(v.toDictionary().count());
    };
    if (!isContainer())
        return *this;

    struct Frame
    {
        PlistValue source, copy;
        qsizetype next = 0;
    };
    const PlistValue top = emptyLike(*this);
    std::vector<Frame> stack{{*this, top}};
    while (!stack.empty()) {
        Frame &frame = stack.back();
        const bool isArray = frame.source.isArray();
        const qsizetype count =
            isArray ? frame.source.toArray().count() : frame.source.toDictionary().count();
        if (frame.next == count) {
            stack.pop_back();
            continue;
        }
        const qsizetype i = frame.next++;
        PlistValue child =
            isArray ? frame.source.toArray().at(i) : frame.source.toDictionary().valueAt(i);
        PlistValue placed = child.isContainer() ? emptyLike(child) : child;
        if (isArray)
            frame.copy.toArray().append(placed);
        else
            frame.copy.toDictionary().insert(frame.source.toDictionary().keyValueAt(i), placed);
        if (child.isContainer())
            stack.push_back({std::move(child), std::move(placed)}); // `frame` is stale from here
    }
    return top;
}

// --- nodes ----------------------------------------------------------------------

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
