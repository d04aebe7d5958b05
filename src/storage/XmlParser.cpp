#include "XmlParser.h"

#include "ContainerBuilder.h"
#include "SimdText.h"
#include "StringCache.h"
#include "UnicodeText.h"
#include "XmlData.h"
#include "XmlDate.h"
#include "XmlMarkup.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <limits>

namespace {

// A dictionary of just "CF$UID" and a non-negative integer is a keyed-archiver UID.
PlistValue finishDictionary(const PlistDictionary &dict)
{
    if (dict.count() != 1)
        return dict;
    const PlistValue &value = dict.valueAt(0);
    const bool uid =
        value.isInteger() && (value.isUnsigned() || value.toInteger() >= 0) &&
        QAnyStringView::equal(dict.keyValueAt(0).stringView(), QLatin1StringView("CF$UID"));
    return uid ? PlistValue::uid(value.toUnsigned()) : PlistValue(dict);
}

/// One pass over one document; see XmlParser.
class Parser
{
public:
    explicit Parser(QByteArrayView text) : _markup(text) {}

    ReadResult run()
    {
        if (!_markup.prolog() || !body() || !_markup.epilog())
            return ReadResult::failure(_markup.error());
        return ReadResult::success(std::move(_root), ADPlistFormatXML);
    }

private:
    /// An open element that holds others: <dict>, <array>, or <plist>, which
    /// is built as an array of its one value.
    struct Opened
    {
        XmlElement element;
        const char *at;
    };
    using Builder = ContainerBuilder<Opened>;
    using Tag = XmlMarkup::Tag;
    using Text = XmlMarkup::Text;

    bool fail(const char *at, ReadError::Kind kind, const QString &message)
    {
        return _markup.fail(at, kind, message);
    }

    // The innermost open element, for messages.

    QString opened() const
    {
        return QStringLiteral("%1 opened on line %2")
            .arg(XmlMarkup::tagText(XmlMarkup::nameOf(_open.info().element)))
            .arg(_markup.lineOf(_open.info().at));
    }

    bool makeString(const Text &text, PlistValue &value)
    {
        if (quint64(text.bytes.size()) > std::numeric_limits<quint32>::max())
            return fail(text.at, ReadError::Kind::TooLarge,
                        QStringLiteral("a string longer than 4 GB"));
        if (text.ascii) {
            value = _strings.ascii(text.bytes.data(), text.bytes.size());
            return true;
        }
        _wide.resize(size_t(text.bytes.size()));
        const char *p = text.bytes.data();
        const char16_t *end = UnicodeText::toUtf16(p, p + text.bytes.size(), _wide.data());
        value = PlistValue::fromUtf16(_wide.data(), end - _wide.data());
        return true;
    }

    // Decimal or 0x hexadecimal, with a sign; white space may lead and follow

    // the sign, as the platform's reader allows.

    bool makeInteger(const Text &text, PlistValue &value)
    {
        NumberText::Integer integer;
        const int forms = NumberText::Hexadecimal | NumberText::SpaceAroundSign;
        switch (NumberText::parseInteger(text.bytes, forms, integer)) {
        case NumberText::Status::Ok:
            value =
                integer.negative ? PlistValue(integer.toSigned()) : PlistValue(integer.magnitude);
            return true;
        case NumberText::Status::OutOfRange:
            return fail(text.at, ReadError::Kind::OutOfRange,
                        QStringLiteral("integer %1 is out of the 64-bit range")
                            .arg(XmlMarkup::quoted(text)));
        case NumberText::Status::Malformed:
            break;
        }
        return fail(text.at, ReadError::Kind::Number,
                    QStringLiteral("expected an integer in <integer>, found %1")
                        .arg(XmlMarkup::quoted(text)));
    }

    // White space may lead, not follow; a real too large or too small for a

    // double becomes the infinity or zero it rounds to.

    bool makeReal(const Text &text, PlistValue &value)
    {
        const char *first =
            SimdText::skipSpace(text.bytes.data(), text.bytes.data() + text.bytes.size());
        double d = 0;
        const QByteArrayView number(first, text.bytes.data() + text.bytes.size());
        if (NumberText::parseReal(number, d) == NumberText::Status::Malformed)
            return fail(text.at, ReadError::Kind::Number,
                        QStringLiteral("expected a number in <real>, found %1")
                            .arg(XmlMarkup::quoted(text)));
        value = PlistValue(d);
        return true;
    }

    bool makeLeaf(const Tag &tag, const Text &text, PlistValue &value)
    {
        switch (tag.element) {
        case XmlElement::Key:
        case XmlElement::String:
            return makeString(text, value);
        case XmlElement::Integer:
            return makeInteger(text, value);
        case XmlElement::Real:
            return makeReal(text, value);
        case XmlElement::True:
        case XmlElement::False:
            if (SimdText::skipSpace(text.bytes.data(), text.bytes.data() + text.bytes.size()) !=
                text.bytes.data() + text.bytes.size())
                return fail(text.at, ReadError::Kind::Syntax,
                            QStringLiteral("%1 holds text: %2")
                                .arg(XmlMarkup::tagText(tag.name), XmlMarkup::quoted(text)));
            value = PlistValue(tag.element == XmlElement::True);
            return true;
        case XmlElement::Date: {
            const std::optional<double> seconds = XmlDate::parse(text.bytes);
            if (!seconds)
                return fail(text.at, ReadError::Kind::Date,
                            QStringLiteral("expected a date like "
                                           "2001-01-01T00:00:00Z in <date>, found %1")
                                .arg(XmlMarkup::quoted(text)));
            value = PlistValue::date(*seconds);
            return true;
        }
        default:
            break;
        }
        return false;
    }

