#pragma once

#include "engine/codecs/bytes.h"

#include <QStringDecoder>

/// Text whose encoding a file does not tell: UTF-8 where it is valid, Latin-1 otherwise; up to the first zero, without
/// blanks around it.
inline QString textOfBytes(Bytes bytes)
{
    QByteArray text(reinterpret_cast<const char *>(bytes.data()), qsizetype(bytes.size()));
    if (const qsizetype end = text.indexOf('\0'); end >= 0)
        text.truncate(end);
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString decoded = utf8.decode(text);
    return (utf8.hasError() ? QString::fromLatin1(text) : decoded).trimmed();
}
