#include "engine/decode.h"
#include "engine/rounding.h"
#include "support/support.h"

#include <QFloat16>
#include <QtTest>

#include <algorithm>
#include <cmath>

#include <tiffio.h>

/// TIFF of every kind of sample, as the format's own library writes it: whole and floating numbers, side by side and in
/// planes, strips and tiles.
class tst_tiff : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everySampleIsRead_data();
    void everySampleIsRead();
    void alphaIsTakenOutOfTheColours();
    void numbersBeyondTheRangeAreCut();
    void damageCostsItsOwnBlocks();
    void palettesMayBeDeepOrClear();
};

namespace {

constexpr QSize size(37, 21);

struct Kind
{
    int bits = 8;
    bool real = false;
    int samples = 3;
    bool apart = false;
    bool tiled = false;
    bool whiteIsZero = false;
    int alpha = -1; ///< EXTRASAMPLE_ of the last sample
};

/// What a sample of the picture is, from 0 to 1.
double valueAt(int x, int y, int sample)
{
    const double values[] = {x / 36.0, y / 20.0, (x + y) % 11 / 10.0, 1.0 - x / 72.0};
    return values[sample];
}

quint64 whole(double value, int bits)
{
    return quint64(std::llround(value * double((1ULL << bits) - 1)));
}

/// 24 bits: sign, seven of exponent, sixteen of fraction.
quint32 float24(double value)
{
    if (value == 0)
        return 0;
    int exponent = 0;
    const double mantissa = std::frexp(value, &exponent); // 0.5 to 1
    const quint32 fraction = quint32(std::llround((mantissa * 2 - 1) * 65536));
    return quint32(exponent - 1 + 63 + int(fraction >> 16)) << 16 | (fraction & 0xffff);
}

QByteArray packed(const QList<double> &values, const Kind &kind)
{
    QByteArray bytes;
    const auto append = [&bytes](const auto &value, int count = sizeof value) {
        bytes.append(reinterpret_cast<const char *>(&value), count);
    };
    quint64 held = 0;
    int holds = 0;
    for (const double value : values) {
        if (kind.real && kind.bits == 16)
            append(qfloat16(float(value)));
        else if (kind.real && kind.bits == 24)
            append(float24(value), 3);
        else if (kind.real && kind.bits == 32)
            append(float(value));
        else if (kind.real)
            append(value);
        else if (kind.bits % 8 == 0)
            append(whole(value, kind.bits), kind.bits / 8);
        else {
            held = held << kind.bits | whole(value, kind.bits);
            for (holds += kind.bits; holds >= 8; holds -= 8)
                bytes.append(char(held >> (holds - 8)));
        }
    }
    if (holds > 0)
        bytes.append(char(held << (8 - holds)));
    return bytes;
}

struct Memory
{
    QByteArray bytes;
    toff_t at = 0;

    static Memory &of(thandle_t handle) { return *static_cast<Memory *>(handle); }
    static tmsize_t read(thandle_t handle, void *to, tmsize_t count)
    {
        Memory &file = of(handle);
        const tmsize_t given = std::clamp(tmsize_t(file.bytes.size()) - tmsize_t(file.at), tmsize_t(0), count);
        std::memcpy(to, file.bytes.constData() + file.at, size_t(given));
        file.at += toff_t(given);
        return given;
    }
    static tmsize_t write(thandle_t handle, void *from, tmsize_t count)
    {
        Memory &file = of(handle);
        file.bytes.resize(qMax(file.bytes.size(), qsizetype(file.at) + count));
        std::memcpy(file.bytes.data() + file.at, from, size_t(count));
        file.at += toff_t(count);
        return count;
    }
    static toff_t seek(thandle_t handle, toff_t offset, int whence)
    {
        Memory &file = of(handle);
        return file.at = whence == SEEK_CUR ? file.at + offset
            : whence == SEEK_END            ? toff_t(file.bytes.size()) + offset
                                            : offset;
    }
    static int close(thandle_t) { return 0; }
    static toff_t length(thandle_t handle) { return toff_t(of(handle).bytes.size()); }
};

QByteArray tiffFile(const Kind &kind, double (*value)(int, int, int) = &valueAt)
{
    Memory memory;
    TIFF *const file = TIFFClientOpen("test", "w", &memory, Memory::read, Memory::write, Memory::seek, Memory::close,
        Memory::length, nullptr, nullptr);
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, size.width());
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, size.height());
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, kind.bits);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
    TIFFSetField(file, TIFFTAG_SAMPLEFORMAT, kind.real ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG, kind.apart ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC,
        kind.samples > 2       ? PHOTOMETRIC_RGB
            : kind.whiteIsZero ? PHOTOMETRIC_MINISWHITE
                               : PHOTOMETRIC_MINISBLACK);
    if (kind.alpha >= 0) {
        const quint16 extra = quint16(kind.alpha);
        TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &extra);
    }
    const int width = kind.tiled ? 16 : size.width();
    const int height = kind.tiled ? 16 : 5;
    TIFFSetField(file, kind.tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, height);
    if (kind.tiled)
        TIFFSetField(file, TIFFTAG_TILEWIDTH, width);
    const int planes = kind.apart ? kind.samples : 1;
    for (int plane = 0; plane < planes; ++plane) {
        for (int top = 0; top < size.height(); top += height) {
            for (int left = 0; left < size.width(); left += width) {
                QByteArray block;
                const int rows = kind.tiled ? height : qMin(height, size.height() - top);
                for (int y = top; y < top + rows; ++y) {
                    QList<double> row;
                    for (int x = left; x < left + width; ++x) {
                        const QPoint inside(qMin(x, size.width() - 1), qMin(y, size.height() - 1));
                        for (int s = kind.apart ? plane : 0; s < (kind.apart ? plane + 1 : kind.samples); ++s)
                            row << value(inside.x(), inside.y(), s);
                    }
                    block += packed(row, kind);
                }
                if (kind.tiled)
                    TIFFWriteTile(file, block.data(), quint32(left), quint32(top), 0, quint16(plane));
                else
                    TIFFWriteEncodedStrip(
                        file, TIFFComputeStrip(file, quint32(top), quint16(plane)), block.data(), block.size());
            }
        }
    }
    TIFFClose(file);
    return memory.bytes;
}

