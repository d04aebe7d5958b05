#pragma once

#include <QByteArray>

#include <string_view>

/// The backslash escapes of C that the text formats read and write: a letter
/// for a quote, a backslash or a control character, and a letter with four
/// hexadecimal digits for any UTF-16 unit. Each format reads and writes its
/// own set of the letters `"`, `\`, `/`, `a`, `b`, `f`, `n`, `r`, `t` and `v`.
/// Pure functions.
class BackslashEscapes
{
public:
    /// The unit that `letter` after a backslash stands for, if it is one of
    /// `letters`, or -1.
    static int unitFor(char letter, std::string_view letters)
    {
        if (letters.find(letter) == std::string_view::npos)
            return -1;
        return kUnits[kLetters.find(letter)];
    }
    /// The letter that stands for `unit` after a backslash, if it is one of
    /// `letters`, or 0.
    static char letterFor(char16_t unit, std::string_view letters)
    {
        for (const char letter : letters) {
            if (kUnits[kLetters.find(letter)] == unit)
                return letter;
        }
        return 0;
    }
    /// Appends `\`, the letter for `unit` from `letters` when there is one,
    /// else `marker` and the unit's four hexadecimal digits (lower case).
    static void append(QByteArray &out, char16_t unit, std::string_view letters, char marker);

private:
    // Every letter any format takes, and the unit it stands for.
    static constexpr std::string_view kLetters = "\"\\/abfnrtv";
    static constexpr char16_t kUnits[] = u"\"\\/\a\b\f\n\r\t\v";
};
