#include "engine/rasterfiles.h"

#include "support/support.h"

#include <QtEndian>

namespace {

QByteArray runLengths(const QByteArray &bytes)
{
    QByteArray packed;
    for (const char byte : bytes)
        packed += QByteArray(1, '\0') + byte; // one literal each
    return packed;
}

/// What the Huffman test needs of a code: every byte that occurs in `data`, the first with the shortest code.
QByteArray bytesIn(const QByteArray &data)
{
    QByteArray distinct;
    for (const char byte : data) {
        if (!distinct.contains(byte))
            distinct.append(byte);
    }
    return distinct;
}

}

QByteArray be16(int value)
{
    QByteArray bytes(2, '\0');
    qToBigEndian(quint16(value), bytes.data());
    return bytes;
}

QByteArray be32(qsizetype value)
{
    return be16(int(value >> 16)) + be16(int(value & 0xffff));
}

QByteArray le16(int value)
{
    QByteArray bytes(2, '\0');
    qToLittleEndian(quint16(value), bytes.data());
    return bytes;
}

QByteArray le32(qsizetype value)
{
    return le16(int(value & 0xffff)) + le16(int(value >> 16));
}

QByteArray iffOf(const char *kind, const QList<Chunk> &chunks)
{
    QByteArray body(kind);
    for (const auto &[name, data] : chunks)
        body += name + be32(data.size()) + data + QByteArray(data.size() % 2, '\0');
    return "FORM" + be32(body.size()) + body;
}

Chunk iffHeader(QSize size, int planes, int compression, int masking, int transparent)
{
    return {"BMHD",
        be16(size.width()) + be16(size.height()) + be32(0) + char(planes) + char(masking) + char(compression) + '\0'
            + be16(transparent) + be16(0x0101) + be16(size.width()) + be16(size.height())};
}

Chunk iffColors(int planes)
{
    QByteArray map;
    for (int i = 0; i < 1 << planes; ++i)
        map += QByteArray(1, char(i)) + char(255 - i) + char(i * 7);
    return {"CMAP", map};
}

QByteArray planarRows(const QList<QByteArray> &rows, int planes)
{
    QByteArray out;
    for (const QByteArray &row : rows) {
        for (int plane = 0; plane < planes; ++plane) {
            QByteArray bits((row.size() + 15) / 16 * 2, '\0');
            for (qsizetype x = 0; x < row.size(); ++x) {
                if (uchar(row[x]) >> plane & 1)
                    bits[x / 8] = char(bits[x / 8] | 0x80 >> x % 8);
            }
            out += bits;
        }
    }
    return out;
}

// The code of the n-th distinct byte is n ones and a zero; the tree is entered at its end.
QByteArray huffmanChanges(const QByteArray &header, const QByteArray &data)
{
    const QByteArray distinct = bytesIn(data);
    QByteArray tree;
    for (qsizetype i = distinct.size() - 1; i >= 0; --i)
        tree += be16(0x100 | uchar(distinct[i])) + be16(i + 1 < distinct.size() ? -4 : uchar(distinct[i]));
    QByteArray bits;
    for (const char byte : data)
        bits += QByteArray(distinct.indexOf(byte), '1') + '0';
    QByteArray stream((bits.size() + 31) / 32 * 4, '\0');
    for (qsizetype i = 0; i < bits.size(); ++i) {
        if (bits[i] == '1')
            stream[i / 8] = char(stream[i / 8] | 0x80 >> i % 8);
    }
    return be16(1) + header.mid(2) + be32(tree.size()) + be32(data.size()) + tree + stream;
}

QByteArray gemImageOf(QSize size, int planes, const QByteArray &extension, const QByteArray &rows, int pattern)
{
    return be16(1) + be16(int(8 + extension.size() / 2)) + be16(planes) + be16(pattern) + be16(100) + be16(200)
        + be16(size.width()) + be16(size.height()) + extension + rows;
}

QByteArray cutOf(QSize size)
{
    QByteArray file = le16(size.width()) + le16(size.height()) + le16(0);
    for (int y = 0; y < size.height(); ++y) {
        // One literal, the rest a run.
        const QByteArray row = QByteArray("\x01") + char(y) + char(0x80 | (size.width() - 1)) + char(y + 1) + '\0';
        file += le16(int(row.size())) + row;
    }
    return file;
}

QByteArray cutPalette(int colors)
{
    QByteArray file = "AH" + le16(0) + le16(0) + QByteArray("\x0a\0", 2) + le32(0) + le16(colors - 1) + le16(63)
        + le16(63) + le16(63);
    file.append(40 - file.size(), '\0');
    for (int i = 0; i < colors; ++i) {
        if (file.size() % 512 > 506)
            file.append(512 - file.size() % 512, '\0');
        file += le16(i % 64) + le16(63 - i % 64) + le16(0);
    }
    return file;
}

QByteArray pmpOf(const QByteArray &jpeg, int turn, const QByteArray &comment)
{
    QByteArray header(124, '\0');
    header.replace(8, 8, be32(124) + be32(jpeg.size()));
    header[27] = char(turn);
    header.replace(52, comment.size(), comment);
    header.replace(76, 6, QByteArray("\x62\x09\x01\x14\x13\x39", 6));
    return header + jpeg;
}

