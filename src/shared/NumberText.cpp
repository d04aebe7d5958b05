#include "NumberText.h"

#include <charconv>
#include <cmath>
#include <locale.h>
#include <string>

namespace {

// What the C library's scanners skip, in every locale.
bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Blanks, tabs and line ends: white space in the markup of a file.
bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

template <typename Skipped> const char *skip(const char *p, const char *end, Skipped skipped)
{
    while (p < end && skipped(*p))
        ++p;
    return p;
}

bool isDigit(const char *p, const char *end)
{
    return p < end && *p >= '0' && *p <= '9';
}

const char *skipDigits(const char *p, const char *end)
{
    while (isDigit(p, end))
        ++p;
    return p;
}

// The value of text the fast conversion found out of range: the infinity
// or zero (of the right sign) the C library rounds it to, in the C locale
// whatever the process's locale is.
double saturated(const char *p, const char *end)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    const std::string copy(p, end);
    return strtod_l(copy.c_str(), nullptr, cLocale);
}

} // namespace

NumberText::Status NumberText::parseInteger(QByteArrayView text, int forms, Integer &out)
{
    const char *p = text.data();
    const char *const end = p + text.size();
    const bool spaced = forms & SpaceAroundSign;
    if (spaced)
        p = skip(p, end, isBlank);
    out.negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+'))
        ++p;
    if (spaced)
        p = skip(p, end, isBlank);
    const bool hex = (forms & Hexadecimal) && end - p >= 2 && p[0] == '0' && (p[1] | 0x20) == 'x';
    if (hex)
        p += 2;
    out.magnitude = 0;
    bool overflow = false;
    const char *digits = p;
    p = accumulateDigits(p, end, hex ? 16 : 10, out.magnitude, overflow);
    if (p == digits || p != end)
        return Status::Malformed;
    if (overflow || (out.negative && out.magnitude > kMinSignedMagnitude))
        return Status::OutOfRange;
    return Status::Ok;
}

NumberText::Status NumberText::parseReal(QByteArrayView text, double &out)
{
    const char *p = text.data();
    const char *const end = p + text.size();
    // The conversion takes a minus itself, but no plus.
    if (p < end && *p == '+') {
        ++p;
        if (p < end && (*p == '-' || *p == '+'))
            return Status::Malformed;
    }
    const auto [stop, error] = std::from_chars(p, end, out);
    if (p == end || stop != end)
        return Status::Malformed;
    if (error == std::errc::result_out_of_range) {
        out = saturated(p, end);
        return Status::OutOfRange;
    }
    if (error != std::errc())
        return Status::Malformed;
    if (std::isnan(out))
        out = std::numeric_limits<double>::quiet_NaN();
    return Status::Ok;
}

std::optional<double> NumberText::scanReal(QByteArrayView text)
{
    const char *const begin = skip(text.data(), text.data() + text.size(), isSpace);
    const char *const end = text.data() + text.size();
    const char *p = begin;
    if (p < end && (*p == '-' || *p == '+'))
        ++p;
    const char *whole = p;
    p = skipDigits(p, end);
    bool digits = p > whole;
    if (p < end && *p == '.' && isDigit(p + 1, end)) {
        p = skipDigits(p + 1, end);
        digits = true;
    }
    if (!digits)
        return std::nullopt;
    if (p < end && (*p | 0x20) == 'e') {
        const char *exponent = p + 1;
        if (exponent < end && (*exponent == '-' || *exponent == '+'))
            ++exponent;
        if (isDigit(exponent, end))
            p = skipDigits(exponent, end);
    }
    double value = 0;
    parseReal(QByteArrayView(begin, p), value); // the scan leaves only what it takes
    return value;
}

std::optional<qint64> NumberText::scanInteger(QByteArrayView text)
{
    const char *p = skip(text.data(), text.data() + text.size(), isSpace);
    const char *const end = text.data() + text.size();
    const bool negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+'))
        ++p;
    const char *digits = p;
    quint64 magnitude = 0;
    bool overflow = false;
    p = accumulateDigits(p, end, 10, magnitude, overflow);
    if (p == digits)
        return std::nullopt;
    if (negative)
        return overflow || magnitude > kMinSignedMagnitude ? std::numeric_limits<qint64>::min()
                                                           : qint64(0 - magnitude);
    return overflow || magnitude > kMaxSigned ? std::numeric_limits<qint64>::max()
                                              : qint64(magnitude);
}

char *NumberText::formatReal(double value, char *out)
{
    return std::to_chars(out, out + kMaxRealLength, value).ptr;
}
