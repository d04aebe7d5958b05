#include "SimdText.h"

#if defined(__x86_64__) || defined(__i386__)
#include <tmmintrin.h>
#endif

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

#if defined(__x86_64__) || defined(__i386__)
// Four groups (twelve bytes, sixteen digits) a step with byte shuffles, after
// Wojciech Mula's method: spread the 6-bit fields into bytes, then map each
// range of the alphabet with one table lookup and an add. Reads sixteen bytes.
__attribute__((target("ssse3"))) char *encodeWithShuffles(const uchar *in, qsizetype blocks,
                                                          char *out)
{
    for (; blocks > 0; --blocks, in += 12, out += 16) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
        v = _mm_shuffle_epi8(v, _mm_set_epi8(10, 11, 9, 10, 7, 8, 6, 7, 4, 5, 3, 4, 1, 2, 0, 1));
        const __m128i high = _mm_mulhi_epu16(_mm_and_si128(v, _mm_set1_epi32(0x0fc0fc00)),
                                             _mm_set1_epi32(0x04000040));
        const __m128i low = _mm_mullo_epi16(_mm_and_si128(v, _mm_set1_epi32(0x003f03f0)),
                                            _mm_set1_epi32(0x01000010));
        const __m128i fields = _mm_or_si128(high, low);
        __m128i range = _mm_subs_epu8(fields, _mm_set1_epi8(51));
        range = _mm_or_si128(
            range, _mm_and_si128(_mm_cmpgt_epi8(_mm_set1_epi8(26), fields), _mm_set1_epi8(13)));
        const __m128i offsets =
            _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                          '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
        const __m128i digits = _mm_add_epi8(_mm_shuffle_epi8(offsets, range), fields);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out), digits);
    }
    return out;
}

const bool kShuffles = __builtin_cpu_supports("ssse3");
#endif

} // namespace

char *SimdText::Scalar::encodeBase64(const uchar *in, qsizetype blocks, char *out)
{
    for (qsizetype group = 0; group < blocks * 4; ++group, in += 3) {
        const quint32 v = (quint32(in[0]) << 16) | (quint32(in[1]) << 8) | in[2];
        *out++ = kAlphabet[v >> 18];
        *out++ = kAlphabet[(v >> 12) & 63];
        *out++ = kAlphabet[(v >> 6) & 63];
        *out++ = kAlphabet[v & 63];
    }
    return out;
}

char *SimdText::encodeBase64(const uchar *in, qsizetype blocks, char *out)
{
#if defined(__x86_64__) || defined(__i386__)
    if (kShuffles)
        return encodeWithShuffles(in, blocks, out);
#endif
    return Scalar::encodeBase64(in, blocks, out);
}
