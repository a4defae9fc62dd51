#pragma once

#include "engine/isolation/protocol.h"

#include <optional>

namespace isolation {

/// One for all kinds of work.
struct Answer
{
    bool succeeded = false;
    QString reason;
    Picture picture; ///< of a probe only its info
    PictureTexts texts;
};

/// The bytes of one row; 0 for a format that no picture has.
qint64 strideOf(QSize size, quint32 format);
/// Whether a picture of these numbers may be: an existing format and within the limits.
bool isAcceptable(QSize size, quint32 format);

/// The fields of an answer, and back. What comes back was made by a process that may have been taken over: an answer
/// that makes no sense gives nothing. `pixels` is what has been taken out of the arena already.
struct Packed
{
    Done head;
    QByteArray fields;
};
Packed packed(const Answer &answer, bool pixelsInFields);
std::optional<qint64> fieldBytes(const Done &head);
std::optional<Answer> unpacked(const Done &head, const QByteArray &fields, Work work, QImage pixels);

}
