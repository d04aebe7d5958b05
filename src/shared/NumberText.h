#pragma once

#include <QByteArrayView>
#include <QtGlobal>

#include <charconv>
#include <limits>
#include <optional>

/// Number text that reads and writes the same in every locale: the integers
/// and reals of files, of the command line and of text typed into a value,
/// and the shortest text that reads back as the same number. A decimal point
/// is always '.', and no locale's digits or separators are taken. Pure
/// functions; safe on any thread.
class NumberText
{
public:
    enum class Status : quint8
    {
        Ok,
        Malformed,  // not a number of the expected form
        OutOfRange, // a number, but beyond what the value can hold
    };

    /// An integer as sign and magnitude, so that one form holds every signed
    /// and unsigned 64-bit value: from -2^63 up to 2^64 - 1.
    struct Integer
    {
        bool negative = false;
        quint64 magnitude = 0;

        /// Whether the value lies in the signed 64-bit range.
        bool isSigned() const { return magnitude <= (negative ? kMinSignedMagnitude : kMaxSigned); }
        /// The value, for one that `isSigned()`.
        qint64 toSigned() const { return negative ? qint64(0 - magnitude) : qint64(magnitude); }
    };

    /// The forms an integer may take besides `[+|-]digits`.
    enum IntegerForm : quint8
    {
        Decimal = 0,
        Hexadecimal = 1,     // also "0x" or "0X" and hexadecimal digits after the sign
        SpaceAroundSign = 2, // blanks, tabs and line ends before the sign and after it
    };

    static constexpr quint64 kMaxSigned = quint64(std::numeric_limits<qint64>::max());
    /// The magnitude of the most negative integer, -2^63.
    static constexpr quint64 kMinSignedMagnitude = kMaxSigned + 1;
    /// The longest text `formatInteger` writes: the 20 digits of 2^64 - 1, or
    /// a minus and 19 digits.
    static constexpr int kMaxIntegerLength = 20;
    /// The longest text `formatReal` writes ("-2.2250738585072014e-308").
    static constexpr int kMaxRealLength = 24;

    /// All of `text` as an integer: an optional sign, then decimal digits (or,
    /// with `Hexadecimal`, 0x and hexadecimal digits). OutOfRange below -2^63
    /// or above 2^64 - 1.
    static Status parseInteger(QByteArrayView text, int forms, Integer &out);
    /// All of `text` as a real: an optional sign, then decimal digits with an
    /// optional fraction and exponent, or "inf", "infinity" or "nan" in any
    /// case. Every NaN reads as the one quiet NaN. OutOfRange when the value
    /// rounds to an infinity or to zero; `out` then holds that.
    static Status parseReal(QByteArrayView text, double &out);

    /// The number a scanner reads at the start of `text`: white space skipped,
    /// then an optional sign and the longest decimal number there (digits,
    /// a fraction, an exponent where digits follow its 'e'); what follows is
    /// ignored. Out of range it saturates. None when no digit stands there.
    static std::optional<double> scanReal(QByteArrayView text);
    /// The same for an integer of decimal digits, saturating at the signed
    /// 64-bit limits.
    static std::optional<qint64> scanInteger(QByteArrayView text);

    /// Adds the digits of `base` (10 or 16) from `p` on to `magnitude`, and
    /// returns where they end; `overflow` is set once the value passes
    /// 2^64 - 1. For readers whose grammar finds the digits themselves.
    static const char *accumulateDigits(const char *p, const char *end, unsigned base,
                                        quint64 &magnitude, bool &overflow)
    {
        for (; p < end; ++p) {
            const unsigned digit = digitValue(*p);
            if (digit >= base)
                break;
            overflow = overflow || magnitude > (std::numeric_limits<quint64>::max() - digit) / base;
            magnitude = magnitude * base + digit;
        }
        return p;
    }
    /// The value of a decimal or hexadecimal digit (either case), or 16 for
    /// any other character.
    static unsigned digitValue(char c)
    {
        if (c >= '0' && c <= '9')
            return unsigned(c - '0');
        const unsigned lower = unsigned(c | 0x20) - 'a';
        return lower < 6 ? lower + 10 : 16;
    }

    /// Writes the decimal text of `value` at `out`; returns its end.
    static char *formatInteger(qint64 value, char *out)
    {
        return std::to_chars(out, out + kMaxIntegerLength, value).ptr;
    }
    static char *formatInteger(quint64 value, char *out)
    {
        return std::to_chars(out, out + kMaxIntegerLength, value).ptr;
    }
    /// Writes the shortest text that reads back as the same double ("0.1",
    /// "1e+300"; "inf", "-inf" and "nan" for the others); returns its end.
    static char *formatReal(double value, char *out);
};