/// A sample as exactly as it was stored, in 65535 parts.
int stored(double value, const Kind &kind)
{
    if (kind.real && kind.bits == 16)
        value = double(float(qfloat16(float(value))));
    if (kind.real && kind.bits == 24)
        value = std::round(value * 65536 * 64) / (65536 * 64); // near enough to a sixteenth of a level
    if (kind.real)
        return roundToInt(value * 65535);
    return int(std::lround(double(whole(value, kind.bits)) * 65535 / double((1ULL << kind.bits) - 1)));
}

Result<Picture> decoded(const QByteArray &bytes)
{
    return decode({bytes, QStringLiteral("tif")});
}

}

Q_DECLARE_METATYPE(Kind)

void tst_tiff::everySampleIsRead_data()
{
    QTest::addColumn<Kind>("kind");
    const std::pair<int, bool> numbers[]{{2, false}, {4, false}, {6, false}, {8, false}, {10, false}, {12, false},
        {14, false}, {16, false}, {24, false}, {32, false}, {16, true}, {24, true}, {32, true}, {64, true}};
    for (const auto &[bits, real] : numbers) {
        for (const int samples : {1, 3}) {
            for (const bool apart : {false, true}) {
                for (const bool tiled : {false, true}) {
                    QTest::addRow("%d %s bits, %d samples, %s, %s", bits, real ? "real" : "whole", samples,
                        apart ? "apart" : "together", tiled ? "tiles" : "strips")
                        << Kind{bits, real, samples, apart, tiled};
                }
            }
        }
    }
    QTest::newRow("white is zero") << Kind{12, false, 1, false, false, true};
    QTest::newRow("white is zero, real") << Kind{32, true, 1, false, true, true};
}

void tst_tiff::everySampleIsRead()
{
    QFETCH(Kind, kind);
    const QByteArray file = tiffFile(kind);
    const Result<Picture> picture = decoded(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.bitsPerPixel, kind.bits * kind.samples);
    QCOMPARE(probe({file, QStringLiteral("tif")})->bitsPerPixel, kind.bits * kind.samples);
    QCOMPARE(picture->pixels.size(), size);
    QCOMPARE(picture->pixels.format() == QImage::Format_RGBA64, kind.bits > 8);
    // Eight bits are all that shallow pictures are shown with; 24 real bits are computed by another way than read.
    const int tolerance = kind.bits <= 8 ? 128 : kind.bits == 24 || kind.bits == 32 ? 1 : 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const QRgba64 pixel = picture->pixels.pixelColor(x, y).rgba64();
            const quint16 seen[] = {pixel.red(), pixel.green(), pixel.blue()};
            for (int c = 0; c < 3; ++c) {
                int wanted = stored(valueAt(x, y, kind.samples == 3 ? c : 0), kind);
                wanted = kind.whiteIsZero ? 65535 - wanted : wanted;
                QVERIFY2(qAbs(seen[c] - wanted) <= tolerance,
                    qPrintable(QStringLiteral("%1, %2: %3 for %4").arg(x).arg(y).arg(seen[c]).arg(wanted)));
            }
            QCOMPARE(pixel.alpha(), quint16(65535));
        }
    }
}

