#include "PlistValue.h"

#include "KZReferenceDate.h"
#include "PlistArray.h"
#include "PlistDictionary.h"
#include "PlistNode.h"

#include <QDateTime>
#include <QTimeZone>

#include <bit>
#include <cmath>
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

qsizetype PlistValue::containerCount() const noexcept
{
    const PlistNode *n = node();
    if (!n)
        return 0;
    if (n->kind == NodeKind::Array)
        return qsizetype(static_cast<const ArrayNode *>(n)->items.size());
    if (n->kind == NodeKind::Dictionary)
        return qsizetype(static_cast<const DictionaryNode *>(n)->entries.size());
    return 0;
}

const PlistValue &PlistValue::containerValueAt(qsizetype index) const noexcept
{
    Q_ASSERT(index >= 0 && index < containerCount());
    const PlistNode *n = node();
    if (n->kind == NodeKind::Array)
        return static_cast<const ArrayNode *>(n)->items[size_t(index)];
    return static_cast<const DictionaryNode *>(n)->entries[size_t(index)].value;
}

const PlistValue &PlistValue::containerKeyAt(qsizetype index) const noexcept
{
    Q_ASSERT(isDictionary() && index >= 0 && index < containerCount());
    return static_cast<const DictionaryNode *>(node())->entries[size_t(index)].key;
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
