#include "BackslashEscapes.h"

namespace {

// Every letter any format takes, and the unit it stands for.
constexpr std::string_view kLetters = "\"\\/abfnrtv";
constexpr char16_t kUnits[] = u"\"\\/\a\b\f\n\r\t\v";

} // namespace

int BackslashEscapes::unitFor(char letter, std::string_view letters)
{
    if (letters.find(letter) == std::string_view::npos)
        return -1;
    return kUnits[kLetters.find(letter)];
}

char BackslashEscapes::letterFor(char16_t unit, std::string_view letters)
{
    for (const char letter : letters) {
        if (kUnits[kLetters.find(letter)] == unit)
            return letter;
    }
    return 0;
}

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
