#include "XmlWriter.h"

#include "SimdText.h"
#include "UnicodeText.h"
#include "XmlBase64.h"
#include "XmlDate.h"
#include "shared/HugePages.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValueInternals.h"

#include <array>
#include <cmath>
#include <cstring>
#include <vector>

using plist_detail::PlistValueInternals;

namespace {

constexpr QByteArrayView kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                   "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                   "<plist version=\"1.0\">\n";
constexpr QByteArrayView kFooter = "</plist>\n";

// Base64 lines fill 76 columns less the indentation, which counts at most
// eight tabs of eight columns.
constexpr int kDataColumns = 76;
constexpr int kMaxDataIndent = 8;

// Indentation stops growing here: tabs for every level of a file nested
// 100,000 deep would make gigabytes. No real file comes near.
constexpr int kMaxIndent = 128;

// Bytes every reservation adds beyond what a line needs, so that short runs
// (tabs) may be written a whole block at a time.
constexpr int kSlack = 16;

/// Output bytes, grown by doubling; written through raw pointers.
class Sink
{
public:
    Sink() { _bytes.resize(4096); }

    // Room for `n` more bytes at the returned pointer; `commit` says how many were used.
    char *reserve(qsizetype n)
    {
        if (n > _bytes.size() - _used)
            grow(nextCapacity(_used + n));
        return _bytes.data() + _used;
    }
    // `done` of the top container's `total` entries are written.
    void progress(qsizetype done, qsizetype total)
    {
        _done = done;
        _total = total;
    }
    void commit(char *end) { _used = end - _bytes.data(); }
    void append(QByteArrayView s)
    {
        char *p = reserve(s.size());
        std::memcpy(p, s.data(), size_t(s.size()));
        _used += s.size();
    }
    // A new buffer rather than a reallocation, so that a big one gets huge
    // pages before anything touches it.
    void grow(qsizetype size)
    {
        QByteArray bigger = HugePages::buffer(size);
        std::memcpy(bigger.data(), _bytes.constData(), size_t(_used));
        _bytes.swap(bigger);
    }
    QByteArray take()
    {
        _bytes.resize(_used);
        if (_bytes.capacity() - _used > _used / 8)
            _bytes.squeeze(); // a prediction ran over
        return std::move(_bytes);
    }

private:
    // Doubling, or once there is enough output to go by, straight to what the
    // part written so far predicts for the whole: a big file is then faulted
    // in and copied about once rather than over a dozen doublings.
    qsizetype nextCapacity(qsizetype needed) const
    {
        const qsizetype doubled = std::max(_bytes.size() * 2, needed);
        if (_used < kPredictFrom || _done == 0)
            return doubled;
        const double whole = double(_used) / double(_done) * double(_total) * 1.05;
        const double bounded = std::min(whole, double(needed) * kMostGrowth);
        return bounded > double(needed) ? qsizetype(bounded) : doubled;
    }

    static constexpr qsizetype kPredictFrom = qsizetype(16) << 20;
    static constexpr qsizetype kMostGrowth = 16;

