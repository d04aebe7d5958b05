#include "KZDataAdditions.h"

#include <QStringDecoder>

namespace {

int hexDigitValue(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

} // namespace

QString hexString(QByteArrayView bytes)
{
    return hexStringWithBytes(bytes, 0, false);
}

QString hexStringWithBytes(QByteArrayView bytes, int padInterval, bool prepend0x)
{
    static constexpr char16_t kDigits[] = u"0123456789abcdef";
    const qsizetype blanks =
        padInterval > 0 && !bytes.isEmpty() ? (bytes.size() - 1) / padInterval : 0;
    QString out((prepend0x ? 2 : 0) + bytes.size() * 2 + blanks, Qt::Uninitialized);
    QChar *at = out.data();
    if (prepend0x) {
        *at++ = u'0';
        *at++ = u'x';
    }
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (padInterval > 0 && i > 0 && i % padInterval == 0)
            *at++ = u' ';
        const auto b = static_cast<unsigned char>(bytes[i]);
        *at++ = kDigits[b >> 4];
        *at++ = kDigits[b & 15];
    }
    return out;
}

std::optional<QByteArray> hexStringData(QStringView text)
{
    return hexStringDataWithPadding(text, false);
}

std::optional<QByteArray> hexStringDataWithPadding(QStringView text, bool padded)
{
    if (padded) {
        text = text.trimmed();
        if (text.startsWith(u"0x") || text.startsWith(u"0X"))
            text = text.mid(2);
    }
    QByteArray out;
    out.reserve(text.size() / 2);
    int high = -1;
    for (const QChar c : text) {
        if (padded && isBlank(c.unicode()))
            continue;
        const int v = hexDigitValue(c.unicode());
        if (v < 0)
            return std::nullopt;
        if (high < 0) {
            high = v;
            continue;
        }
        out.append(char((high << 4) | v));
        high = -1;
    }
    if (high >= 0)
        return std::nullopt;
    return out;
}

std::optional<QByteArray> dataFromBase64String(QStringView text)
{
    QByteArray compact;
    compact.reserve(text.size());
    for (const QChar c : text) {
        if (isBlank(c.unicode()))
            continue;
        if (c.unicode() > 0x7f)
            return std::nullopt;
        compact.append(char(c.unicode()));
    }
    auto decoded = QByteArray::fromBase64Encoding(compact, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return std::move(decoded.decoded);
}

std::optional<QString> stringValue(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}
