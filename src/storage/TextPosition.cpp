#include "TextPosition.h"

TextPosition TextPosition::at(QByteArrayView text, qint64 offset)
{
    TextPosition position;
    const qint64 end = qBound<qint64>(0, offset, text.size());
    for (qint64 i = 0; i < end; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == '\n' || (c == '\r' && (i + 1 >= text.size() || text[i + 1] != '\n'))) {
            ++position.line;
            position.column = 1;
        } else if ((c & 0xC0) != 0x80 && c != '\r') {
            ++position.column; // continuation bytes belong to the character before
        }
    }
    return position;
}