QByteArray bitmapOf(int headerBytes, int bits, bool withFileHeader, bool topDown)
{
    const bool isCore = headerBytes == 12;
    QByteArray header = le32(headerBytes);
    header += isCore ? le16(4) + le16(3) : le32(4) + le32(topDown ? -3 : 3);
    header += le16(1) + le16(bits);
    header.append(headerBytes - header.size(), '\0');
    for (int i = 0; bits <= 8 && i < 1 << bits; ++i)
        header += QByteArray(1, char(10 * i)) + char(20 * i) + char(60 * i) + QByteArray(isCore ? 0 : 1, '\0');
    QByteArray rows;
    for (int y = 0; y < 3; ++y) {
        QByteArray row;
        for (int x = 0; x < 4 && bits == 24; ++x)
            row += QByteArray(1, char(10 * x)) + char(20 * x) + char(60 * x);
        if (bits == 2)
            row = QByteArray(1, y == 2 ? '\xff' : '\x1b');
        else if (bits == 4)
            row = y == 2 ? "\x33\x33" : "\x01\x23";
        row.append((row.size() + 3) / 4 * 4 - row.size(), '\0');
        rows += row;
    }
    const qsizetype offset = 14 + header.size();
    const QByteArray file = header + rows;
    return withFileHeader ? "BM" + le32(14 + file.size()) + le32(0) + le32(offset) + file : file;
}

QList<SmallFile> rasterFiles()
{
    const QSize size(19, 3);
    const QList<QByteArray> rows(
        3, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d\x0e\x0f\x10\x21\x2f\x3a", 19));
    const QString iff = QStringLiteral("iff");
    const QByteArray four = planarRows(rows, 4);
    const QByteArray changes = QByteArray("\xa0\0\0\0", 4) + QByteArray("\x01\x00\x11\xab\x01\x00\x12\xff", 8);
    const QByteArray changeHeader = be16(0) + be16(1) + be16(0) + be16(3) + QByteArray(12, '\0');
    const Chunk ham{"CAMG", be32(0x800)};
    QByteArray column;
    for (int plane = 0; plane < 4; ++plane)
        column += "VDAT" + be32(8) + be16(4) + QByteArray("\x03\x03") + be16(0x5500) + be16(0xaa00);
    const QByteArray gemRows("\x80\x03\x55\xaa\x40\x00\x00\xff\x02\x83\x00\x01\x12\x34\x01", 15);
    return {
        {"ILBM", iff, iffOf("ILBM", {iffHeader(size, 4), iffColors(4), {"BODY", four}, {"ANNO", "a note"}})},
        {"ILBM packed", iff,
            iffOf("ILBM", {iffHeader(size, 6, 1), iffColors(5), {"BODY", runLengths(planarRows(rows, 6))}})},
        {"ILBM columns", QStringLiteral("lbm"), iffOf("ILBM", {iffHeader(size, 4, 2), iffColors(4), {"BODY", column}})},
        {"ILBM mask", iff, iffOf("ILBM", {iffHeader({19, 2}, 5, 0, 1), iffColors(5), {"BODY", four}})},
        {"ILBM HAM", iff, iffOf("ILBM", {iffHeader(size, 6), ham, iffColors(4), {"BODY", planarRows(rows, 6)}})},
        {"ILBM 24 planes", iff, iffOf("ILBM", {iffHeader({19, 1}, 24), {"BODY", planarRows(rows, 8)}})},
        {"ILBM row changes", iff,
            iffOf("ILBM", {iffHeader(size, 4), iffColors(4), {"PCHG", changeHeader + changes}, {"BODY", four}})},
        {"ILBM packed row changes", iff,
            iffOf("ILBM",
                {iffHeader(size, 4), iffColors(4), {"PCHG", huffmanChanges(changeHeader, changes)}, {"BODY", four}})},
        {"PBM", QStringLiteral("lbm"), iffOf("PBM ", {iffHeader({4, 3}, 8), iffColors(8), {"BODY", rows[0].left(12)}})},
        {"ACBM", iff, iffOf("ACBM", {iffHeader(size, 4), iffColors(4), {"ABIT", four}})},
        {"GEM image", QStringLiteral("img"), gemImageOf({20, 4}, 1, {}, gemRows)},
        {"GEM image of 4 planes", QStringLiteral("img"),
            gemImageOf({16, 1}, 4, "XIMG" + be16(0) + QByteArray(96, '\x01'), "\x82\x02\x80\x02\x55\xaa\x82")},
        {"GEM image of 24 bits", QStringLiteral("img"),
            gemImageOf({8, 1}, 24, {}, "\x80\x17" + QByteArray(23, '\x39') + '\x81')},
        {"MSP 1", QStringLiteral("msp"), "DanM" + le16(9) + le16(2) + QByteArray(24, '\0') + "\x55\x80\xaa\x01"},
        {"MSP 2", QStringLiteral("msp"),
            "LinS" + le16(24) + le16(3) + QByteArray(24, '\0') + le16(3) + le16(0) + le16(4)
                + QByteArray("\x00\x03\x55\x03\x01\x02\x03", 7)},
        {"CUT", QStringLiteral("cut"), cutOf({9, 4})},
        {"PMP", QStringLiteral("pmp"), pmpOf(written(rampImage({9, 7}), "jpg", 80), 1, "a comment")},
        {"BMP 2 bits", QStringLiteral("bmp"), bitmapOf(40, 2, true)},
        {"DIB of 16 bytes", QStringLiteral("dib"), bitmapOf(16, 4, false)},
    };
}
