#pragma once

#include "engine/decodehere.h"

#include <QHash>

#include <malloc.h>

/// What a decoder makes of damaged bytes.
namespace damage {

/// Decodes and touches every pixel; the answer, pixels or a reason, as a number to compare. 0: neither.
inline size_t answer(const EncodedFile &file)
{
    ignore(probeHere(file));
    const Result<Picture> picture = decodeHere(file);
    if (!picture)
        return picture.reason().isEmpty() ? 0 : 1;
    // Through the colour table too: an index behind its end would be read there.
    const QImage pixels = picture->pixels.convertToFormat(QImage::Format_ARGB32);
    size_t sum = 2;
    for (int y = 0; y < pixels.height(); ++y)
        sum = qHashBits(pixels.constScanLine(y), size_t(pixels.width()) * 4, sum);
    return sum;
}

/// Twice, with other bytes in fresh memory: the answer must come from the file and nothing else.
inline bool isAnswered(const EncodedFile &file)
{
    mallopt(M_PERTURB, 0x55);
    const size_t first = answer(file);
    mallopt(M_PERTURB, 0xaa);
    const size_t second = answer(file);
    mallopt(M_PERTURB, 0);
    return first != 0 && first == second;
}

/// Cuts at every byte and changes every byte; the first damage without an honest answer, or nothing.
inline QString unanswered(const EncodedFile &file, const QList<int> &changes = {0x01, 0x80, 0xff})
{
    for (qsizetype at = 0; at < file.bytes.size(); ++at) {
        if (!isAnswered({file.bytes.left(at), file.extension}))
            return QStringLiteral("cut to %1 bytes").arg(at);
        for (const int change : changes) {
            EncodedFile changed = file;
            changed.bytes[at] = char(changed.bytes.at(at) ^ change);
            if (!isAnswered(changed))
                return QStringLiteral("byte %1 changed by %2").arg(at).arg(change);
        }
    }
    return {};
}

}
