#pragma once

#include "engine/enginefiles.h"

#include <QByteArray>
#include <QList>

/// Files of the formats that the program reads and writes by itself, put together from their parts.

struct MbmBitmap
{
    QSize size = {};
    int bits = 8;
    int color = 0; ///< 0 grey, 1 colour, 2 alpha, 3 multiplied alpha
    int compression = 0;
    QByteArray data = {};
};
QByteArray mbmOf(const QList<MbmBitmap> &bitmaps, bool rom = false);

struct PsdParts
{
    QSize size = {2, 2};
    int channels = 3;
    int depth = 8;
    int mode = 3;
    QByteArray data = {}; ///< behind the compression's number
    int compression = 0;
    bool large = false;
    QByteArray palette = {};
    QByteArray resources = {};
    QByteArray layers = {}; ///< of the layer section, behind its length
};
QByteArray psdOf(const PsdParts &parts);
QByteArray psdResource(int id, const QByteArray &data);

struct TgaParts
{
    int kind = 2; ///< 1 palette, 2 true colour, 3 grey; + 8 with run lengths
    QSize size = {2, 2};
    int bits = 24;
    int descriptor = 0x20; ///< the rows from the top
    QByteArray pixels = {};
    int mapFirst = 0;
    int mapBits = 0;
    QByteArray map = {};
    int alphaKind = -1; ///< -1: no extension area
};
QByteArray tgaOf(const TgaParts &parts);

QByteArray sunRasterOf(QSize size, int bits, int type, const QByteArray &data, const QByteArray &map = {});

/// The pixels, row by row, as "rrggbb" or, where they are not opaque, "aarrggbb", with blanks between; "failed: " and
/// the reason when there is no picture, "partial: " first when it is not whole.
QByteArray colorsOf(const Result<Picture> &picture);

/// A few small files of each format.
QList<SmallFile> ownFiles();
