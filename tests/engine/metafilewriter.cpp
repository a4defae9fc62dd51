#include "engine/metafilewriter.h"

EmfWriter::EmfWriter(QRect bounds, QRect frame)
    : m_bounds(bounds)
    , m_frame(frame)
{
}

EmfWriter &EmfWriter::add(quint32 type, std::initializer_list<int> words, const QByteArray &more)
{
    ByteWriter writer;
    writer.u32le(type);
    writer.u32le(quint32(8 + words.size() * 4 + size_t(more.size() + 3) / 4 * 4));
    for (const int word : words)
        writer.u32le(quint32(word));
    writer.bytes.append(more);
    writer.fill((4 - more.size() % 4) % 4);
    m_records.append(writer.bytes);
    ++m_count;
    return *this;
}

EmfWriter &EmfWriter::points(quint32 type, std::initializer_list<int> coordinates)
{
    ByteWriter writer;
    for (const int coordinate : coordinates)
        writer.u16le(quint32(coordinate) & 0xffff);
    return add(type, {0, 0, 0, 0, int(coordinates.size() / 2)}, writer.bytes);
}

EmfWriter &EmfWriter::brush(int index, int color, int style, int hatch)
{
    return add(39, {index, style, color, hatch}).select(index);
}

EmfWriter &EmfWriter::pen(int index, int color, int width, int style)
{
    return add(38, {index, style, width, 0, color}).select(index);
}

EmfWriter &EmfWriter::font(int index, int height, int angle, const QString &name)
{
    ByteWriter face;
    for (qsizetype i = 0; i < 32; ++i)
        face.u16le(i < name.size() ? name.at(i).unicode() : 0);
    return add(82, {index, height, 0, angle, angle, 400, 0, 0}, face.bytes).select(index);
}

EmfWriter &EmfWriter::text(QPoint at, const QString &text, int options, QRect box, QList<int> advances)
{
    ByteWriter writer;
    for (const QChar character : text)
        writer.u16le(character.unicode());
    writer.fill(writer.bytes.size() % 4);
    const int advancesAt = advances.isEmpty() ? 0 : 76 + int(writer.bytes.size());
    for (const int advance : advances)
        writer.u32le(quint32(advance));
    return add(84,
        {0, 0, 0, 0, 2, 0, 0, at.x(), at.y(), int(text.size()), 76, options, box.left(), box.top(), box.right() + 1,
            box.bottom() + 1, advancesAt},
        writer.bytes);
}

EmfWriter &EmfWriter::stretch(QRect to, const QImage &image, QRect from, quint32 operation)
{
    const QByteArray pixels = dibPixels(image);
    return add(81,
        {0, 0, 0, 0, to.x(), to.y(), from.x(), from.y(), from.width(), from.height(), 80, 40, 120, int(pixels.size()),
            0, int(operation), to.width(), to.height()},
        dibHeader(image) + pixels);
}

EmfWriter &EmfWriter::blit(quint32 type, QRect to, const QImage &image, quint32 word)
{
    const int bits = type == 114 ? 32 : 24;
    const QByteArray pixels = dibPixels(image, bits);
    return add(type,
        {0, 0, 0, 0, to.x(), to.y(), to.width(), to.height(), int(word), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 108, 40, 148,
            int(pixels.size()), image.width(), image.height()},
        dibHeader(image, bits) + pixels);
}

EmfWriter &EmfWriter::plus(const QByteArray &records)
{
    return add(70, {4 + int(records.size()), 0x2b464d45}, records);
}

QByteArray EmfWriter::bytes() const
{
    ByteWriter writer;
    writer.u32le(1);
    writer.u32le(88);
    for (const int word : {m_bounds.left(), m_bounds.top(), m_bounds.right(), m_bounds.bottom(), m_frame.left(),
             m_frame.top(), m_frame.left() + m_frame.width(), m_frame.top() + m_frame.height()})
        writer.u32le(quint32(word));
    writer.text(" EMF");
    writer.u32le(0x10000);
    writer.u32le(quint32(88 + m_records.size() + 20));
    writer.u32le(quint32(m_count + 1));
    writer.u32le(10);
    writer.fill(12);
    // A device of ten pixels a millimetre.
    for (const int word : {1000, 1000, 100, 100})
        writer.u32le(quint32(word));
    writer.bytes.append(m_records);
    for (const int word : {14, 20, 0, 0, 20})
        writer.u32le(quint32(word));
    return writer.bytes;
}

QByteArray plusRecord(int type, int flags, std::initializer_list<int> words)
{
    ByteWriter writer;
    writer.u16le(quint32(type));
    writer.u16le(quint32(flags));
    writer.u32le(quint32(12 + 4 * words.size()));
    writer.u32le(quint32(4 * words.size()));
    for (const int word : words)
        writer.u32le(quint32(word));
    return writer.bytes;
}

int floatBits(float value)
{
    int bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

WmfWriter &WmfWriter::add(int function, std::initializer_list<int> words, const QByteArray &more)
{
    ByteWriter writer;
    writer.u32le(quint32(3 + words.size() + size_t(more.size() + 1) / 2));
    writer.u16le(quint32(function));
    for (const int word : words)
        writer.u16le(quint32(word) & 0xffff);
    writer.bytes.append(more);
    writer.fill(more.size() % 2);
    m_records.append(writer.bytes);
    return *this;
}

QByteArray WmfWriter::bytes() const
{
    ByteWriter writer;
    if (m_inch > 0) {
        writer.u32le(0x9ac6cdd7);
        for (const int word : {0, m_box.left(), m_box.top(), m_box.right() + 1, m_box.bottom() + 1, m_inch, 0, 0, 0})
            writer.u16le(quint32(word) & 0xffff);
    }
    for (const int word : {1, 9, 0x300})
        writer.u16le(quint32(word));
    writer.u32le(quint32(12 + m_records.size() / 2));
    writer.u16le(16);
    writer.u32le(1000);
    writer.u16le(0);
    writer.bytes.append(m_records);
    writer.u32le(3);
    writer.u16le(0);
    return writer.bytes;
}

QByteArray dibHeader(const QImage &image, int bits)
{
    ByteWriter writer;
    writer.u32le(40);
    writer.u32le(quint32(image.width()));
    writer.u32le(quint32(image.height()));
    writer.u16le(1);
    writer.u16le(quint32(bits));
    writer.fill(24);
    return writer.bytes;
}

QByteArray dibPixels(const QImage &image, int bits)
{
    ByteWriter writer;
    for (int y = image.height() - 1; y >= 0; --y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            writer.u8(quint32(qBlue(pixel)));
            writer.u8(quint32(qGreen(pixel)));
            writer.u8(quint32(qRed(pixel)));
            if (bits == 32)
                writer.u8(quint32(qAlpha(pixel)));
        }
        writer.fill((4 - writer.bytes.size() % 4) % 4);
    }
    return writer.bytes;
}
