#include "AsciiWriter.h"

#include "AsciiDate.h"
#include "BackslashEscapes.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <array>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace {

constexpr int kIndentWidth = 4;
// Deeper levels stay at this indentation, so that the text of a value nested
// 100,000 deep grows with its depth, not with the square of it.
constexpr qsizetype kDeepestIndent = 32;
constexpr char kHexDigits[] = "0123456789abcdef";

// What may stand unquoted and reads back as the same string everywhere.
constexpr std::array<bool, 128> makeUnquoted()
{
    std::array<bool, 128> unquoted{};
    for (int c = 'a'; c <= 'z'; ++c)
        unquoted[c] = true;
    for (int c = 'A'; c <= 'Z'; ++c)
        unquoted[c] = true;
    for (int c = '0'; c <= '9'; ++c)
        unquoted[c] = true;
    for (const char c : std::string_view("_$/:.-"))
        unquoted[uchar(c)] = true;
    return unquoted;
}

constexpr std::array<bool, 128> kUnquoted = makeUnquoted();

template <typename Unit> bool needsQuotes(const Unit *units, qsizetype size)
{
    if (size == 0)
        return true;
    // "//" or "/*" would start a comment.
    if (size >= 2 && units[0] == '/' && (units[1] == '/' || units[1] == '*'))
        return true;
    for (qsizetype i = 0; i < size; ++i) {
        if (units[i] >= 128 || !kUnquoted[units[i]])
            return true;
    }
    return false;
}

void appendEscape(QByteArray &out, char16_t c)
{
    constexpr std::string_view kLetters = "\"\\abfnrtv";
    if ((c < 0x20 || c == 0x7F) && !BackslashEscapes::letterFor(c, kLetters)) {
        // Always three digits, so that a digit after it is not taken in.
        const char octal[] = {'\\', char('0' + (c >> 6)), char('0' + ((c >> 3) & 7)),
                              char('0' + (c & 7))};
        out.append(octal, 4);
        return;
    }
    BackslashEscapes::append(out, c, kLetters, 'U');
}

template <typename Unit> void appendString(QByteArray &out, const Unit *units, qsizetype size)
{
    if (!needsQuotes(units, size)) {
        for (qsizetype i = 0; i < size; ++i)
            out += char(units[i]);
        return;
    }
    out += '"';
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = units[i];
        if (c >= 0x20 && c < 0x7F && c != '"' && c != '\\')
            out += char(c);
        else
            appendEscape(out, c);
    }
    out += '"';
}

void appendString(QByteArray &out, QAnyStringView text)
{
    text.visit([&out](auto view) {
        using View = decltype(view);
        if constexpr (std::is_same_v<View, QStringView>)
            appendString(out, view.utf16(), view.size());
        else if constexpr (std::is_same_v<View, QLatin1StringView>)
            appendString(out, reinterpret_cast<const uchar *>(view.data()), view.size());
        else
            appendString(out, QAnyStringView(view.toString()));
    });
}

void appendData(QByteArray &out, QByteArrayView data)
{
    out += '<';
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (i > 0 && i % 4 == 0)
            out += ' ';
        const auto byte = uchar(data[i]);
        const char digits[] = {kHexDigits[byte >> 4], kHexDigits[byte & 0xF]};
        out.append(digits, 2);
    }
    out += '>';
}

template <typename Integer> QByteArray integerText(Integer value)
{
    char text[NumberText::kMaxIntegerLength];
    return QByteArray(text, NumberText::formatInteger(value, text) - text);
}

class Writer
{
public:
    WriteResult write(const PlistValue &root);

private:
    enum class Written
    {
        Failed,
        Leaf,
        Opened,
    };
    struct Frame
    {
        PlistArray array;
        PlistDictionary dictionary;
        qsizetype index = 0;
        qsizetype count = 0;
        const void *identity = nullptr; // of a container on the open path
    };

    Written writeValue(const PlistValue &value);
    Written open(Frame frame, const void *identity, char opener);
    bool writeLeaf(const PlistValue &value);
    void endElement();
    void indent(qsizetype level) { _out.append(qMin(level, kDeepestIndent) * kIndentWidth, ' '); }
    Written fail(const QString &message);

