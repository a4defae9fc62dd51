#pragma once

#include "engine/codecs/bytes.h"
#include "engine/picture.h"

/// The raw blocks of the formats whose containers are simple, by a walk over their pieces: no pixel is unpacked, and
/// what is damaged or larger than limits::maximumMetadataBytes is passed over.

/// JPEG: EXIF and XMP of APP1, IPTC of the Photoshop resources in APP13, comments.
Metadata jpegMetadata(const QByteArray &file);

/// PNG: eXIf, the texts "XML:com.adobe.xmp", "Comment" (else "Description"), and the "Raw profile type" texts of older
/// programs.
Metadata pngMetadata(const QByteArray &file);

/// GIF: the first comment.
Metadata gifMetadata(const QByteArray &file);

/// The IPTC datasets among Photoshop's resource blocks.
QByteArray iptcOfResources(Bytes resources);

/// Sets the resolution that EXIF tells on an image for which nothing else told one.
void applyExifResolution(QImage &pixels, const QByteArray &exif);