    QByteArray _bytes;
    qsizetype _used = 0;
    qsizetype _done = 0;
    qsizetype _total = 0;
};

char *escapedUnit(char32_t c, char *out)
{
    switch (c) {
    case '&':
        std::memcpy(out, "&amp;", 5);
        return out + 5;
    case '<':
        std::memcpy(out, "&lt;", 4);
        return out + 4;
    case '>':
        std::memcpy(out, "&gt;", 4);
        return out + 4;
    case '\'':
        std::memcpy(out, "&apos;", 6);
        return out + 6;
    case '"':
        std::memcpy(out, "&quot;", 6);
        return out + 6;
    default:
        return UnicodeText::encode(c, out);
    }
}

// Sixteen bytes a step, then byte by byte: for the runs of a string, this
// beats a call to memcpy.
char *copied(const char *from, const char *to, char *out)
{
    for (; to - from >= 16; from += 16, out += 16)
        std::memcpy(out, from, 16);
    while (from < to)
        *out++ = *from++;
    return out;
}

// A long string's clean start goes as it is; the rest, and a short string,
// byte by byte in one pass.
char *escapedLatin1(QLatin1StringView s, char *out)
{
    const char *p = s.data();
    const char *const end = p + s.size();
    if (end - p >= 16) {
        const char *special = SimdText::findXmlSpecial(p, end);
        out = copied(p, special, out);
        p = special;
    }
    for (; p < end; ++p) {
        if (SimdText::isXmlSpecial(*p))
            out = escapedUnit(static_cast<unsigned char>(*p), out);
        else
            *out++ = *p;
    }
    return out;
}

char *escapedUtf16(QStringView s, char *out)
{
    const char16_t *p = s.utf16();
    const char16_t *const end = p + s.size();
    while (p < end) {
        const char32_t c = UnicodeText::next(p, end);
        // A lone surrogate has no UTF-8 form.
        out = escapedUnit(UnicodeText::isSurrogate(c) ? U'\uFFFD' : c, out);
    }
    return out;
}

class Writer
{
public:
    bool run(const PlistValue &root)
    {
        _out.append(kHeader);
        if (!value(root, 0))
            return false;
        while (!_stack.empty()) {
            Frame &frame = _stack.back();
            if (frame.next == frame.count) {
                if (frame.dict.isNull())
                    tagLine("</array>\n", frame.indent);
                else
                    tagLine("</dict>\n", frame.indent);
                _stack.pop_back();
                continue;
            }
            const qsizetype i = frame.next++;
            if (_stack.size() == 1)
                _out.progress(i, frame.count);
            prefetch(frame, i + kAhead);
            const int indent = std::min(frame.indent + 1, kMaxIndent);
            // `frame` may move once a child container is pushed.
            const bool ok = frame.dict.isNull() ? value(frame.array.at(i), indent)
                                                : entry(frame.dict, i, indent);
            if (!ok)
                return false;
        }
        _out.append(kFooter);
        return true;
    }

    QByteArray take() { return _out.take(); }
    const QString &error() const { return _error; }

private:
    struct Frame
    {
        PlistArray array;
        PlistDictionary dict;
        qsizetype next;
        qsizetype count;
        int indent;
    };

    // Entries this far ahead are fetched from memory while these are written.
    static constexpr qsizetype kAhead = 8;

    static void prefetch(const Frame &frame, qsizetype i)
    {
        if (i >= frame.count)
            return;
        if (frame.dict.isNull()) {
            PlistValueInternals::prefetch(frame.array.at(i));
            return;
        }
        PlistValueInternals::prefetch(frame.dict.keyValueAt(i));
        PlistValueInternals::prefetch(frame.dict.valueAt(i));
    }

    bool entry(const PlistDictionary &dict, qsizetype i, int indent)
    {
        string("<key>", dict.keyValueAt(i).stringView(), "</key>\n", indent);
        return value(dict.valueAt(i), indent);
    }

    template <size_t N> static char *put(char *p, const char (&literal)[N])
    {
        std::memcpy(p, literal, N - 1);
        return p + N - 1;
    }

    // Indentation; writes a whole block of tabs when it can, which the slack
    // every reservation includes leaves room for.
    static char *tabs(char *p, int indent)
    {
        static constexpr char kTabs[] = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
        if (indent <= kSlack) {
            std::memcpy(p, kTabs, kSlack);
            return p + indent;
        }
        std::memset(p, '\t', size_t(indent));
        return p + indent;
    }

    char *reserve(qsizetype n, int indent) { return _out.reserve(n + indent + 2 * kSlack); }

    template <size_t N> void tagLine(const char (&tag)[N], int indent)
    {
        _out.commit(put(tabs(reserve(N, indent), indent), tag));
    }

    template <size_t O, size_t C>
    void line(const char (&open)[O], QByteArrayView text, const char (&close)[C], int indent)
    {
        char *p = put(tabs(reserve(O + text.size() + C, indent), indent), open);
        std::memcpy(p, text.data(), size_t(text.size()));
        _out.commit(put(p + text.size(), close));
    }

    template <size_t O, size_t C>
    void string(const char (&open)[O], QAnyStringView text, const char (&close)[C], int indent)
    {
        // Worst case six bytes a unit ("&quot;"); UTF-8 needs at most three.
        char *p = put(tabs(reserve(O + text.size() * 6 + C, indent), indent), open);
        p = text.visit([p](auto view) {
            if constexpr (std::is_same_v<decltype(view), QLatin1StringView>)
                return escapedLatin1(view, p);
            else if constexpr (std::is_same_v<decltype(view), QStringView>)
                return escapedUtf16(view, p);
            else
                return escapedUtf16(view.toString(), p); // plist strings never hold UTF-8 views
        });
        _out.commit(put(p, close));
    }

