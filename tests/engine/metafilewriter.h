#pragma once

#include "engine/codecs/bytes.h"

#include <QImage>
#include <QRect>

/// Makes enhanced metafiles record by record; the bounds are the picture.
class EmfWriter
{
public:
    explicit EmfWriter(QRect bounds = QRect(0, 0, 100, 60), QRect frame = {});
    EmfWriter &add(quint32 type, std::initializer_list<int> words = {}, const QByteArray &more = {});
    /// Bounds nobody looks at, a count, and 16-bit points.
    EmfWriter &points(quint32 type, std::initializer_list<int> coordinates);
    EmfWriter &brush(int index, int color, int style = 0, int hatch = 0);
    EmfWriter &pen(int index, int color, int width = 0, int style = 0);
    EmfWriter &select(int index) { return add(37, {index}); }
    EmfWriter &noPen() { return select(int(0x80000008)); }
    EmfWriter &noBrush() { return select(int(0x80000005)); }
    EmfWriter &rectangle(int left, int top, int right, int bottom) { return add(43, {left, top, right, bottom}); }
    EmfWriter &font(int index, int height, int angle = 0, const QString &name = QStringLiteral("Arial"));
    EmfWriter &text(QPoint at, const QString &text, int options = 0, QRect box = {}, QList<int> advances = {});
    /// A bitmap stretched to a box.
    EmfWriter &stretch(QRect to, const QImage &image, QRect from, quint32 operation = 0x00cc0020);
    /// The two-bitmap records: 77 stretch, 114 blend, 116 leave a colour out; `word` is the operation, blend or colour.
    EmfWriter &blit(quint32 type, QRect to, const QImage &image, quint32 word);
    EmfWriter &plus(const QByteArray &records);
    QByteArray bytes() const;

private:
    QRect m_bounds;
    QRect m_frame;
    QByteArray m_records;
    int m_count = 1;
};

/// A record of EMF+ for EmfWriter::plus().
QByteArray plusRecord(int type, int flags, std::initializer_list<int> words);
int floatBits(float value);

/// Makes metafiles of 16 bits; `inch` 0 leaves the placeable header out.
class WmfWriter
{
public:
    explicit WmfWriter(QRect box = QRect(0, 0, 100, 60), int inch = 96)
        : m_box(box)
        , m_inch(inch)
    {
    }
    WmfWriter &add(int function, std::initializer_list<int> words = {}, const QByteArray &more = {});
    WmfWriter &brush(int color) { return add(0x2fc, {0, color & 0xffff, color >> 16, 0}); }
    WmfWriter &rectangle(int left, int top, int right, int bottom) { return add(0x41b, {bottom, right, top, left}); }
    QByteArray bytes() const;

private:
    QRect m_box;
    int m_inch;
    QByteArray m_records;
};

/// A bitmap of 24 or 32 bits without a file header, the lowest row first; by `header` alone or by its pixels alone.
QByteArray dibHeader(const QImage &image, int bits = 24);
QByteArray dibPixels(const QImage &image, int bits = 24);
