#include "engine/metadata.h"

QString iptcText(const PictureTexts &texts)
{
    QStringList entries;
    for (const auto &[name, value] : texts.iptc) {
        QString line = value;
        // A value of several lines would otherwise read as several entries.
        line.replace(QLatin1String("\r\n"), QLatin1String(" ")).replace(QLatin1Char('\n'), QLatin1Char(' '));
        entries.append(name + QLatin1Char('=') + line.replace(QLatin1Char('\r'), QLatin1Char(' ')));
    }
    return entries.join(QLatin1String(": \n"));
}
