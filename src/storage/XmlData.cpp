#include "XmlData.h"

#include "SimdText.h"
#include "SizeThreshold.h"
#include "XmlBase64.h"

namespace {

// Data whose content runs past this many bytes counts as large.
constexpr qsizetype kLargeData = sizeThreshold(64 * 1024, 64);

bool decode(XmlMarkup &markup, const XmlMarkup::Text &text, PlistValue &value)
{
    QByteArray bytes;
    qsizetype errorAt = 0;
    if (XmlBase64::decode(text.bytes, bytes, errorAt)) {
        value = PlistValue::data(bytes);
        return true;
    }
    const char *at = text.raw ? text.at + errorAt : text.at;
    if (errorAt == text.bytes.size())
        return markup.fail(at, ReadError::Kind::Data,
                           QStringLiteral("Base64 in <data> ends in the middle of a byte"));
    return markup.fail(
        at, ReadError::Kind::Data,
        QStringLiteral("expected Base64 in <data>, found %1")
            .arg(u'"' + QString::fromUtf8(text.bytes.sliced(errorAt).first(1)) + u'"'));
}

// Plain Base64 closed by its end tag, or false with nothing read.
bool readLarge(XmlMarkup &markup, const XmlMarkup::Tag &tag, PlistValue &value)
{
    const char *start = markup.at();
    QByteArray bytes;
    qsizetype end = 0;
    if (!XmlBase64::decodePrefix(QByteArrayView(start, markup.end()), bytes, end))
        return false;
    const char *after = markup.pastExactEndTag(start + end, tag);
    if (!after)
        return false;
    markup.moveTo(after);
    bytes.squeeze(); // the last step of growth may have left room
    value = PlistValue::data(bytes);
    return true;
}

} // namespace

bool XmlData::read(XmlMarkup &markup, const XmlMarkup::Tag &tag, PlistValue &value)
{
    XmlMarkup::Text text;
    if (tag.empty)
        return markup.readText(tag, text) && decode(markup, text, value);
    text = markup.emptyTextHere();
    const char *start = markup.at();
    const char *end = markup.end();
    const char *limit = end - start > kLargeData ? start + kLargeData : end;
    bool nonAscii = false;
    const char *stop = SimdText::findMarkup(start, limit, nonAscii);
    if (stop == limit && limit != end) {
        if (readLarge(markup, tag, value))
            return true;
        stop = SimdText::findMarkup(limit, end, nonAscii);
    }
    return markup.finishText(tag, text, stop, nonAscii) && decode(markup, text, value);
}