void tst_tiff::alphaIsTakenOutOfTheColours()
{
    const auto value = [](int x, int, int sample) { return sample == 3 ? x / 36.0 : 0.5 * x / 36.0; };
    for (const int bits : {4, 8, 12, 16, 32}) {
        for (const bool apart : {false, true}) {
            for (const int alpha : {EXTRASAMPLE_ASSOCALPHA, EXTRASAMPLE_UNASSALPHA}) {
                const auto picture = decoded(tiffFile({bits, bits == 32, 4, apart, false, false, alpha}, value));
                QVERIFY2(picture, qPrintable(picture.reason()));
                const QColor pixel = picture->pixels.pixelColor(30, 10);
                const double color = alpha == EXTRASAMPLE_ASSOCALPHA ? 0.5 : 0.5 * 30 / 36;
                const double step = 1.0 / ((1 << qMin(bits, 8)) - 1);
                QVERIFY2(qAbs(double(pixel.alphaF()) - 30 / 36.0) <= step, qPrintable(QString::number(bits)));
                QVERIFY2(qAbs(double(pixel.greenF()) - color) <= step, qPrintable(QString::number(bits)));
            }
        }
    }
}

void tst_tiff::numbersBeyondTheRangeAreCut()
{
    const auto value = [](int x, int, int sample) {
        return x == 0 ? std::nan("") : x == 1 ? -3.0 : x == 2 ? 7.5 : sample == 0 ? HUGE_VAL : -HUGE_VAL;
    };
    for (const int bits : {16, 32, 64}) {
        for (const bool apart : {false, true}) {
            const auto picture = decoded(tiffFile({bits, true, 3, apart}, value));
            QVERIFY2(picture, qPrintable(picture.reason()));
            QCOMPARE(picture->pixels.pixel(0, 3), qRgb(0, 0, 0));
            QCOMPARE(picture->pixels.pixel(1, 3), qRgb(0, 0, 0));
            QCOMPARE(picture->pixels.pixel(2, 3), qRgb(255, 255, 255));
            QCOMPARE(picture->pixels.pixel(3, 3), qRgb(255, 0, 0));
        }
    }
}

void tst_tiff::damageCostsItsOwnBlocks()
{
    for (const bool tiled : {false, true}) {
        const QByteArray whole = tiffFile({12, false, 3, true, tiled});
        const auto good = decoded(whole);
        for (qsizetype cut = whole.size() - 1; cut > 0; cut -= 41) {
            const auto picture = decoded(whole.left(cut));
            QVERIFY(!picture || picture->pixels.size() == size);
        }
        QByteArray damaged = whole;
        // The first block, red, of which the library reads the rest as nothing.
        std::fill_n(damaged.begin() + 8, 40, '\xff');
        const auto picture = decoded(damaged);
        QVERIFY(picture && picture->partial);
        QCOMPARE(picture->pixels.pixelColor(36, 20), good->pixels.pixelColor(36, 20));
        QCOMPARE(picture->pixels.pixelColor(3, 3).green(), good->pixels.pixelColor(3, 3).green());
    }
}

void tst_tiff::palettesMayBeDeepOrClear()
{
    for (const int bits : {8, 16}) {
        Memory memory;
        TIFF *const file = TIFFClientOpen("test", "w", &memory, Memory::read, Memory::write, Memory::seek,
            Memory::close, Memory::length, nullptr, nullptr);
        TIFFSetField(file, TIFFTAG_IMAGEWIDTH, 2);
        TIFFSetField(file, TIFFTAG_IMAGELENGTH, 1);
        TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, bits);
        TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
        std::vector<quint16> red(size_t(1) << bits, 0x4040), green(red.size(), 0x8080), blue(red.size(), 0);
        red[2] = 0xffff;
        TIFFSetField(file, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
        const quint16 alpha = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, bits == 8 ? 2 : 1);
        if (bits == 8)
            TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &alpha);
        quint16 deep[] = {1, 2};
        uchar clear[] = {1, 255, 2, 0x60};
        TIFFWriteEncodedStrip(file, 0, bits == 8 ? static_cast<void *>(clear) : deep, 4);
        TIFFClose(file);
        const auto picture = decoded(memory.bytes);
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(picture->info.bitsPerPixel, 16);
        QCOMPARE(picture->pixels.pixel(0, 0), qRgb(0x40, 0x80, 0));
        QCOMPARE(picture->pixels.pixel(1, 0), qRgba(0xff, 0x80, 0, bits == 8 ? 0x60 : 255));
    }
}

QTEST_GUILESS_MAIN(tst_tiff)
#include "tst_tiff.moc"
