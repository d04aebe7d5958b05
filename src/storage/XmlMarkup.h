#pragma once

#include "SimdText.h"
#include "StorageResult.h"

#include <QByteArrayView>
#include <QString>

#include <array>
#include <cstring>
#include <string>

/// The elements of an XML property list.
enum class XmlElement : quint8
{
    Plist,
    Dict,
    Array,
    Key,
    String,
    Integer,
    Real,
    True,
    False,
    Date,
    Data,
    Unknown,
};

/// A cursor over one UTF-8 XML document that reads its markup: white space,
/// comments, processing instructions, the prolog with its DOCTYPE and the
/// epilog, start and end tags with their attributes, and the content of leaf
/// elements with its entities, character references and CDATA. It keeps the
/// first failure with its line and column; after that it is not used. Does
/// not own the text. Invariant: the text's start <= at() <= end().
class XmlMarkup
{
public:
    /// A start tag as read: where it began, its name, and whether it was empty (`<x/>`).
    struct Tag
    {
        const char *at = nullptr;
        QByteArrayView name;
        XmlElement element = XmlElement::Unknown;
        bool empty = false;
    };

    /// The character content of a leaf element: a view into the document when
    /// it held no references or markup, else into the cursor's scratch buffer.
    struct Text
    {
        QByteArrayView bytes;
        const char *at = nullptr; // where the content began
        bool ascii = true;
        bool raw = true; // `bytes` lies in the document, so offsets map back
    };

    explicit XmlMarkup(QByteArrayView text)
        : _text(text), _p(text.data()), _end(text.data() + text.size())
    {}

    const char *at() const { return _p; }
    const char *end() const { return _end; }
    /// Moves on to `p`, which lies between here and the end.
    void moveTo(const char *p) { _p = p; }
    bool startsWith(const char *p, QByteArrayView prefix) const
    {
        return _end - p >= prefix.size() && std::memcmp(p, prefix.data(), prefix.size()) == 0;
    }

    // --- failures -------------------------------------------------------------

