#include "BackslashEscapes.h"

void BackslashEscapes::append(QByteArray &out, char16_t unit, std::string_view letters, char marker)
{
    static constexpr char kHexDigits[] = "0123456789abcdef";
    if (const char letter = letterFor(unit, letters)) {
        const char escape[] = {'\\', letter};
        out.append(escape, 2);
        return;
    }
    const char escape[] = {'\\',
                           marker,
                           kHexDigits[unit >> 12],
                           kHexDigits[(unit >> 8) & 0xF],
                           kHexDigits[(unit >> 4) & 0xF],
                           kHexDigits[unit & 0xF]};
    out.append(escape, 6);
}
