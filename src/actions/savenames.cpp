#include "actions/savenames.h"

std::optional<QString> nameBeforeFirstDot(const QString &fileName)
{
    const qsizetype dot = fileName.indexOf(u'.');
    return dot < 0 ? std::nullopt : std::optional(fileName.left(dot).trimmed());
}

QString thumbnailName(const QString &fileName)
{
    constexpr qsizetype cut = 3;
    const QString name = fileName.trimmed();
    return QStringLiteral("tbn_") + name.chopped(qMin(cut, name.size())) + QStringLiteral("BMP");
}
