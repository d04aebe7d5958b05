#include "BinaryReader.h"

#include "BinaryFormat.h"
#include "ContainerBuilder.h"
#include "SharedSlice.h"
#include "SimdText.h"
#include "UnicodeText.h"
#include "shared/HugePages.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValueInternals.h"

#include <QtEndian>

#include <bit>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

using plist_detail::PlistValueInternals;

namespace {

namespace F = BinaryFormat;

constexpr quint64 kShareMinimum = 64 * 1024; // data this large may share the file's bytes
// A container referenced from several places comes out once per reference.
// A file whose containers are not shared makes at most one value per byte of
// references; this leaves room for honest sharing and stops a chain of arrays
// that each reference the next twice from exhausting memory.
constexpr quint64 kValuesPerInputByte = 8;

// What is known of each object while reading.
constexpr quint8 kOnPath = 1; // a container being filled
constexpr quint8 kSeen = 2;   // a leaf read before

quint64 readBigEndian(const uchar *p, quint64 width)
{
    switch (width) {
    case 1:
        return p[0];
    case 2:
        return qFromBigEndian<quint16>(p);
    case 4:
        return qFromBigEndian<quint32>(p);
    case 8:
        return qFromBigEndian<quint64>(p);
    default:
        break;
    }
    quint64 value = 0;
    for (quint64 i = 0; i < width; ++i)
        value = (value << 8) | p[i];
    return value;
}

// The largest unsigned value `width` bytes (1 to 8) hold.
quint64 largestOfWidth(quint64 width)
{
    return width >= 8 ? ~quint64(0) : (quint64(1) << (8 * width)) - 1;
}

QString hexByte(uchar byte)
{
    return QStringLiteral("0x%1").arg(uint(byte), 2, 16, QLatin1Char('0'));
}

// What an object marker announces, for messages.
QString markerName(uchar marker)
{
    switch (F::typeOf(marker)) {
    case F::Special:
        if (marker == F::kNull)
            return QStringLiteral("the null object");
        return marker == F::kFalse || marker == F::kTrue
                   ? QStringLiteral("a boolean")
                   : QStringLiteral("marker ") + hexByte(marker);
    case F::Integer:
        return QStringLiteral("an integer");
    case F::Real:
        return QStringLiteral("a real");
    case F::Date:
        return QStringLiteral("a date");
    case F::Data:
        return QStringLiteral("data");
    case F::Uid:
        return QStringLiteral("a UID");
    case F::Array:
        return QStringLiteral("an array");
    case F::Set:
        return QStringLiteral("a set");
    case F::Dictionary:
        return QStringLiteral("a dictionary");
    default:
        return QStringLiteral("marker ") + hexByte(marker);
    }
}

// A kept leaf is copied; one just read is moved.
PlistValue take(const PlistValue *value, PlistValue &fresh)
{
    return value == &fresh ? std::move(fresh) : PlistValueInternals::unpublishedCopy(*value);
}

// One read of one file: the trailer's facts, the leaves read so far and the
// containers still being filled.
// Invariant: every offset handed between the members lies below _tableOffset.
class Parser
{
public:
    Parser(QByteArrayView bytes, const QByteArray *owner)
        : _data(reinterpret_cast<const uchar *>(bytes.data())), _size(quint64(bytes.size())),
          _owner(owner)
    {}

    ReadResult run();

private:
    // An array or dictionary being filled, made at the size the file states.
    struct Opened
    {
        quint64 refs;   // offset of the first reference
        quint64 count;  // entries (pairs, in a dictionary)
        quint64 next;   // the entry to read next
        quint64 object; // marked as on the path while open
    };
    using Builder = ContainerBuilder<Opened>;