    void deliver(PlistValue value)
    {
        if (_open.isEmpty()) {
            _root = std::move(value);
            _done = true;
            return;
        }
        _open.add(std::move(value));
    }

    // Whether the start tag may stand where it is.

    bool placeAllowed(const Tag &tag)
    {
        if (_open.isEmpty())
            return tag.element != XmlElement::Key ||
                   fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("<key> stands outside a <dict>"));
        const XmlElement top = _open.info().element;
        if (top == XmlElement::Dict) {
            const bool wantsKey = _open.count() % 2 == 0;
            if (wantsKey == (tag.element == XmlElement::Key))
                return true;
            if (wantsKey)
                return fail(tag.at, ReadError::Kind::Structure,
                            QStringLiteral("expected <key> in <dict>, found %1")
                                .arg(XmlMarkup::tagText(tag.name)));
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("key \"%1\" has no value: expected a value, found "
                                       "<key>")
                            .arg(_open.lastKey().toString()));
        }
        if (tag.element == XmlElement::Key)
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("expected a value in %1, found <key>")
                            .arg(XmlMarkup::tagText(XmlMarkup::nameOf(top))));
        if (tag.element == XmlElement::Plist)
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("<plist> may only be the root element"));
        if (top == XmlElement::Plist && _open.count() > 0)
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("<plist> holds more than one value: found %1")
                            .arg(XmlMarkup::tagText(tag.name)));
        return true;
    }

    bool open(const Tag &tag)
    {
        if (!placeAllowed(tag))
            return false;
        switch (tag.element) {
        case XmlElement::Plist:
            if (tag.empty)
                return fail(tag.at, ReadError::Kind::Structure,
                            QStringLiteral("<plist> holds no value"));
            _open.open(Builder::Kind::Array, {XmlElement::Plist, tag.at});
            return true;
        case XmlElement::Dict:
            if (tag.empty)
                deliver(PlistDictionary::create());
            else
                _open.open(Builder::Kind::Dictionary, {XmlElement::Dict, tag.at});
            return true;
        case XmlElement::Array:
            if (tag.empty)
                deliver(PlistArray::create());
            else
                _open.open(Builder::Kind::Array, {XmlElement::Array, tag.at});
            return true;
        case XmlElement::Data: {
            PlistValue value;
            if (!XmlData::read(_markup, tag, value))
                return false;
            deliver(std::move(value));
            return true;
        }
        default: {
            Text text;
            PlistValue value;
            if (!_markup.readText(tag, text) || !makeLeaf(tag, text, value))
                return false;
            deliver(std::move(value)); // a key goes into its dictionary like a value
            return true;
        }
        }
    }

    bool close()
    {
        const char *at = _markup.at();
        QByteArrayView name;
        if (!_markup.endTag(name))
            return false;
        const XmlElement element = _open.info().element;
        if (!XmlMarkup::sameName(name, XmlMarkup::nameOf(element)))
            return fail(
                at, ReadError::Kind::MismatchedTag,
                QStringLiteral("%1 closes %2").arg(XmlMarkup::tagText(name, true), opened()));
        if (element == XmlElement::Dict && _open.count() % 2 != 0)
            return fail(at, ReadError::Kind::Structure,
                        QStringLiteral("key \"%1\" has no value: expected a value, found %2")
                            .arg(_open.lastKey().toString(), XmlMarkup::tagText(name, true)));
        if (element == XmlElement::Plist && _open.count() == 0)
            return fail(at, ReadError::Kind::Structure, QStringLiteral("<plist> holds no value"));
        const PlistValue value = _open.close();
        if (element == XmlElement::Dict)
            deliver(finishDictionary(value.toDictionary()));
        else if (element == XmlElement::Plist)
            deliver(value.toArray().at(0));
        else
            deliver(value);
        return true;
    }

    // "<!" inside a container: only a comment may stand there.

    bool markupInContainer()
    {
        const char *at = _markup.at();
        if (_markup.startsWith(at, "<!--"))
            return _markup.skipComment();
        if (_markup.startsWith(at, "<!DOCTYPE"))
            return fail(at, ReadError::Kind::Syntax,
                        QStringLiteral("a DOCTYPE must come before the root element"));
        return fail(at, ReadError::Kind::Syntax,
                    QStringLiteral("%1 is not allowed in %2")
                        .arg(_markup.found(at),
                             XmlMarkup::tagText(XmlMarkup::nameOf(_open.info().element))));
    }

    bool body()
    {
        while (!_done) {
            if (!_open.isEmpty()) {
                _markup.skipSpace();
                const char *at = _markup.at();
                if (at == _markup.end())
                    return fail(at, ReadError::Kind::Truncated,
                                QStringLiteral("unexpected end of the input: %1 is not closed")
                                    .arg(opened()));
                if (*at != '<' || _markup.end() - at < 2)
                    return fail(
                        at, ReadError::Kind::Syntax,
                        QStringLiteral("text is not allowed in %1: found %2")
                            .arg(XmlMarkup::tagText(XmlMarkup::nameOf(_open.info().element)),
                                 _markup.found(at)));
            }
            bool ok;
            switch (_markup.at()[1]) {
            case '/':
                ok = close();
                break;
            case '!':
                ok = markupInContainer();
                break;
            case '?':
                ok = _markup.skipProcessingInstruction();
                break;
            default: {
                Tag tag;
                ok = _markup.startTag(tag) && open(tag);
                break;
            }
            }
            if (!ok)
                return false;
        }
        return true;
    }

    XmlMarkup _markup;
    Builder _open;
    PlistValue _root;
    bool _done = false;
    StringCache _strings;
    std::u16string _wide; // non-ASCII text as UTF-16, reused
};

} // namespace

ReadResult XmlParser::parse(QByteArrayView utf8)
{
    return Parser(utf8).run();
}
