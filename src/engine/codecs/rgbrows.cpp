#include "engine/codecs/rgbrows.h"

#include <QtEndian>

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

/// Where red, green and blue stand in the three bytes of a pixel.
struct RedFirst
{
    static QRgb color(const uchar *p) { return qRgb(p[0], p[1], p[2]); }
    static constexpr bool swaps = true;
};

struct BlueFirst
{
    static QRgb color(const uchar *p) { return qRgb(p[2], p[1], p[0]); }
    static constexpr bool swaps = false;
};

#if defined(__x86_64__)
// Four pixels at once; the answer is how many were done. 16 bytes are read where 12 are used, so the last ones are
// left.
template <class Order> __attribute__((target("ssse3"))) int quadsOf(const uchar *from, QRgb *to, int count)
{
    constexpr char no = -128;
    const __m128i order = Order::swaps ? _mm_setr_epi8(2, 1, 0, no, 5, 4, 3, no, 8, 7, 6, no, 11, 10, 9, no)
                                       : _mm_setr_epi8(0, 1, 2, no, 3, 4, 5, no, 6, 7, 8, no, 9, 10, 11, no);
    const __m128i solid = _mm_set1_epi32(int(0xff000000));
    int done = 0;
    for (; done + 6 <= count; done += 4) {
        __m128i pixels;
        std::memcpy(&pixels, from + 3 * qsizetype(done), sizeof pixels);
        pixels = _mm_or_si128(_mm_shuffle_epi8(pixels, order), solid);
        std::memcpy(to + done, &pixels, sizeof pixels);
    }
    return done;
}

// Two pixels of three samples of 16 bits at once, as above.
__attribute__((target("ssse3"))) int deepPairs(const uchar *from, QRgba64 *to, int count)
{
    constexpr char no = -128;
    const __m128i order = _mm_setr_epi8(1, 0, 3, 2, 5, 4, no, no, 7, 6, 9, 8, 11, 10, no, no);
    const __m128i solid = _mm_set1_epi64x(qint64(0xffff000000000000));
    int done = 0;
    for (; done + 3 <= count; done += 2) {
        __m128i pixels;
        std::memcpy(&pixels, from + 6 * qsizetype(done), sizeof pixels);
        pixels = _mm_or_si128(_mm_shuffle_epi8(pixels, order), solid);
        std::memcpy(static_cast<void *>(to + done), &pixels, sizeof pixels);
    }
    return done;
}
#endif

bool canShuffle()
{
#if defined(__x86_64__)
    static const bool can = __builtin_cpu_supports("ssse3");
    return can;
#else
    return false;
#endif
}

template <class Order> void threeByteRow(const uchar *from, QRgb *to, int count)
{
    int x = 0;
#if defined(__x86_64__)
    if (canShuffle())
        x = quadsOf<Order>(from, to, count);
#endif
    for (from += 3 * qsizetype(x); x < count; ++x, from += 3)
        to[x] = Order::color(from);
}

quint16 sampleAt(const uchar *from)
{
    return qFromBigEndian<quint16>(from);
}

}

void rgbRow(const uchar *from, QRgb *to, int count)
{
    threeByteRow<RedFirst>(from, to, count);
}

void bgrRow(const uchar *from, QRgb *to, int count)
{
    threeByteRow<BlueFirst>(from, to, count);
}

void rgbaRow(const uchar *from, QRgb *to, int count)
{
    for (int x = 0; x < count; ++x) {
        const quint32 p = qFromLittleEndian<quint32>(from + 4 * qsizetype(x));
        to[x] = (p & 0xff00ff00) | (p & 0xff) << 16 | (p >> 16 & 0xff);
    }
}

void bigEndianRow(const uchar *from, QRgba64 *to, int count, int channels)
{
    constexpr quint16 solid = 0xffff;
    int x = 0;
#if defined(__x86_64__)
    if (channels == 3 && canShuffle())
        x = deepPairs(from, to, count);
#endif
    from += qsizetype(x) * 2 * channels;
    switch (channels) {
    case 1:
    case 2:
        for (; x < count; ++x, from += 2 * channels) {
            const quint16 grey = sampleAt(from);
            to[x] = QRgba64::fromRgba64(grey, grey, grey, channels == 2 ? sampleAt(from + 2) : solid);
        }
        break;
    case 3:
        for (; x < count; ++x, from += 6)
            to[x] = QRgba64::fromRgba64(sampleAt(from), sampleAt(from + 2), sampleAt(from + 4), solid);
        break;
    default:
        for (; x < count; ++x, from += 8)
            to[x] = QRgba64::fromRgba64(sampleAt(from), sampleAt(from + 2), sampleAt(from + 4), sampleAt(from + 6));
    }
}