    QByteArray _out;
    std::vector<Frame> _stack;
    std::unordered_set<const void *> _path;
    QString _error;
};

WriteResult Writer::write(const PlistValue &root)
{
    Written written = writeValue(root);
    while (written != Written::Failed && !_stack.empty()) {
        Frame &frame = _stack.back();
        if (frame.index == frame.count) {
            const char closer = frame.dictionary.isNull() ? ')' : '}';
            _path.erase(frame.identity);
            _stack.pop_back();
            indent(qsizetype(_stack.size()));
            _out += closer;
            endElement();
            continue;
        }
        indent(qsizetype(_stack.size()));
        const qsizetype i = frame.index++;
        PlistValue value;
        if (frame.dictionary.isNull()) {
            value = frame.array.at(i);
        } else {
            appendString(_out, frame.dictionary.keyValueAt(i).stringView());
            _out += " = ";
            value = frame.dictionary.valueAt(i);
        }
        written = writeValue(value);
        if (written == Written::Leaf)
            endElement();
    }
    if (written == Written::Failed)
        return WriteResult::failure(_error);
    _out += '\n';
    return WriteResult::success(_out);
}

Writer::Written Writer::writeValue(const PlistValue &value)
{
    if (value.isArray()) {
        const PlistArray array = value.toArray();
        if (array.isEmpty()) {
            _out += "()";
            return Written::Leaf;
        }
        return open({array, {}, 0, array.count()}, &array.at(0), '(');
    }
    if (value.isDictionary()) {
        const PlistDictionary dictionary = value.toDictionary();
        if (dictionary.isEmpty()) {
            _out += "{}";
            return Written::Leaf;
        }
        return open({{}, dictionary, 0, dictionary.count()}, &dictionary.keyValueAt(0), '{');
    }
    return writeLeaf(value) ? Written::Leaf : Written::Failed;
}

Writer::Written Writer::open(Frame frame, const void *identity, char opener)
{
    if (!_path.insert(identity).second)
        return fail(QStringLiteral("an array or dictionary contains itself"));
    frame.identity = identity;
    _stack.push_back(std::move(frame));
    _out += opener;
    _out += '\n';
    return Written::Opened;
}

bool Writer::writeLeaf(const PlistValue &value)
{
    switch (value.kind()) {
    case PlistValue::Kind::String:
        appendString(_out, value.stringView());
        return true;
    case PlistValue::Kind::Number:
        if (value.isReal()) {
            char text[NumberText::kMaxRealLength];
            const char *end = NumberText::formatReal(value.toReal(), text);
            appendString(_out, QLatin1StringView(text, end));
        } else {
            _out += value.isUnsigned() ? integerText(value.toUnsigned())
                                       : integerText(value.toInteger());
        }
        return true;
    case PlistValue::Kind::Boolean:
        _out += value.toBool() ? '1' : '0';
        return true;
    case PlistValue::Kind::Data:
        appendData(_out, value.dataView());
        return true;
    case PlistValue::Kind::Date: {
        const std::optional<QByteArray> text = AsciiDate::format(value.toDate());
        if (!text) {
            fail(QStringLiteral("the date %1 is too far off to write").arg(value.toDate()));
            return false;
        }
        _out += '"' + *text + '"';
        return true;
    }
    case PlistValue::Kind::Uid:
        _out += "{\"CF$UID\" = " + integerText(value.toUid()) + ";}";
        return true;
    case PlistValue::Kind::Null:
        fail(QStringLiteral("the old-style text form has no null value"));
        return false;
    default:
        fail(QStringLiteral("there is no value to write"));
        return false;
    }
}

// What follows an element of the innermost open container.
void Writer::endElement()
{
    if (_stack.empty())
        return;
    const Frame &frame = _stack.back();
    if (!frame.dictionary.isNull())
        _out += ";\n";
    else
        _out += frame.index < frame.count ? ",\n" : "\n";
}

Writer::Written Writer::fail(const QString &message)
{
    _error = message;
    return Written::Failed;
}

} // namespace

WriteResult AsciiWriter::write(const PlistValue &value)
{
    return Writer().write(value);
}
