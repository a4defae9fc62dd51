#pragma once

#include "engine/result.h"

#include <QByteArray>
#include <QSizeF>

/// A drawing's text, made harmless for a reader that trusts it.
struct SvgSource
{
    QByteArray xml;
    QSizeF size; ///< pixels at 96 to the inch, from the root's width, height and viewBox; empty when they tell nothing
    bool keepsShape = true; ///< the root does not ask to be stretched
};

/// Unpacks gzip and writes the text anew without document type, stylesheets from elsewhere, scripts, animations and
/// references that lead out of the file. Fails for what is no SVG, nests too deeply, or would draw more than a million
/// things by use of uses.
Result<SvgSource> cleanSvg(const QByteArray &file);

/// Whether the start of a file is that of an SVG, plain or packed.
bool looksLikeSvg(const QByteArray &head);