    void number(const PlistValue &v, int indent)
    {
        char buffer[NumberText::kMaxRealLength];
        if (!v.isReal()) {
            const char *end = v.isUnsigned() ? NumberText::formatInteger(v.toUnsigned(), buffer)
                                             : NumberText::formatInteger(v.toInteger(), buffer);
            line("<integer>", QByteArrayView(buffer, end), "</integer>\n", indent);
            return;
        }
        const double d = v.toReal();
        if (std::isnan(d)) {
            line("<real>", "nan", "</real>\n", indent);
        } else if (std::isinf(d)) {
            line("<real>", d < 0 ? "-infinity" : "+infinity", "</real>\n", indent);
        } else {
            const char *end = NumberText::formatReal(d, buffer);
            line("<real>", QByteArrayView(buffer, end), "</real>\n", indent);
        }
    }

    void date(double seconds, int indent)
    {
        char buffer[XmlDate::kMaxLength];
        const char *end = XmlDate::format(seconds, buffer);
        if (!end) {
            _error = QStringLiteral("a date of %1 seconds from 2001 is too far out to write as "
                                    "XML")
                         .arg(seconds);
            return;
        }
        line("<date>", QByteArrayView(buffer, end - buffer), "</date>\n", indent);
    }

    void data(QByteArrayView bytes, int indent)
    {
        const int lineIndent = std::min(indent, kMaxDataIndent);
        const int lineLength = kDataColumns - 8 * lineIndent;
        const qsizetype size = XmlBase64::encodedSize(bytes.size(), lineLength, lineIndent);
        char *p = put(tabs(reserve(size + indent + 16, indent), indent), "<data>\n");
        p = XmlBase64::encodeLines(bytes, lineLength, lineIndent, p);
        _out.commit(put(tabs(p, indent), "</data>\n"));
    }

    void uid(quint64 id, int indent)
    {
        char buffer[NumberText::kMaxIntegerLength];
        const char *end = NumberText::formatInteger(id, buffer);
        tagLine("<dict>\n", indent);
        line("<key>", "CF$UID", "</key>\n", indent + 1);
        line("<integer>", QByteArrayView(buffer, end), "</integer>\n", indent + 1);
        tagLine("</dict>\n", indent);
    }

    void container(const PlistValue &v, int indent)
    {
        if (v.isArray()) {
            const PlistArray array = v.toArray();
            if (array.isEmpty())
                return tagLine("<array/>\n", indent);
            tagLine("<array>\n", indent);
            _stack.push_back({array, {}, 0, array.count(), indent});
            return;
        }
        const PlistDictionary dict = v.toDictionary();
        if (dict.isEmpty())
            return line("<dict/>", "", "\n", indent);
        tagLine("<dict>\n", indent);
        _stack.push_back({{}, dict, 0, dict.count(), indent});
    }

    bool value(const PlistValue &v, int indent)
    {
        switch (v.kind()) {
        case PlistValue::Kind::Array:
        case PlistValue::Kind::Dictionary:
            container(v, indent);
            break;
        case PlistValue::Kind::String:
            string("<string>", v.stringView(), "</string>\n", indent);
            break;
        case PlistValue::Kind::Number:
            number(v, indent);
            break;
        case PlistValue::Kind::Boolean:
            if (v.toBool())
                tagLine("<true/>\n", indent);
            else
                tagLine("<false/>\n", indent);
            break;
        case PlistValue::Kind::Date:
            date(v.toDate(), indent);
            break;
        case PlistValue::Kind::Data:
            data(v.dataView(), indent);
            break;
        case PlistValue::Kind::Uid:
            uid(v.toUid(), indent);
            break;
        case PlistValue::Kind::Null:
            _error = QStringLiteral("null cannot be written as XML: the format has no null "
                                    "value (only JSON has)");
            break;
        case PlistValue::Kind::None:
            _error = QStringLiteral("there is no value to write");
            break;
        }
        return _error.isEmpty();
    }

    Sink _out;
    std::vector<Frame> _stack;
    QString _error;
};

} // namespace

WriteResult XmlWriter::write(const PlistValue &value)
{
    Writer writer;
    if (!writer.run(value))
        return WriteResult::failure(writer.error());
    return WriteResult::success(writer.take());
}
