#pragma once

#include <QByteArray>

/// A file as the long-tail library takes it: what some writers leave out, because it follows from the rest, is put in,
/// and what a cut file lacks comes as blank pixels. All others come back as they are.
struct CompletedFile
{
    QByteArray bytes;
    bool wasCut = false; ///< pixels were missing
};

/// A PCX of 8 bits in one plane without a palette behind its pixels is grey, 0 = black; it gets that palette.
/// One of version 3 has no palette of its own; sixteen colours without any are those of the EGA.
CompletedFile completedPcx(const QByteArray &bytes);

/// The last picture that begins in the file.
CompletedFile completedDcx(const QByteArray &bytes);

/// An XWD of the visual class StaticGray or GrayScale with more than one bit a pixel becomes one of PseudoColor, with a
/// ramp of greys where it has no colours of its own. A header of the other byte order is turned.
CompletedFile completedXwd(const QByteArray &bytes);

CompletedFile completedMac(const QByteArray &bytes);
CompletedFile completedWbmp(const QByteArray &bytes);
CompletedFile completedArt(const QByteArray &bytes);
CompletedFile completedUtah(const QByteArray &bytes);
