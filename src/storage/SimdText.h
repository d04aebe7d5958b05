#pragma once

#include <QtGlobal>

#include <array>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// The byte scans the readers and writers spend most of their time in, done
/// sixteen bytes a step where the processor allows, and Base64 encoded twelve
/// bytes a step where it has byte shuffles. Each function has a plain twin in
/// `Scalar` that gives the same result byte for byte; the vector versions
/// stand in for them where they can, and tests hold the two together. A scan
/// returns the first byte it stops at, or `end`. Pure functions; the inline
/// ones sit in this header so that a reader's loop keeps them in registers.
class SimdText
{
public:
    struct Scalar
    {
        static const char *skipSpace(const char *p, const char *end)
        {
            while (p < end && isSpace(*p))
                ++p;
            return p;
        }
        static const char *findMarkup(const char *p, const char *end, bool &nonAscii)
        {
            for (; p < end && *p != '<' && *p != '&'; ++p)
                nonAscii = nonAscii || uchar(*p) >= 0x80;
            return p;
        }
        static const char *findStringEnd(const char *p, const char *end, char quote, char lowest)
        {
            while (p < end && *p != quote && *p != '\\' && static_cast<signed char>(*p) >= lowest)
                ++p;
            return p;
        }
        static const char *skipAscii(const char *p, const char *end, bool nulStops)
        {
            while (p < end && uchar(*p) < 0x80 && (*p != 0 || !nulStops))
                ++p;
            return p;
        }
        static const char *findXmlSpecial(const char *p, const char *end)
        {
            while (p < end && !isXmlSpecial(*p))
                ++p;
            return p;
        }
        static char *encodeBase64(const uchar *in, qsizetype blocks, char *out);
    };

    /// The first byte that is not a blank, tab or line end.
    static const char *skipSpace(const char *p, const char *end)
    {
#ifdef __SSE2__
        while (end - p >= 16) {
            const __m128i v = load(p);
            const __m128i space = _mm_or_si128(_mm_or_si128(same(v, ' '), same(v, '\t')),
                                               _mm_or_si128(same(v, '\n'), same(v, '\r')));
            const unsigned other = ~unsigned(_mm_movemask_epi8(space)) & 0xFFFFu;
            if (other != 0)
                return p + __builtin_ctz(other);
            p += 16;
        }
#endif
        return Scalar::skipSpace(p, end);
    }

    /// The first '<' or '&'; `nonAscii` is set if a byte passed over is not ASCII.
    static const char *findMarkup(const char *p, const char *end, bool &nonAscii)
    {
#ifdef __SSE2__
        while (end - p >= 16) {
            const __m128i v = load(p);
            const int stops = _mm_movemask_epi8(_mm_or_si128(same(v, '<'), same(v, '&')));
            const int high = _mm_movemask_epi8(v);
            if (stops != 0) {
                const int n = __builtin_ctz(unsigned(stops));
                nonAscii = nonAscii || (unsigned(high) & ((1u << n) - 1)) != 0;
                return p + n;
            }
            nonAscii = nonAscii || high != 0;
            p += 16;
        }
#endif
        return Scalar::findMarkup(p, end, nonAscii);
    }

    /// Where a quoted string stops being plain ASCII that a reader takes as it
    /// stands: its quote, a backslash, a byte beyond ASCII, or a byte below
    /// `lowest` (a control character JSON wants escaped, or NUL).
    static const char *findStringEnd(const char *p, const char *end, char quote, char lowest)
    {
#ifdef __SSE2__
        while (end - p >= 16) {
            const __m128i v = load(p);
            // Signed: bytes beyond ASCII are negative, so below `lowest` too.
            const __m128i stops = _mm_or_si128(_mm_cmplt_epi8(v, _mm_set1_epi8(lowest)),
                                               _mm_or_si128(same(v, quote), same(v, '\\')));
            const int mask = _mm_movemask_epi8(stops);
            if (mask != 0)
                return p + __builtin_ctz(unsigned(mask));
            p += 16;
        }
#endif
        return Scalar::findStringEnd(p, end, quote, lowest);
    }

    /// The first byte beyond ASCII, or with `nulStops` also the first NUL.
    static const char *skipAscii(const char *p, const char *end, bool nulStops)
    {
#ifdef __SSE2__
        const __m128i zero = _mm_setzero_si128();
        while (end - p >= 16) {
            const __m128i v = load(p);
            const __m128i stops = nulStops ? _mm_or_si128(v, _mm_cmpeq_epi8(v, zero)) : v;
            const int mask = _mm_movemask_epi8(stops);
            if (mask != 0)
                return p + __builtin_ctz(unsigned(mask));
            p += 16;
        }
#endif
        return Scalar::skipAscii(p, end, nulStops);
    }

    /// The first byte XML text cannot hold as it is: & < > ' " or one beyond ASCII.
    static const char *findXmlSpecial(const char *p, const char *end)
    {
#ifdef __SSE2__
        while (end - p >= 16) {
            const __m128i v = load(p);
            __m128i hit = _mm_or_si128(same(v, '&'), same(v, '<'));
            hit = _mm_or_si128(hit, _mm_or_si128(same(v, '>'), same(v, '\'')));
            hit = _mm_or_si128(hit, same(v, '"'));
            const int mask = _mm_movemask_epi8(_mm_or_si128(hit, v)); // the sign bit: beyond ASCII
            if (mask != 0)
                return p + __builtin_ctz(unsigned(mask));
            p += 16;
        }
#endif
        return Scalar::findXmlSpecial(p, end);
    }

    /// Whether XML text cannot hold `c` as it is: & < > ' " or a byte beyond ASCII.
    static bool isXmlSpecial(char c)
    {
        return kXmlSpecial[uchar(c)];
    }

    /// Writes `blocks` groups of twelve bytes as sixteen Base64 digits each;
    /// returns the end of what was written. May read four bytes past the
    /// last block.
    static char *encodeBase64(const uchar *in, qsizetype blocks, char *out);

private:
    static bool isSpace(char c)
    {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r';
    }
    static constexpr std::array<bool, 256> kXmlSpecial = [] {
        std::array<bool, 256> table{};
        for (int c = 0x80; c < 256; ++c)
            table[size_t(c)] = true;
        for (const char c : {'&', '<', '>', '\'', '"'})
            table[uchar(c)] = true;
        return table;
    }();
#ifdef __SSE2__
    static __m128i load(const char *p)
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }
    static __m128i same(__m128i v, char c)
    {
        return _mm_cmpeq_epi8(v, _mm_set1_epi8(c));
    }
#endif
};