    bool fail(quint64 offset, ReadError::Kind kind, const QString &message);
    bool readTrailer();
    bool checkTrailer(quint64 at);
    bool step();
    bool readReference(quint64 at, quint64 &object);
    bool objectOffset(quint64 object, quint64 &offset);
    bool resolve(quint64 object, PlistValue &fresh, const PlistValue *&value, quint64 &offset);
    bool readKey(quint64 refAt, PlistValue &fresh, const PlistValue *&key);
    void remember(quint64 object, const PlistValue &leaf);
    bool openContainer(quint64 object, quint64 offset, quint64 refAt);
    bool readLength(quint64 offset, quint64 &start, quint64 &length);
    bool readLeaf(quint64 offset, PlistValue &out);
    bool readInteger(quint64 offset, PlistValue &out);
    bool readReal(quint64 offset, PlistValue &out);
    bool readDate(quint64 offset, PlistValue &out);
    bool readData(quint64 offset, PlistValue &out);
    bool readAscii(quint64 offset, PlistValue &out);
    bool readUtf16(quint64 offset, PlistValue &out);
    bool readUid(quint64 offset, PlistValue &out);
    bool readSpecial(quint64 offset, PlistValue &out);
    bool fits(quint64 start, quint64 need) const { return need <= _tableOffset - start; }
    bool sharesLargeData();
    quint64 largeDataBytes() const;
    bool truncated(quint64 offset, const QString &what);

