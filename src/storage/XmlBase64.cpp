#include "XmlBase64.h"

#include "ParallelParts.h"
#include "SimdText.h"
#include "SizeThreshold.h"
#include "shared/HugePages.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr quint32 kNotDigit = 0x01000000; // above any 24 bits four digits make

// The value of a digit shifted into its place in a group of four, so that a
// group decodes with four lookups and three ORs; anything else has kNotDigit.
using ShiftTable = std::array<quint32, 256>;

constexpr ShiftTable shiftTable(int shift)
{
    ShiftTable table{};
    for (quint32 &entry : table)
        entry = kNotDigit;
    for (quint32 i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(kAlphabet[i])] = i << shift;
    return table;
}

constexpr ShiftTable kDigit0 = shiftTable(18);
constexpr ShiftTable kDigit1 = shiftTable(12);
constexpr ShiftTable kDigit2 = shiftTable(6);
constexpr ShiftTable kDigit3 = shiftTable(0);

// Two digits for every 12 bits, so that three bytes encode with two lookups.
using PairTable = std::array<quint16, 4096>;

constexpr PairTable pairTable()
{
    PairTable table{};
    for (quint32 i = 0; i < 4096; ++i) {
        const auto first = quint16(static_cast<unsigned char>(kAlphabet[i >> 6]));
        const auto second = quint16(static_cast<unsigned char>(kAlphabet[i & 63]));
        table[i] = std::endian::native == std::endian::little ? quint16(first | second << 8)
                                                              : quint16(first << 8 | second);
    }
    return table;
}

constexpr PairTable kPairs = pairTable();

char *encodeGroup(const unsigned char *in, char *out)
{
    const quint32 v = (quint32(in[0]) << 16) | (quint32(in[1]) << 8) | in[2];
    std::memcpy(out, &kPairs[v >> 12], 2);
    std::memcpy(out + 2, &kPairs[v & 0xFFF], 2);
    return out + 4;
}

// Six bytes from one eight-byte load (the caller leaves eight to read).
char *encodeTwoGroups(const unsigned char *in, char *out)
{
    quint64 word;
    std::memcpy(&word, in, 8);
    if constexpr (std::endian::native == std::endian::little)
        word = __builtin_bswap64(word);
    const auto first = quint32(word >> 40);
    const auto second = quint32(word >> 16) & 0xFFFFFF;
    const quint16 digits[4] = {kPairs[first >> 12], kPairs[first & 0xFFF], kPairs[second >> 12],
                               kPairs[second & 0xFFF]};
    std::memcpy(out, digits, 8);
    return out + 8;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

// Collects digits one at a time where white space or padding breaks the
// groups of four; emits bytes as groups complete.
class Tail
{
public:
    void add(quint32 digit)
    {
        _bits = (_bits << 6) | digit;
        ++_count;
    }
    int count() const { return _count; }
    char *flush(char *out)
    {
        if (_count == 4) {
            *out++ = char(_bits >> 16);
            *out++ = char(_bits >> 8);
            *out++ = char(_bits);
        } else if (_count == 3) {
            *out++ = char(_bits >> 10);
            *out++ = char(_bits >> 2);
        } else if (_count == 2) {
            *out++ = char(_bits >> 4);
        }
        _bits = 0;
        _count = 0;
        return out;
    }

private:
    quint32 _bits = 0;
    int _count = 0;
};

// Decoding state carried from one stretch of text to the next.
struct DecodeState
{
    Tail tail;
    qsizetype padding = 0;
};

// Whole groups between line breaks, the common case: decodes from in[i] while
// four digits stand there; returns where they stop.
inline qsizetype decodeGroups(const unsigned char *in, qsizetype i, qsizetype limit, char *&o)
{
    while (limit - i >= 4) {
        const quint32 v =
            kDigit0[in[i]] | kDigit1[in[i + 1]] | kDigit2[in[i + 2]] | kDigit3[in[i + 3]];
        if (v & kNotDigit)
            break;
        o[0] = char(v >> 16);
        o[1] = char(v >> 8);
        o[2] = char(v);
        o += 3;
        i += 4;
    }
    return i;
}

enum class Taken : quint8
{
    Space,
    Padding,
    Digit,
    Stop, // a character that cannot stand here
};

// One character where the groups of four are broken.
inline Taken takeCharacter(unsigned char c, DecodeState &state)
{
    if (isSpace(char(c)))
        return Taken::Space;
    Tail &tail = state.tail;
    if (c == '=' && (tail.count() >= 2 || state.padding > 0) && tail.count() + state.padding < 4) {
        ++state.padding;
        return Taken::Padding;
    }
    const quint32 digit = kDigit3[c];
    if ((digit & kNotDigit) || state.padding > 0)
        return Taken::Stop;
    tail.add(digit);
    return Taken::Digit;
}

// Decodes in[i, limit) to `o` until a character that cannot be there;
// returns its index, or `limit`.
qsizetype decodeRun(const unsigned char *in, qsizetype i, qsizetype limit, char *&o,
                    DecodeState &state)
{
    Tail &tail = state.tail;
    for (; i < limit; ++i) {
        if (tail.count() == 0 && state.padding == 0) {
            i = decodeGroups(in, i, limit, o);
            if (i == limit)
                break;
        }
        switch (takeCharacter(in[i], state)) {
        case Taken::Space:
        case Taken::Padding:
            continue;
        case Taken::Stop:
            return i;
        case Taken::Digit:
            if (tail.count() == 4)
                o = tail.flush(o);
        }
    }
    return limit;
}

// Decodes `window` characters at a time, doubling it each step, so that
// the output grows with what is found rather than with the whole text.
bool decodeGrowing(QByteArrayView text, qsizetype window, QByteArray &out, qsizetype &end)
{
    const auto *in = reinterpret_cast<const unsigned char *>(text.data());
    const qsizetype size = text.size();
    DecodeState state;
    qsizetype used = 0;
    qsizetype i = 0;
    do {
        const qsizetype limit = size - i > window ? i + window : size;
        window *= 2;
        // Three bytes a group, and room for what the carried digits complete.
        out.resize(used + (limit - i) / 4 * 3 + 6);
        HugePages::advise(out.data() + used, size_t(out.size() - used));
        char *o = out.data() + used;
        const qsizetype stop = decodeRun(in, i, limit, o, state);
        used = o - out.data();
        i = stop;
        if (stop < limit)
            break;
    } while (i < size);
    end = i;
    if (state.tail.count() == 1)
        return false;
    char *o = out.data() + used;
    out.resize(state.tail.flush(o) - out.data());
    return true;
}

// Past this much text the output is grown in steps.
constexpr qsizetype kFirstWindow = sizeThreshold(256 * 1024, 16);

} // namespace

