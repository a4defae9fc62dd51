#include "engine/codecs/warmup.h"

#include "engine/codecs/longtail.h"
#include "engine/codecs/vectortext.h"
#include "engine/limits.h"

#include <QFontDatabase>
#include <QImage>
#include <QPainter>

#include <thread>

namespace {

void decodeAs(const char *codec, const QByteArray &bytes)
{
    for (const Codec *row : longTailCodecs()) {
        if (qstrcmp(row->name, codec) == 0)
            ignore(row->decode({bytes, QString()}, {}));
    }
}

// A font is found, opened and kept at the first text that is painted with it.
void openFonts()
{
    QImage page(64, 32, QImage::Format_RGB32);
    QPainter painter(&page);
    for (const QFontDatabase::SystemFont kind : {QFontDatabase::GeneralFont, QFontDatabase::FixedFont}) {
        painter.setFont(QFontDatabase::systemFont(kind));
        painter.drawText(4, 20, QStringLiteral("Lumora"));
    }
}

}

void warmUpCodecs(const PictureMemory &memory)
{
    ignore(limits::decodeBudget());
    ignore(std::thread::hardware_concurrency());
    // The long-tail library reads its lists and asks the system for its limits.
    decodeAs("PNM", QByteArrayLiteral("P6 1 1 255\nabc"));
    openFonts();
    warmUpVectorText();
    setPictureMemory(memory);
}
