#include "PlainTextScan.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

const char *PlainTextScan::find(const char *p, const char *end, char quote, char lowest)
{
#ifdef __SSE2__
    const __m128i quotes = _mm_set1_epi8(quote);
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i low = _mm_set1_epi8(lowest);
    while (end - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        // Signed: bytes beyond ASCII are negative, so below `lowest` too.
        const __m128i stops =
            _mm_or_si128(_mm_cmplt_epi8(v, low),
                         _mm_or_si128(_mm_cmpeq_epi8(v, quotes), _mm_cmpeq_epi8(v, backslash)));
        const int mask = _mm_movemask_epi8(stops);
        if (mask != 0)
            return p + __builtin_ctz(unsigned(mask));
        p += 16;
    }
#endif
    while (p < end && *p != quote && *p != '\\' && static_cast<signed char>(*p) >= lowest)
        ++p;
    return p;
}
