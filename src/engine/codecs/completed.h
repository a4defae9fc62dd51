#pragma once

#include <QByteArray>

/// Files as the long-tail library takes them: what some writers leave out, because it follows from the rest, is put in.
/// All others come back as they are.

/// A PCX of 8 bits in one plane without a palette behind its pixels is grey, 0 = black; it gets that palette.
QByteArray completedPcx(const QByteArray &bytes);

/// An XWD of the visual class StaticGray or GrayScale with more than one bit a pixel becomes one of PseudoColor, with a
/// ramp of greys where it has no colours of its own.
QByteArray completedXwd(const QByteArray &bytes);