bool XmlBase64::decode(QByteArrayView text, QByteArray &out, qsizetype &errorAt)
{
    qsizetype end = 0;
    const bool whole = decodeGrowing(text, std::max<qsizetype>(text.size(), 1), out, end);
    errorAt = end < text.size() || !whole ? end : -1;
    return errorAt < 0;
}

bool XmlBase64::decodePrefix(QByteArrayView text, QByteArray &out, qsizetype &end)
{
    return decodeGrowing(text, kFirstWindow, out, end);
}

qsizetype XmlBase64::encodedSize(qsizetype size, int lineLength, int indent)
{
    const qsizetype chars = (size + 2) / 3 * 4;
    const qsizetype lines = (chars + lineLength - 1) / lineLength;
    return chars + lines * (indent + 1);
}

namespace {

// Lines of `encodeLines`, on one thread.
char *encodeSomeLines(QByteArrayView bytes, int lineLength, int indent, char *out)
{
    const auto *in = reinterpret_cast<const unsigned char *>(bytes.data());
    const qsizetype size = bytes.size();
    const qsizetype groupsPerLine = lineLength / 4;
    qsizetype i = 0;
    while (i < size) {
        std::memset(out, '\t', size_t(indent));
        out += indent;
        // Blocks of four groups read four bytes past their twelve.
        const qsizetype blocks =
            std::min(groupsPerLine / 4, std::max<qsizetype>(0, size - i - 4) / 12);
        out = SimdText::encodeBase64(in + i, blocks, out);
        qsizetype g = 4 * blocks;
        i += 12 * blocks;
        for (; g + 2 <= groupsPerLine && size - i >= 8; g += 2, i += 6)
            out = encodeTwoGroups(in + i, out);
        for (; g < groupsPerLine && size - i >= 3; ++g, i += 3)
            out = encodeGroup(in + i, out);
        const qsizetype left = size - i;
        if (g < groupsPerLine && left > 0 && left < 3) {
            const quint32 v = (quint32(in[i]) << 16) | (left == 2 ? quint32(in[i + 1]) << 8 : 0);
            out[0] = kAlphabet[v >> 18];
            out[1] = kAlphabet[(v >> 12) & 63];
            out[2] = left == 2 ? kAlphabet[(v >> 6) & 63] : '=';
            out[3] = '=';
            out += 4;
            i = size;
        }
        *out++ = '\n';
    }
    return out;
}

} // namespace

char *XmlBase64::encodeLines(QByteArrayView bytes, int lineLength, int indent, char *out)
{
    // Whole lines are independent, so a large block is encoded on all cores.
    constexpr qsizetype kBytesPerPart = qsizetype(4) << 20;
    const qsizetype lineBytes = lineLength / 4 * 3;
    const qsizetype lineChars = indent + lineLength + 1;
    const qsizetype lines = bytes.size() / lineBytes;
    ParallelParts::run(lines, kBytesPerPart / lineBytes, [&](qsizetype from, qsizetype to) {
        encodeSomeLines(bytes.sliced(from * lineBytes, (to - from) * lineBytes), lineLength, indent,
                        out + from * lineChars);
    });
    return encodeSomeLines(bytes.sliced(lines * lineBytes), lineLength, indent,
                           out + lines * lineChars);
}
