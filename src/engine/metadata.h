#pragma once

#include "engine/decode.h"

#include <QList>

#include <utility>

/// The texts that a picture file carries, for people to read. All are empty where the file has none.
struct PictureTexts
{
    QString description; ///< EXIF ImageDescription, else the IPTC caption, else the XMP description
    QString comment; ///< the file's comment (JPEG, PNG, GIF), else EXIF UserComment, else XPComment
    QString cameraInfo; ///< make, model, exposure time, aperture, ISO, flash, focal length: one line each
    QString cameraDate; ///< EXIF DateTimeOriginal, else DateTime, as it stands: "2020:07:15 08:35:14"
    QList<std::pair<QString, QString>> iptc; ///< names and values in the file's order; repeated names stay apart
};

/// The texts of a whole file's bytes, read behind the process boundary. A file without any, or of a format that holds
/// none, gives empty texts; a failure says that the file could not be taken apart.
Result<PictureTexts> readTexts(const EncodedFile &file);
Result<PictureTexts> readTextsOfFile(const QString &path);

/// All entries as one text, "name=value" each, parted by ": " and a line break.
QString iptcText(const PictureTexts &texts);
