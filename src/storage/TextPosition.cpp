#include "TextPosition.h"

TextPosition TextPosition::at(QByteArrayView text, qint64 offset)
{
    TextPosition position;
    position.advance(text, 0, offset);
    return position;
}

void TextPosition::advance(QByteArrayView text, qint64 from, qint64 to)
{
    const qint64 end = qBound<qint64>(0, to, text.size());
    for (qint64 i = qMax<qint64>(from, 0); i < end; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == '\n' || (c == '\r' && (i + 1 >= text.size() || text[i + 1] != '\n'))) {
            ++line;
            column = 1;
        } else if ((c & 0xC0) != 0x80 && c != '\r') {
            ++column; // continuation bytes belong to the character before
        }
    }
}
