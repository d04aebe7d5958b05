#include "BinaryWriter.h"

#include "BinaryFormat.h"
#include "ParallelParts.h"

#include "shared/HugePages.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValueInternals.h"

#include <QHashFunctions>
#include <QtEndian>

#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>
#include <unordered_set>
#include <vector>

using plist_detail::PlistValueInternals;

namespace {

namespace F = BinaryFormat;

// Object numbers are kept in 32 bits; a value with more objects would need
// tens of gigabytes in memory first.
constexpr quint64 kMaxObjects = std::numeric_limits<quint32>::max() - 1;
// Containers nested deeper than this are checked for holding themselves. A
// container that holds itself nests without end, so it always gets this deep,
// and shallow documents pay nothing for the check.
constexpr size_t kCycleCheckDepth = 256;

// Values this far ahead are fetched from memory while these are numbered.
constexpr qsizetype kAhead = 8;

// Long strings and data are hashed by their length, head and tail, so that
// sharing them costs little more than copying them. Blocks that differ only
// inside then meet in the table; after this many such near misses a leaf is
// written unshared, which bounds the comparisons a crafted value can cause.
constexpr size_t kSampledBytes = 256;
constexpr int kMaxNearMisses = 8;

// The smallest of 1, 2, 4 or 8 bytes that holds `value`.
int widthFor(quint64 value)
{
    if (value <= 0xFF)
        return 1;
    if (value <= 0xFFFF)
        return 2;
    return value <= 0xFFFFFFFF ? 4 : 8;
}

// A marker and its count, with counts of 15 and more in a following integer.
quint64 headerSize(quint64 count)
{
    return count < BinaryFormat::kCountFollows ? 1 : 2 + quint64(widthFor(count));
}

char *putBigEndian(char *p, quint64 value, int width)
{
    switch (width) {
    case 1:
        *p = char(value);
        break;
    case 2:
        qToBigEndian(quint16(value), p);
        break;
    case 4:
        qToBigEndian(quint32(value), p);
        break;
    default:
        qToBigEndian(value, p);
        break;
    }
    return p + width;
}

size_t mix(quint64 tag, quint64 bits)
{
    // The finaliser of MurmurHash3: every input bit reaches every output bit.
    quint64 h = bits ^ (tag * 0x9E3779B97F4A7C15ull);
    h ^= h >> 33;
    h *= 0xFF51AFD7ED558CCDull;
    h ^= h >> 33;
    h *= 0xC4CEB9FE1A85EC53ull;
    h ^= h >> 33;
    return size_t(h);
}

quint64 load64(const uchar *p)
{
    quint64 word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

// Hashes large data blocks at memory speed: four independent lanes. Seeded per
// process, so a file cannot be made to collide on purpose.
size_t hashBytes(const void *data, size_t n)
{
    constexpr quint64 k = 0x9E3779B97F4A7C15ull;
    auto step = [](quint64 h, quint64 word) { return std::rotl((h ^ word) * k, 31); };
    const quint64 seed = QHashSeed::globalSeed();
    const auto *p = static_cast<const uchar *>(data);
    quint64 a = seed ^ n, b = seed + k, c = ~seed, d = seed * k;
    for (; n >= 32; p += 32, n -= 32) {
        a = step(a, load64(p));
        b = step(b, load64(p + 8));
        c = step(c, load64(p + 16));
        d = step(d, load64(p + 24));
    }
    for (; n >= 8; p += 8, n -= 8)
        a = step(a, load64(p));
    quint64 tail = 0;
    if (n)
        std::memcpy(&tail, p, n);
    a = step(a, tail);
    return mix(a, std::rotl(b, 16) ^ std::rotl(c, 32) ^ std::rotl(d, 48));
}

size_t contentHash(const void *data, size_t n)
{
    if (n <= 2 * kSampledBytes)
        return hashBytes(data, n);
    const auto *p = static_cast<const uchar *>(data);
    return hashBytes(p, kSampledBytes) ^
           std::rotl(hashBytes(p + n - kSampledBytes, kSampledBytes), 1) ^ mix(11, n);
}

template <typename Unit> bool isAscii(const Unit *p, qsizetype n)
{
    std::make_unsigned_t<Unit> any = 0;
    for (qsizetype i = 0; i < n; ++i)
        any |= std::make_unsigned_t<Unit>(p[i]);
    return any < 0x80;
}

// Calls `body` with the string's units as Latin-1 chars or UTF-16 units.
template <typename Body> void withUnits(QAnyStringView view, Body &&body)
{
    view.visit([&body](auto text) {
        using Text = decltype(text);
        if constexpr (std::is_same_v<Text, QStringView>) {
            body(text.utf16(), text.size());
        } else if constexpr (std::is_same_v<Text, QLatin1StringView>) {
            body(text.data(), text.size());
        } else { // values never hold UTF-8, but a view may
            const QString wide = text.toString();
            body(reinterpret_cast<const char16_t *>(wide.utf16()), wide.size());
        }
    });
}

// Where a number belongs for sharing: 1, 1.0 and 2^63 as unsigned stay apart.
enum class NumberClass : quint64
{
    Signed = 2,
    Unsigned,
    Real,
};

NumberClass numberClass(const PlistValue &v)
{
    if (v.isReal())
        return NumberClass::Real;
    return v.isUnsigned() ? NumberClass::Unsigned : NumberClass::Signed;
}

quint64 numberBits(const PlistValue &v, NumberClass c)
{
    return c == NumberClass::Real ? std::bit_cast<quint64>(v.toReal()) : v.toUnsigned();
}

size_t leafHash(const PlistValue &v, PlistValue::Kind kind)
{
    switch (kind) {
    case PlistValue::Kind::Boolean:
        return mix(1, v.toBool());
    case PlistValue::Kind::Number: {
        const NumberClass c = numberClass(v);
        return mix(quint64(c), numberBits(v, c));
    }
    case PlistValue::Kind::Date:
        return mix(5, std::bit_cast<quint64>(v.toDate()));
    case PlistValue::Kind::Uid:
        return mix(6, v.toUid());
    case PlistValue::Kind::String: {
        // Equal strings store their units alike, so the storage joins the hash.
        size_t hash = 0;
        withUnits(v.stringView(), [&hash](const auto *units, qsizetype n) {
            hash = contentHash(units, size_t(n) * sizeof(*units)) ^ sizeof(*units);
        });
        return hash;
    }
    case PlistValue::Kind::Data: {
        const QByteArrayView bytes = v.dataView();
        return contentHash(bytes.data(), size_t(bytes.size())) ^ 10;
    }
    default:
        return mix(7, 0);
    }
}

// Same kind and the same bits: 0.0 and -0.0 stay apart, NaNs with equal bits meet.
bool sameLeaf(const PlistValue &a, const PlistValue &b, PlistValue::Kind kind)
{
    if (b.kind() != kind)
        return false;
    switch (kind) {
    case PlistValue::Kind::Boolean:
        return a.toBool() == b.toBool();
    case PlistValue::Kind::Number: {
        const NumberClass c = numberClass(a);
        return c == numberClass(b) && numberBits(a, c) == numberBits(b, c);
    }
    case PlistValue::Kind::Date:
        return std::bit_cast<quint64>(a.toDate()) == std::bit_cast<quint64>(b.toDate());
    case PlistValue::Kind::Uid:
        return a.toUid() == b.toUid();
    case PlistValue::Kind::String:
        return QAnyStringView::equal(a.stringView(), b.stringView());
    case PlistValue::Kind::Data:
        return a.dataView() == b.dataView();
    default:
        return true;
    }
}

// Numbers every object in the platform's order, sizing each, then lays the
// file out in one buffer of its final size. Values are borrowed from the tree
// being written, which does not change meanwhile.
class Writer
{
public:
    WriteResult run(const PlistValue &top);

private:
    struct Frame
    {
        PlistArray array;               // null for a dictionary
        PlistDictionary dictionary;     // null for an array
        const void *identity = nullptr; // set when checked for holding itself
        quint64 firstRef = 0;
        qsizetype count = 0;
        qsizetype next = 0;
    };
    struct Slot
    {
        quint32 hash = 0;
        quint32 object = 0; // index + 1; 0 marks an empty slot
    };

    bool fail(const QString &message);
    bool flatten(const PlistValue &top);
    bool number(const PlistValue &value, quint32 &index);
    bool open(const PlistValue &value, quint32 &index);
    bool add(const PlistValue &value, quint32 &index);
    bool leafIndex(const PlistValue &value, quint32 &index);
    void growSlots();
    quint64 leafSize(const PlistValue &value, PlistValue::Kind kind) const;
    QByteArray layOut();
    void encode(const PlistValue &value);
    void encodeNumber(const PlistValue &value);
    template <typename Unit> void encodeUnits(const Unit *units, qsizetype n);
    void putHeader(BinaryFormat::Type type, quint64 count);
    void copyData(QByteArrayView bytes);
    void putRefs(quint64 count);

    std::vector<const PlistValue *> _objects; // in file order
    std::vector<quint32> _refs;               // every container's references, in file order
    std::vector<Slot> _slots;                 // leaves by content; open addressing, a power of two
    quint64 _leafCount = 0;
    quint64 _fixedBytes = F::kHeaderSize; // all but the containers' references
    std::vector<Frame> _stack;
    std::unordered_set<const void *> _path; // deep containers being numbered
    QString _error;
    char *_cursor = nullptr;
    quint64 _nextRef = 0;
    int _refSize = 1;
};

WriteResult Writer::run(const PlistValue &top)
{
    if (top.isNone())
        return WriteResult::failure(QStringLiteral("expected a value to write, found none"));
    if (!flatten(top))
        return WriteResult::failure(_error);
    _slots = {};
    return WriteResult::success(layOut());
}

bool Writer::fail(const QString &message)
{
    _error = message;
    return false;
}

bool Writer::flatten(const PlistValue &top)
{
    quint32 index = 0;
    if (!number(top, index))
        return false;
    while (!_stack.empty()) {
        Frame &frame = _stack.back();
        if (frame.next == frame.count) {
            if (frame.identity)
                _path.erase(frame.identity);
            _stack.pop_back();
            continue;
        }
        const qsizetype i = frame.next++;
        const bool isArray = !frame.array.isNull();
        if (i + kAhead < frame.count)
            PlistValueInternals::prefetch(isArray ? frame.array.at(i + kAhead)
                                                  : frame.dictionary.valueAt(i + kAhead));
        const PlistValue &child = isArray ? frame.array.at(i) : frame.dictionary.valueAt(i);
        const quint64 slot = frame.firstRef + quint64(isArray ? i : frame.count + i);
        if (!number(child, index)) // may push, which moves `frame`
            return false;
        _refs[slot] = index;
    }
    return true;
}

bool Writer::number(const PlistValue &value, quint32 &index)
{
    if (value.isContainer())
        return open(value, index);
    if (value.isNone())
        return fail(QStringLiteral("expected a value in every array and dictionary, found none"));
    // The format's null marker is read by no other reader, so a file holding
    // one could not be opened elsewhere.
    if (value.kind() == PlistValue::Kind::Null)
        return fail(QStringLiteral("null cannot be written as a binary property list: the format "
                                   "has no null value (only JSON has)"));
    return leafIndex(value, index);
}

// Numbers a container and its keys; its values follow as its frame is worked.
bool Writer::open(const PlistValue &value, quint32 &index)
{
    Frame frame;
    if (value.isArray()) {
        frame.array = value.toArray();
        frame.count = frame.array.count();
        if (frame.count && _stack.size() >= kCycleCheckDepth)
            frame.identity = &frame.array.at(0); // element storage is the container's own
    } else {
        frame.dictionary = value.toDictionary();
        frame.count = frame.dictionary.count();
        if (frame.count && _stack.size() >= kCycleCheckDepth)
            frame.identity = &frame.dictionary.keyValueAt(0);
    }
    if (frame.identity && !_path.insert(frame.identity).second)
        return fail(QStringLiteral("an array or dictionary contains itself"));
    if (!add(value, index))
        return false;
    const auto refs = quint64(frame.array.isNull() ? 2 * frame.count : frame.count);
    frame.firstRef = _refs.size();
    _refs.resize(_refs.size() + refs);
    _fixedBytes += headerSize(quint64(frame.count));
    for (qsizetype i = 0; !frame.dictionary.isNull() && i < frame.count; ++i) {
        if (i + kAhead < frame.count)
            PlistValueInternals::prefetch(frame.dictionary.keyValueAt(i + kAhead));
        quint32 key = 0;
        if (!leafIndex(frame.dictionary.keyValueAt(i), key))
            return false;
        _refs[frame.firstRef + quint64(i)] = key;
    }
    if (frame.count)
        _stack.push_back(std::move(frame));
    return true;
}

bool Writer::add(const PlistValue &value, quint32 &index)
{
    if (_objects.size() >= kMaxObjects)
        return fail(QStringLiteral("expected at most %1 objects, found more").arg(kMaxObjects));
    index = quint32(_objects.size());
    _objects.push_back(&value);
    return true;
}

bool Writer::leafIndex(const PlistValue &value, quint32 &index)
{
    if ((_leafCount + 1) * 2 > _slots.size())
        growSlots();
    const PlistValue::Kind kind = value.kind();
    const auto hash = quint32(leafHash(value, kind));
    const size_t mask = _slots.size() - 1;
    size_t i = hash & mask;
    int nearMisses = 0;
    for (; _slots[i].object != 0 && nearMisses < kMaxNearMisses; i = (i + 1) & mask) {
        const Slot &slot = _slots[i];
        if (slot.hash != hash)
            continue;
        if (sameLeaf(value, *_objects[slot.object - 1], kind)) {
            index = slot.object - 1;
            return true;
        }
        ++nearMisses;
    }
    if (!add(value, index))
        return false;
    _fixedBytes += leafSize(value, kind);
    if (_slots[i].object == 0) {
        _slots[i] = {hash, index + 1};
        ++_leafCount;
    }
    return true;
}

void Writer::growSlots()
{
    std::vector<Slot> old(std::max<size_t>(64, _slots.size() * 2));
    old.swap(_slots);
    const size_t mask = _slots.size() - 1;
    for (const Slot &slot : old) {
        if (slot.object == 0)
            continue;
        size_t i = slot.hash & mask;
        while (_slots[i].object != 0)
            i = (i + 1) & mask;
        _slots[i] = slot;
    }
}

quint64 Writer::leafSize(const PlistValue &value, PlistValue::Kind kind) const
{
    switch (kind) {
    case PlistValue::Kind::Number:
        if (value.isReal())
            return 9;
        if (value.isUnsigned())
            return 17;
        return value.toInteger() < 0 ? 9 : 1 + quint64(widthFor(quint64(value.toInteger())));
    case PlistValue::Kind::Date:
        return 9;
    case PlistValue::Kind::Uid:
        return 1 + quint64(widthFor(value.toUid()));
    case PlistValue::Kind::Data: {
        const auto n = quint64(value.dataView().size());
        return headerSize(n) + n;
    }
    case PlistValue::Kind::String: {
        quint64 size = 0;
        withUnits(value.stringView(), [&size](const auto *units, qsizetype n) {
            size = headerSize(quint64(n)) + quint64(n) * (isAscii(units, n) ? 1 : 2);
        });
        return size;
    }
    default:
        return 1;
    }
}

// References take the fewest bytes that number every object; offsets the
// fewest that reach the offset table.
QByteArray Writer::layOut()
{
    const quint64 objectCount = _objects.size();
    _refSize = widthFor(objectCount);
    const quint64 tableOffset = _fixedBytes + _refs.size() * quint64(_refSize);
    const int offsetSize = widthFor(tableOffset);
    const quint64 total = tableOffset + objectCount * quint64(offsetSize) + F::kTrailerSize;
    QByteArray file = HugePages::buffer(qsizetype(total));
    char *const begin = file.data();
    char *table = begin + tableOffset;
    std::memcpy(begin, F::kMagic, F::kHeaderSize);
    _cursor = begin + F::kHeaderSize;
    for (const PlistValue *value : _objects) {
        table = putBigEndian(table, quint64(_cursor - begin), offsetSize);
        encode(*value);
    }
    Q_ASSERT(quint64(_cursor - begin) == tableOffset);
    std::memset(table, 0, 6); // unused, then the sort version
    table[6] = char(offsetSize);
    table[7] = char(_refSize);
    table = putBigEndian(table + 8, objectCount, 8);
    table = putBigEndian(table, 0, 8); // the top object is numbered first
    putBigEndian(table, tableOffset, 8);
    return file;
}

void Writer::encode(const PlistValue &value)
{
    switch (value.kind()) {
    case PlistValue::Kind::Array: {
        const auto count = quint64(value.toArray().count());
        putHeader(F::Array, count);
        putRefs(count);
        return;
    }
    case PlistValue::Kind::Dictionary: {
        const auto count = quint64(value.toDictionary().count());
        putHeader(F::Dictionary, count);
        putRefs(2 * count);
        return;
    }
    case PlistValue::Kind::Boolean:
        *_cursor++ = char(value.toBool() ? F::kTrue : F::kFalse);
        return;
    case PlistValue::Kind::Number:
        encodeNumber(value);
        return;
    case PlistValue::Kind::Date:
        *_cursor++ = char(F::kDate);
        _cursor = putBigEndian(_cursor, std::bit_cast<quint64>(value.toDate()), 8);
        return;
    case PlistValue::Kind::Data: {
        const QByteArrayView bytes = value.dataView();
        putHeader(F::Data, quint64(bytes.size()));
        copyData(bytes);
        return;
    }
    case PlistValue::Kind::String:
        withUnits(value.stringView(),
                  [this](const auto *units, qsizetype n) { encodeUnits(units, n); });
        return;
    case PlistValue::Kind::Uid: {
        const int width = widthFor(value.toUid());
        *_cursor++ = char(F::marker(F::Uid, unsigned(width - 1)));
        _cursor = putBigEndian(_cursor, value.toUid(), width);
        return;
    }
    default:
        *_cursor++ = char(F::kNull);
        return;
    }
}

// Non-negative integers in the fewest of 1, 2, 4 or 8 bytes, negative ones in
// 8, and those above the signed range in 16 with a zero high half.
void Writer::encodeNumber(const PlistValue &value)
{
    if (value.isReal()) {
        *_cursor++ = char(F::kReal64);
        _cursor = putBigEndian(_cursor, std::bit_cast<quint64>(value.toReal()), 8);
        return;
    }
    if (value.isUnsigned()) {
        *_cursor++ = char(F::kInteger128);
        _cursor = putBigEndian(_cursor, 0, 8);
        _cursor = putBigEndian(_cursor, value.toUnsigned(), 8);
        return;
    }
    const qint64 integer = value.toInteger();
    const int width = integer < 0 ? 8 : widthFor(quint64(integer));
    *_cursor++ = char(F::marker(F::Integer, unsigned(std::countr_zero(unsigned(width)))));
    _cursor = putBigEndian(_cursor, quint64(integer), width);
}

// ASCII as it is; anything else as UTF-16 in big-endian order.
template <typename Unit> void Writer::encodeUnits(const Unit *units, qsizetype n)
{
    if (isAscii(units, n)) {
        putHeader(F::AsciiString, quint64(n));
        for (qsizetype i = 0; i < n; ++i)
            _cursor[i] = char(units[i]);
        _cursor += n;
        return;
    }
    putHeader(F::Utf16String, quint64(n));
    for (qsizetype i = 0; i < n; ++i)
        qToBigEndian(quint16(std::make_unsigned_t<Unit>(units[i])), _cursor + 2 * i);
    _cursor += 2 * n;
}

void Writer::putHeader(BinaryFormat::Type type, quint64 count)
{
    if (count < F::kCountFollows) {
        *_cursor++ = char(F::marker(type, unsigned(count)));
        return;
    }
    const int width = widthFor(count);
    *_cursor++ = char(F::marker(type, F::kCountFollows));
    *_cursor++ = char(F::marker(F::Integer, unsigned(std::countr_zero(unsigned(width)))));
    _cursor = putBigEndian(_cursor, count, width);
}

// A large block is copied on all cores: one core alone cannot fill fresh
// memory as fast as the memory takes it.
void Writer::copyData(QByteArrayView bytes)
{
    constexpr qsizetype kBytesPerPart = qsizetype(4) << 20;
    char *const to = _cursor;
    ParallelParts::run(bytes.size(), kBytesPerPart, [&bytes, to](qsizetype from, qsizetype end) {
        std::memcpy(to + from, bytes.data() + from, size_t(end - from));
    });
    _cursor += bytes.size();
}

void Writer::putRefs(quint64 count)
{
    for (quint64 i = 0; i < count; ++i)
        _cursor = putBigEndian(_cursor, _refs[_nextRef++], _refSize);
}

} // namespace

WriteResult BinaryWriter::write(const PlistValue &value)
{
    return Writer().run(value);
}
