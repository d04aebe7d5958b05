#include "JsonWriter.h"

#include "BackslashEscapes.h"
#include "UnicodeText.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <cmath>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace {

constexpr int kIndentWidth = 2;
// Deeper levels stay at this indentation, so that the text of a value nested
// 100,000 deep grows with its depth, not with the square of it.
constexpr qsizetype kDeepestIndent = 32;

bool isPlain(char32_t c)
{
    return c >= 0x20 && c < 0x80 && c != '"' && c != '\\';
}

// A character that JSON escapes: a quote, a backslash, a control
// character, or a lone surrogate, which has no UTF-8.
void appendEscape(QByteArray &out, char16_t c)
{
    BackslashEscapes::append(out, c, "\"\\bfnrt", 'u');
}

void appendString(QByteArray &out, const uchar *latin1, qsizetype size)
{
    out += '"';
    qsizetype run = 0;
    for (qsizetype i = 0; i < size; ++i) {
        if (isPlain(latin1[i]))
            continue;
        out.append(reinterpret_cast<const char *>(latin1 + run), i - run);
        run = i + 1;
        if (latin1[i] < 0x80)
            appendEscape(out, latin1[i]);
        else
            UnicodeText::append(out, latin1[i]);
    }
    out.append(reinterpret_cast<const char *>(latin1 + run), size - run);
    out += '"';
}

void appendString(QByteArray &out, const char16_t *units, qsizetype size)
{
    out += '"';
    const char16_t *const end = units + size;
    while (units < end) {
        const char32_t c = UnicodeText::next(units, end);
        if (isPlain(c))
            out += char(c);
        else if (c < 0x80)
            appendEscape(out, char16_t(c));
        else if (UnicodeText::isSurrogate(c))
            appendEscape(out, char16_t(c));
        else
            UnicodeText::append(out, c);
    }
    out += '"';
}

void appendString(QByteArray &out, QAnyStringView text)
{
    text.visit([&out](auto view) {
        using View = decltype(view);
        if constexpr (std::is_same_v<View, QStringView>) {
            appendString(out, view.utf16(), view.size());
        } else if constexpr (std::is_same_v<View, QLatin1StringView>) {
            appendString(out, reinterpret_cast<const uchar *>(view.data()), view.size());
        } else {
            const QString copy = view.toString();
            appendString(out, QStringView(copy).utf16(), copy.size());
        }
    });
}

class Writer
{
public:
    explicit Writer(bool humanReadable) : _humanReadable(humanReadable) {}
    WriteResult write(const PlistValue &root);

private:
    struct Frame
    {
        PlistArray array;
        PlistDictionary dictionary;
        qsizetype index = 0;
        qsizetype count = 0;
        const void *identity = nullptr; // of a container on the open path
    };

    bool writeValue(const PlistValue &value);
    bool open(Frame frame, const void *identity, char opener);
    bool writeLeaf(const PlistValue &value);
    bool writeReal(double value);
    void newLine();
    bool fail(const QString &message);

    const bool _humanReadable;
    QByteArray _out;
    std::vector<Frame> _stack;
    std::unordered_set<const void *> _path;
    QString _error;
};

WriteResult Writer::write(const PlistValue &root)
{
    bool ok = writeValue(root);
    while (ok && !_stack.empty()) {
        Frame &frame = _stack.back();
        if (frame.index == frame.count) {
            const char closer = frame.dictionary.isNull() ? ']' : '}';
            _path.erase(frame.identity);
            _stack.pop_back();
            newLine();
            _out += closer;
            continue;
        }
        const qsizetype i = frame.index++;
        if (i > 0)
            _out += ',';
        newLine();
        PlistValue value;
        if (frame.dictionary.isNull()) {
            value = frame.array.at(i);
        } else {
            appendString(_out, frame.dictionary.keyValueAt(i).stringView());
            _out += _humanReadable ? ": " : ":";
            value = frame.dictionary.valueAt(i);
        }
        ok = writeValue(value);
    }
    if (!ok)
        return WriteResult::failure(_error);
    return WriteResult::success(_out);
}

bool Writer::writeValue(const PlistValue &value)
{
    if (value.isArray()) {
        const PlistArray array = value.toArray();
        if (array.isEmpty()) {
            _out += "[]";
            return true;
        }
        return open({array, {}, 0, array.count()}, &array.at(0), '[');
    }
    if (value.isDictionary()) {
        const PlistDictionary dictionary = value.toDictionary();
        if (dictionary.isEmpty()) {
            _out += "{}";
            return true;
        }
        return open({{}, dictionary, 0, dictionary.count()}, &dictionary.keyValueAt(0), '{');
    }
    return writeLeaf(value);
}

bool Writer::open(Frame frame, const void *identity, char opener)
{
    if (!_path.insert(identity).second)
        return fail(QStringLiteral("an array or dictionary contains itself"));
    frame.identity = identity;
    _stack.push_back(std::move(frame));
    _out += opener;
    return true;
}

bool Writer::writeLeaf(const PlistValue &value)
{
    switch (value.kind()) {
    case PlistValue::Kind::String:
        appendString(_out, value.stringView());
        return true;
    case PlistValue::Kind::Number: {
        if (value.isReal())
            return writeReal(value.toReal());
        char text[NumberText::kMaxIntegerLength];
        const char *end = value.isUnsigned() ? NumberText::formatInteger(value.toUnsigned(), text)
                                             : NumberText::formatInteger(value.toInteger(), text);
        _out.append(text, end - text);
        return true;
    }
    case PlistValue::Kind::Boolean:
        _out += value.toBool() ? "true" : "false";
        return true;
    case PlistValue::Kind::Null:
        _out += "null";
        return true;
    case PlistValue::Kind::Data:
        return fail(QStringLiteral("JSON has no data type: cannot write data"));
    case PlistValue::Kind::Date:
        return fail(QStringLiteral("JSON has no date type: cannot write a date"));
    case PlistValue::Kind::Uid:
        return fail(QStringLiteral("JSON has no UID type: cannot write a UID"));
    default:
        return fail(QStringLiteral("there is no value to write"));
    }
}

bool Writer::writeReal(double value)
{
    if (!std::isfinite(value))
        return fail(
            QStringLiteral("JSON has no NaN or infinity: cannot write the real %1").arg(value));
    char text[NumberText::kMaxRealLength];
    const QByteArrayView written(text, NumberText::formatReal(value, text));
    _out += written;
    // Without a point or an exponent it would read back as an integer.
    if (!written.contains('.') && !written.contains('e'))
        _out += ".0";
    return true;
}

void Writer::newLine()
{
    if (!_humanReadable)
        return;
    _out += '\n';
    _out.append(qMin(qsizetype(_stack.size()), kDeepestIndent) * kIndentWidth, ' ');
}

bool Writer::fail(const QString &message)
{
    _error = message;
    return false;
}

} // namespace

WriteResult JsonWriter::write(const PlistValue &value, bool humanReadable)
{
    return Writer(humanReadable).write(value);
}