    /// Keeps a failure at `at` and gives false. Markup out of place at the end
    /// of the input means it was cut short.
    bool fail(const char *at, ReadError::Kind kind, const QString &message);
    const ReadError &error() const { return _error; }
    /// What stands at `at`, for "found ..." in messages.
    QString found(const char *at) const;
    qint64 lineOf(const char *at) const;
    /// A leaf's text in quotes, cut to 40 bytes, for messages.
    static QString quoted(const Text &text);
    static QByteArrayView nameOf(XmlElement element)
    {
        constexpr QByteArrayView kNames[] = {"plist", "dict", "array", "key",  "string", "integer",
                                             "real",  "true", "false", "date", "data"};
        return kNames[int(element)];
    }
    /// The element a name stands for, or Unknown.
    static XmlElement elementNamed(QByteArrayView name)
    {
        const XmlElement candidate = candidateFor(name);
        return candidate != XmlElement::Unknown && sameName(name, nameOf(candidate))
                   ? candidate
                   : XmlElement::Unknown;
    }
    static QString tagText(QByteArrayView name, bool closing = false);
    /// A blank, tab or line end.
    static bool isSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }
    /// Byte for byte: names are a few bytes long, so a loop beats a call to memcmp.
    static bool sameName(QByteArrayView a, QByteArrayView b)
    {
        if (a.size() != b.size())
            return false;
        for (qsizetype i = 0; i < a.size(); ++i) {
            if (a[i] != b[i])
                return false;
        }
        return true;
    }

    // --- markup -----------------------------------------------------------------

    /// Whether any white space was passed over.
    bool skipSpace()
    {
        const char *start = _p;
        _p = SimdText::skipSpace(_p, _end);
        return _p != start;
    }
    /// At "<!--".
    bool skipComment();
    /// At "<?".
    bool skipProcessingInstruction();
    /// Up to the root element's '<'.
    bool prolog();
    /// Comments, processing instructions and white space up to the end.
    bool epilog();
    /// At '<' before a name: the start tag and its attributes.
    bool startTag(Tag &tag)
    {
        tag.at = _p;
        const char *name = ++_p;
        const char *p = name; // a local, which the compiler keeps in a register
        while (p < _end && !kEndsName[static_cast<unsigned char>(*p)])
            ++p;
        _p = p;
        tag.name = QByteArrayView(name, _p - name);
        tag.element = elementNamed(tag.name);
        if (tag.element == XmlElement::Unknown)
            return unknownElement(tag);
        if (_p < _end && *_p == '>') {
            ++_p;
            return true;
        }
        return skipAttributes(tag);
    }
    /// At "</": the name and the closing '>'.
    bool endTag(QByteArrayView &name)
    {
        const char *start = _p + 2;
        const char *p = start;
        while (p < _end && !isSpace(*p) && *p != '>' && *p != '<')
            ++p;
        _p = p;
        name = QByteArrayView(start, _p - start);
        skipSpace();
        if (_p == _end || *_p != '>')
            return unclosedEndTag(name);
        ++_p;
        return true;
    }

    // --- leaf content ------------------------------------------------------------

    /// A leaf's content before any of it is read.
    Text emptyTextHere() const { return Text{QByteArrayView(_p, qsizetype(0)), _p, true, true}; }
    /// After a leaf's start tag: its content and end tag.
    bool readText(const Tag &tag, Text &text)
    {
        text = emptyTextHere();
        if (tag.empty)
            return true;
        bool nonAscii = false;
        const char *stop = SimdText::findMarkup(_p, _end, nonAscii);
        return finishText(tag, text, stop, nonAscii);
    }
    /// The content of a leaf from here, whose first markup is at `stop`;
    /// `nonAscii` tells whether a byte before it is beyond ASCII.
    bool finishText(const Tag &tag, Text &text, const char *stop, bool nonAscii)
    {
        if (_end - stop >= 2 && stop[0] == '<' && stop[1] == '/') {
            text.bytes = QByteArrayView(_p, stop - _p);
            text.ascii = !nonAscii;
            _p = stop;
            // Most end tags are exactly "</name>".
            if (const char *after = pastExactEndTag(stop, tag)) {
                _p = after;
                return true;
            }
            return closeLeaf(tag);
        }
        return readMixedText(tag, text, stop, nonAscii);
    }
    /// Just past `at` if "</name>" of `tag` stands there, else null.
    const char *pastExactEndTag(const char *at, const Tag &tag) const
    {
        const qsizetype size = tag.name.size();
        if (_end - at < size + 3 || at[0] != '<' || at[1] != '/' || at[size + 2] != '>' ||
            !sameName(QByteArrayView(at + 2, size), tag.name))
            return nullptr;
        return at + size + 3;
    }

private:
    // What ends an element name: white space, '>', '/' and '<'.
    static constexpr std::array<bool, 256> kEndsName = [] {
        std::array<bool, 256> table{};
        for (const char c : {' ', '\n', '\t', '\r', '>', '/', '<'})
            table[size_t(c)] = true;
        return table;
    }();

    // The only element a name of this length and these letters could be.
    static XmlElement candidateFor(QByteArrayView name)
    {
        switch (name.size()) {
        case 3:
            return XmlElement::Key;
        case 4:
            if (name[0] == 'r')
                return XmlElement::Real;
            if (name[0] == 't')
                return XmlElement::True;
            return name[3] == 't'   ? XmlElement::Dict
                   : name[3] == 'e' ? XmlElement::Date
                                    : XmlElement::Data;
        case 5:
            return name[0] == 'p'   ? XmlElement::Plist
                   : name[0] == 'a' ? XmlElement::Array
                                    : XmlElement::False;
        case 6:
            return XmlElement::String;
        case 7:
            return XmlElement::Integer;
        default:
            return XmlElement::Unknown;
        }
    }
    bool unknownElement(const Tag &tag);
    bool unclosedEndTag(QByteArrayView name);
    QByteArrayView nameAt(const char *p) const;
    bool skipPast(QByteArrayView terminator, const char *at, const QString &what);
    bool skipQuoted(const char *what);
    bool skipInternalSubset();
    bool skipDoctype();
    bool isXmlDeclaration(const char *p) const;
    bool skipAttributes(Tag &tag);
    bool reference(Text &text);
    bool closeLeaf(const Tag &tag);
    bool readMixedText(const Tag &tag, Text &text, const char *stop, bool nonAscii);

    QByteArrayView _text;
    const char *_p;
    const char *_end;
    std::string _scratch; // text with references, reused
    ReadError _error;
};
