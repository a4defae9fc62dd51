#include "viewer/statustext.h"

#include "platform/filepath.h"

#include <QCoreApplication>

QString ProperCase(const QString &text)
{
    QString result = text.toLower();
    bool startsWord = true;
    for (QChar &c : result) {
        if (startsWord)
            c = c.toUpper();
        startsWord = c == QLatin1Char(' ') || c == QLatin1Char('.') || c == QLatin1Char('/');
    }
    return result;
}

QString dimensionsText(int width, int height, double depth)
{
    return QStringLiteral("%1 X %2 X %3").arg(width).arg(height).arg(depth);
}

StatusText statusText(const QString &text, bool withDimensions)
{
    const QString proper = ProperCase(text);
    StatusText result;
    result.name = withDimensions ? FileNameOfPath(proper) : proper;
    // The first dot counts, so a folder with a dot in its name leaves the icon as it was.
    const qsizetype dot = proper.indexOf(QLatin1Char('.'));
    if (dot >= 0)
        result.extension = proper.mid(dot);
    return result;
}

QString notAvailable()
{
    return QCoreApplication::translate("StatusText", " - not available");
}