    const uchar *_data;
    quint64 _size;
    const QByteArray *_owner; // may be null: the bytes cannot be shared
    std::optional<bool> _sharesLargeData;
    quint64 _offsetSize = 0;
    quint64 _refSize = 0;
    quint64 _objectCount = 0;
    quint64 _topObject = 0;
    quint64 _tableOffset = 0; // also where the objects end
    quint64 _valuesLeft = 0;
    std::vector<quint8> _state;      // by object index: kOnPath, kSeen
    std::vector<PlistValue> _leaves; // by object index, once some leaf is met twice
    Builder _open;
    std::vector<char16_t> _units;
    ReadError _error;
};

bool Parser::fail(quint64 offset, ReadError::Kind kind, const QString &message)
{
    _error.message = message;
    _error.offset = qint64(offset);
    _error.kind = kind;
    return false;
}

bool Parser::truncated(quint64 offset, const QString &what)
{
    return fail(offset, ReadError::Kind::Truncated,
                QStringLiteral("%1 runs past the end of the objects at byte %2")
                    .arg(what)
                    .arg(_tableOffset));
}

bool Parser::readTrailer()
{
    if (_size < quint64(F::kVersionedMagicSize) ||
        std::memcmp(_data, F::kMagic, F::kVersionedMagicSize) != 0)
        return fail(0, ReadError::Kind::Header,
                    QStringLiteral("expected the binary property list magic \"bplist0\""));
    if (_size < F::kHeaderSize + F::kTrailerSize)
        return fail(0, ReadError::Kind::Header,
                    QStringLiteral("expected at least 40 bytes for the header and trailer, "
                                   "found %1")
                        .arg(_size));
    const quint64 at = _size - F::kTrailerSize;
    const uchar *trailer = _data + at;
    _offsetSize = trailer[F::kTrailerOffsetSize];
    _refSize = trailer[F::kTrailerRefSize];
    _objectCount = readBigEndian(trailer + F::kTrailerObjectCount, 8);
    _topObject = readBigEndian(trailer + F::kTrailerTopObject, 8);
    _tableOffset = readBigEndian(trailer + F::kTrailerTableOffset, 8);
    return checkTrailer(at);
}

// One rule a line; each relies on the ones above it.
bool Parser::checkTrailer(quint64 at)
{
    if (_offsetSize < 1 || _offsetSize > 8)
        return fail(
            at + F::kTrailerOffsetSize, ReadError::Kind::Header,
            QStringLiteral("expected an offset size of 1 to 8 bytes, found %1").arg(_offsetSize));
    if (_refSize < 1 || _refSize > 8)
        return fail(at + F::kTrailerRefSize, ReadError::Kind::Header,
                    QStringLiteral("expected an object reference size of 1 to 8 bytes, found %1")
                        .arg(_refSize));
    if (_objectCount == 0)
        return fail(at + F::kTrailerObjectCount, ReadError::Kind::Header,
                    QStringLiteral("expected at least one object, found none"));
    if (_topObject >= _objectCount)
        return fail(at + F::kTrailerTopObject, ReadError::Kind::Header,
                    QStringLiteral("top object %1 is out of range: the file has %2 objects")
                        .arg(_topObject)
                        .arg(_objectCount));
    if (_tableOffset <= F::kHeaderSize)
        return fail(at + F::kTrailerTableOffset, ReadError::Kind::Header,
                    QStringLiteral("the offset table starts at byte %1, leaving no room for "
                                   "objects after the header")
                        .arg(_tableOffset));
    if (_tableOffset >= at)
        return fail(at + F::kTrailerTableOffset, ReadError::Kind::Header,
                    QStringLiteral("the offset table starts at byte %1, not before the trailer "
                                   "at byte %2")
                        .arg(_tableOffset)
                        .arg(at));
    if (_objectCount > (at - _tableOffset) / _offsetSize) // a product could wrap
        return fail(at + F::kTrailerObjectCount, ReadError::Kind::Header,
                    QStringLiteral("an offset table of %1 entries, %2 bytes each, does not fit in "
                                   "the %3 bytes between byte %4 and the trailer")
                        .arg(_objectCount)
                        .arg(_offsetSize)
                        .arg(at - _tableOffset)
                        .arg(_tableOffset));
    if (_objectCount - 1 > largestOfWidth(_refSize))
        return fail(at + F::kTrailerRefSize, ReadError::Kind::Header,
                    QStringLiteral("%1-byte object references cannot reach all %2 objects")
                        .arg(_refSize)
                        .arg(_objectCount));
    if (_tableOffset - 1 > largestOfWidth(_offsetSize))
        return fail(at + F::kTrailerOffsetSize, ReadError::Kind::Header,
                    QStringLiteral("%1-byte offsets cannot reach objects up to byte %2")
                        .arg(_offsetSize)
                        .arg(_tableOffset - 1));
    return true;
}

ReadResult Parser::run()
{
    if (!readTrailer())
        return ReadResult::failure(_error);
    // The object count was checked against the offset table, which lies in the file.
    _state.resize(_objectCount);
    _valuesLeft = _size * kValuesPerInputByte;

    PlistValue fresh;
    const PlistValue *top = nullptr;
    quint64 offset = 0;
    if (!resolve(_topObject, fresh, top, offset))
        return ReadResult::failure(_error);
    if (top)
        return ReadResult::success(take(top, fresh), ADPlistFormatBinary);
    if (!openContainer(_topObject, offset, _size - F::kTrailerSize + F::kTrailerTopObject))
        return ReadResult::failure(_error);
    for (;;) {
        const Opened &filled = _open.info();
        if (filled.next < filled.count) {
            if (!step())
                return ReadResult::failure(_error);
            continue;
        }
        _state[filled.object] &= ~kOnPath;
        PlistValue container = _open.close();
        if (_open.isEmpty())
            return ReadResult::success(std::move(container), ADPlistFormatBinary);
        _open.add(std::move(container));
    }
}

// Reads the next entry of the innermost open container. A container met on
// the way is opened, and joins its parent when it is filled.
bool Parser::step()
{
    Opened &filled = _open.info(); // stale once a container opens
    const quint64 i = filled.next++;
    const bool inDictionary = _open.kind() == Builder::Kind::Dictionary;
    const quint64 valueAt = filled.refs + (inDictionary ? filled.count + i : i) * _refSize;
    PlistValue freshKey;
    const PlistValue *key = nullptr;
    if (inDictionary && !readKey(filled.refs + i * _refSize, freshKey, key))
        return false;
    PlistValue fresh;
    const PlistValue *value = nullptr;
    quint64 object = 0;
    quint64 offset = 0;
    if (!readReference(valueAt, object) || !resolve(object, fresh, value, offset))
        return false;
    if (value && inDictionary)
        _open.addPair(take(key, freshKey), take(value, fresh));
    else if (value)
        _open.add(take(value, fresh));
    else if (inDictionary)
        _open.add(take(key, freshKey)); // to wait for the container opened next
    return value || openContainer(object, offset, valueAt);
}

// `at` lies within a reference list already checked to fit.
bool Parser::readReference(quint64 at, quint64 &object)
{
    object = readBigEndian(_data + at, _refSize);
    if (object >= _objectCount)
        return fail(at, ReadError::Kind::Reference,
                    QStringLiteral("reference to object %1, but the file has %2 objects")
                        .arg(object)
                        .arg(_objectCount));
    return true;
}

bool Parser::objectOffset(quint64 object, quint64 &offset)
{
    const quint64 entry = _tableOffset + object * _offsetSize; // the table fits, so no wrap
    offset = readBigEndian(_data + entry, _offsetSize);
    if (offset < F::kHeaderSize)
        return fail(entry, ReadError::Kind::Reference,
                    QStringLiteral("object %1 starts at byte %2, inside the header")
                        .arg(object)
                        .arg(offset));
    if (offset >= _tableOffset)
        return fail(entry, ReadError::Kind::Reference,
                    QStringLiteral("object %1 starts at byte %2, past the objects, which "
                                   "end at byte %3")
                        .arg(object)
                        .arg(offset)
                        .arg(_tableOffset));
    return true;
}

// Points `value` at a kept leaf, or at `fresh` holding the leaf just read;
// leaves it null for an array or dictionary, which starts at `offset`.
bool Parser::resolve(quint64 object, PlistValue &fresh, const PlistValue *&value, quint64 &offset)
{
    value = nullptr;
    if (!_leaves.empty() && !_leaves[object].isNone()) {
        value = &_leaves[object];
        return true;
    }
    if (!objectOffset(object, offset))
        return false;
    const F::Type type = F::typeOf(_data[offset]);
    if (type == F::Array || type == F::Dictionary)
        return true;
    if (!readLeaf(offset, fresh))
        return false;
    remember(object, fresh);
    value = &fresh;
    return true;
}

// Most leaves are met once; keeping every one would cost a copy each. A leaf
// met a second time is kept for the third and later.
void Parser::remember(quint64 object, const PlistValue &leaf)
{
    if (!(_state[object] & kSeen)) {
        _state[object] |= kSeen;
        return;
    }
    if (_leaves.empty())
        _leaves.resize(_objectCount);
    _leaves[object] = PlistValueInternals::unpublishedCopy(leaf);
}

// Keys are strings. Integer keys, which some writers emit, become their
// decimal text; any other kind of key is refused.
bool Parser::readKey(quint64 refAt, PlistValue &fresh, const PlistValue *&key)
{
    quint64 object = 0;
    if (!readReference(refAt, object))
        return false;
    key = _leaves.empty() || _leaves[object].isNone() ? &fresh : &_leaves[object];
    if (key == &fresh) {
        quint64 offset = 0;
        if (!objectOffset(object, offset))
            return false;
        const uchar marker = _data[offset];
        const F::Type type = F::typeOf(marker);
        if (type != F::Integer && type != F::AsciiString && type != F::Utf16String)
            return fail(refAt, ReadError::Kind::Structure,
                        QStringLiteral("expected a string as dictionary key, found %1 "
                                       "(object %2)")
                            .arg(markerName(marker))
                            .arg(object));
        if (!readLeaf(offset, fresh))
            return false;
        remember(object, fresh);
    }
    if (key->isString())
        return true;
    if (!key->isInteger())
        return fail(refAt, ReadError::Kind::Structure,
                    QStringLiteral("expected a string as dictionary key, found object %1 "
                                   "of another kind")
                        .arg(object));
    char text[NumberText::kMaxIntegerLength];
    const char *end = key->isUnsigned() ? NumberText::formatInteger(key->toUnsigned(), text)
                                        : NumberText::formatInteger(key->toInteger(), text);
    fresh = PlistValue::fromLatin1(text, end - text);
    key = &fresh;
    return true;
}

bool Parser::openContainer(quint64 object, quint64 offset, quint64 refAt)
{
    if (_state[object] & kOnPath)
        return fail(refAt, ReadError::Kind::Cycle,
                    QStringLiteral("object %1 contains itself (a reference cycle)").arg(object));
    quint64 start = 0;
    quint64 count = 0;
    if (!readLength(offset, start, count))
        return false;
    const bool isDictionary = F::typeOf(_data[offset]) == F::Dictionary;
    const quint64 entryBytes = isDictionary ? 2 * _refSize : _refSize;
    if (count > (_tableOffset - start) / entryBytes)
        return fail(
            offset, ReadError::Kind::Truncated,
            QStringLiteral("%1 of %2 entries needs more than the %3 bytes left before "
                           "the offset table")
                .arg(isDictionary ? QStringLiteral("a dictionary") : QStringLiteral("an array"))
                .arg(count)
                .arg(_tableOffset - start));
    const quint64 values = isDictionary ? 2 * count : count; // count fits in the file
    if (values > _valuesLeft)
        return fail(offset, ReadError::Kind::TooLarge,
                    QStringLiteral("the file expands to more than %1 values; a "
                                   "container is referenced from too many places")
                        .arg(_size * kValuesPerInputByte));
    _valuesLeft -= values;

    _open.openSized(isDictionary ? Builder::Kind::Dictionary : Builder::Kind::Array,
                    qsizetype(count), {start, count, 0, object});
    _state[object] |= kOnPath;
    return true;
}

// The count in a marker's low half, or the integer after it when that half is 0xF.
bool Parser::readLength(quint64 offset, quint64 &start, quint64 &length)
{
    const uchar low = F::lowOf(_data[offset]);
    start = offset + 1;
    if (low != F::kCountFollows) {
        length = low;
        return true;
    }
    if (!fits(start, 1))
        return truncated(offset, QStringLiteral("a length"));
    const uchar marker = _data[start];
    if (F::typeOf(marker) != F::Integer || F::lowOf(marker) > 3)
        return fail(start, ReadError::Kind::Syntax,
                    QStringLiteral("expected a length as an integer of 1, 2, 4 or 8 bytes, "
                                   "found %1")
                        .arg(hexByte(marker)));
    const quint64 width = quint64(1) << F::lowOf(marker);
    if (!fits(start + 1, width))
        return truncated(start, QStringLiteral("a length of %1 bytes").arg(width));
    length = readBigEndian(_data + start + 1, width);
    start += 1 + width;
    return true;
}

bool Parser::readLeaf(quint64 offset, PlistValue &out)
{
    const uchar marker = _data[offset];
    switch (F::typeOf(marker)) {
    case F::Special:
        return readSpecial(offset, out);
    case F::Integer:
        return readInteger(offset, out);
    case F::Real:
        return readReal(offset, out);
    case F::Date:
        return readDate(offset, out);
    case F::Data:
        return readData(offset, out);
    case F::AsciiString:
        return readAscii(offset, out);
    case F::Utf16String:
        return readUtf16(offset, out);
    case F::Uid:
        return readUid(offset, out);
    case F::Set:
        return fail(offset, ReadError::Kind::Unsupported,
                    QStringLiteral("found a set (marker %1), which a property list "
                                   "value cannot hold")
                        .arg(hexByte(marker)));
    default:
        return fail(offset, ReadError::Kind::UnknownType,
                    QStringLiteral("unknown object marker %1").arg(hexByte(marker)));
    }
}

bool Parser::readSpecial(quint64 offset, PlistValue &out)
{
    switch (_data[offset]) {
    case F::kNull:
        out = PlistValue::null();
        return true;
    case F::kFalse:
        out = PlistValue(false);
        return true;
    case F::kTrue:
        out = PlistValue(true);
        return true;
    case F::kFill:
        return fail(offset, ReadError::Kind::Unsupported,
                    QStringLiteral("found a fill byte (0x0f), which pads between "
                                   "objects and is no object itself"));
    default:
        return fail(offset, ReadError::Kind::UnknownType,
                    QStringLiteral("unknown object marker %1").arg(hexByte(_data[offset])));
    }
}

bool Parser::readInteger(quint64 offset, PlistValue &out)
{
    const uchar low = F::lowOf(_data[offset]);
    if (low > 4)
        return fail(offset, ReadError::Kind::Number,
                    QStringLiteral("expected an integer of 1, 2, 4, 8 or 16 bytes, "
                                   "found one of 2^%1 bytes")
                        .arg(low));
    const quint64 width = quint64(1) << low;
    if (!fits(offset + 1, width))
        return truncated(offset, QStringLiteral("an integer of %1 bytes").arg(width));
    const uchar *p = _data + offset + 1;
    if (width == 16) // only the low half counts, as an unsigned value
        out = PlistValue(readBigEndian(p + 8, 8));
    else if (width == 8)
        out = PlistValue(qint64(readBigEndian(p, 8)));
    else
        out = PlistValue(readBigEndian(p, width));
    return true;
}

bool Parser::readReal(quint64 offset, PlistValue &out)
{
    const uchar low = F::lowOf(_data[offset]);
    if (low != 2 && low != 3)
        return fail(offset, ReadError::Kind::Number,
                    QStringLiteral("expected a real of 4 or 8 bytes, found marker %1")
                        .arg(hexByte(_data[offset])));
    const quint64 width = quint64(1) << low;
    if (!fits(offset + 1, width))
        return truncated(offset, QStringLiteral("a real of %1 bytes").arg(width));
    const uchar *p = _data + offset + 1;
    if (width == 4)
        out = PlistValue(double(std::bit_cast<float>(quint32(readBigEndian(p, 4)))));
    else
        out = PlistValue(std::bit_cast<double>(readBigEndian(p, 8)));
    return true;
}

bool Parser::readDate(quint64 offset, PlistValue &out)
{
    if (_data[offset] != F::kDate)
        return fail(offset, ReadError::Kind::Date,
                    QStringLiteral("expected a date of 8 bytes (marker 0x33), found %1")
                        .arg(hexByte(_data[offset])));
    if (!fits(offset + 1, 8))
        return truncated(offset, QStringLiteral("a date of 8 bytes"));
    const double seconds = std::bit_cast<double>(readBigEndian(_data + offset + 1, 8));
    if (std::isnan(seconds))
        return fail(offset, ReadError::Kind::Date, QStringLiteral("expected a date, found a NaN"));
    out = PlistValue::date(seconds);
    return true;
}

bool Parser::readData(quint64 offset, PlistValue &out)
{
    quint64 start = 0;
    quint64 length = 0;
    if (!readLength(offset, start, length))
        return false;
    if (!fits(start, length))
        return truncated(offset, QStringLiteral("data of %1 bytes").arg(length));
    if (length >= kShareMinimum && sharesLargeData()) {
        out = PlistValue::data(sharedSlice(*_owner, qsizetype(start), qsizetype(length)));
        return true;
    }
    if (length < kShareMinimum) {
        out = PlistValue::dataCopy(QByteArrayView(_data + start, qsizetype(length)));
        return true;
    }
    QByteArray bytes = HugePages::buffer(qsizetype(length));
    std::memcpy(bytes.data(), _data + start, size_t(length));
    out = PlistValue::data(bytes);
    return true;
}

// Large data values share the file's bytes rather than copy them when they
// make up most of the file, so that sharing never keeps much else alive.
bool Parser::sharesLargeData()
{
    if (!_sharesLargeData)
        _sharesLargeData = _owner && largeDataBytes() * 2 >= _size;
    return *_sharesLargeData;
}

// The bytes of the file's data objects of kShareMinimum bytes or more, from
// the offset table. Objects that do not check out count for nothing here; the
// parse proper reports them.
quint64 Parser::largeDataBytes() const
{
    quint64 total = 0;
    for (quint64 i = 0; i < _objectCount; ++i) {
        const quint64 offset = readBigEndian(_data + _tableOffset + i * _offsetSize, _offsetSize);
        if (offset < F::kHeaderSize || offset >= _tableOffset ||
            _data[offset] != F::marker(F::Data, F::kCountFollows))
            continue; // not data, or too short to need the long length
        const quint64 at = offset + 1;
        if (!fits(at, 1) || F::typeOf(_data[at]) != F::Integer || F::lowOf(_data[at]) > 3)
            continue;
        const quint64 width = quint64(1) << F::lowOf(_data[at]);
        if (!fits(at + 1, width))
            continue;
        const quint64 length = readBigEndian(_data + at + 1, width);
        if (length >= kShareMinimum && fits(at + 1 + width, length))
            total += length;
    }
    return total;
}

// Strings marked ASCII that hold UTF-8 are common in files from other tools.
bool Parser::readAscii(quint64 offset, PlistValue &out)
{
    quint64 start = 0;
    quint64 length = 0;
    if (!readLength(offset, start, length))
        return false;
    if (!fits(start, length))
        return truncated(offset, QStringLiteral("a string of %1 bytes").arg(length));
    const char *p = reinterpret_cast<const char *>(_data + start);
    if (SimdText::skipAscii(p, p + length, false) == p + length) {
        out = PlistValue::fromLatin1(p, qsizetype(length));
        return true;
    }
    if (UnicodeText::firstFlaw(QByteArrayView(p, qsizetype(length)), UnicodeText::Nul::Allowed) >=
        0)
        return fail(offset, ReadError::Kind::Encoding,
                    QStringLiteral("expected ASCII or UTF-8 text in a string (%1 bytes), "
                                   "found other bytes")
                        .arg(length));
    _units.resize(length); // UTF-8 never takes fewer bytes than UTF-16 takes units
    const char16_t *end = UnicodeText::toUtf16(p, p + length, _units.data());
    out = PlistValue::fromUtf16(_units.data(), end - _units.data());
    return true;
}

bool Parser::readUtf16(quint64 offset, PlistValue &out)
{
    quint64 start = 0;
    quint64 length = 0;
    if (!readLength(offset, start, length))
        return false;
    if (length > (_tableOffset - start) / 2)
        return truncated(offset, QStringLiteral("a UTF-16 string of %1 units").arg(length));
    _units.resize(length);
    const uchar *p = _data + start;
    for (quint64 i = 0; i < length; ++i)
        _units[i] = char16_t((p[2 * i] << 8) | p[2 * i + 1]);
    const char16_t *const end = _units.data() + length;
    for (const char16_t *q = _units.data(); q < end;) {
        const char16_t *at = q;
        if (UnicodeText::isSurrogate(UnicodeText::next(q, end)))
            return fail(start + 2 * quint64(at - _units.data()), ReadError::Kind::Encoding,
                        QStringLiteral("unpaired UTF-16 surrogate 0x%1")
                            .arg(uint(*at), 4, 16, QLatin1Char('0')));
    }
    out = PlistValue::fromUtf16(_units.data(), qsizetype(length));
    return true;
}

// UIDs come in 1 to 16 bytes; beyond 8 the high bytes must be zero.
bool Parser::readUid(quint64 offset, PlistValue &out)
{
    const quint64 width = quint64(F::lowOf(_data[offset])) + 1;
    if (!fits(offset + 1, width))
        return truncated(offset, QStringLiteral("a UID of %1 bytes").arg(width));
    const uchar *p = _data + offset + 1;
    const quint64 high = width > 8 ? width - 8 : 0;
    for (quint64 i = 0; i < high; ++i) {
        if (p[i] != 0)
            return fail(offset, ReadError::Kind::OutOfRange,
                        QStringLiteral("expected a UID of at most 64 bits, found one of "
                                       "%1 bytes")
                            .arg(width));
    }
    out = PlistValue::uid(readBigEndian(p + high, width - high));
    return true;
}

} // namespace

bool BinaryReader::recognizes(QByteArrayView bytes)
{
    return bytes.startsWith(QByteArrayView(F::kMagic, 6)); // "bplist": any version, any length
}

ReadResult BinaryReader::read(QByteArrayView bytes)
{
    return Parser(bytes, nullptr).run();
}

ReadResult BinaryReader::read(const QByteArray &bytes)
{
    return Parser(bytes, &bytes).run();
}
