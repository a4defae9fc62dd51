#include "platform/filefilter.h"

#include "platform/filepath.h"

namespace {
const QString everyFile = QStringLiteral("*");

QString inAnyCase(const QString &pattern)
{
    QString result;
    for (const QChar c : pattern) {
        if (c.toLower() == c.toUpper())
            result += c;
        else
            result += QStringLiteral("[%1%2]").arg(c.toLower()).arg(c.toUpper());
    }
    return result;
}
}

QVector<FileFilter> fileFilters(const QString &filter)
{
    QVector<FileFilter> filters;
    const QStringList parts = filter.split(u'|');
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        FileFilter one{parts[i].trimmed(), {}};
        for (const QString &pattern : parts[i + 1].split(u';', Qt::SkipEmptyParts)) {
            const QString clean = pattern.trimmed();
            one.patterns.append(clean == QLatin1String("*.*") ? everyFile : clean);
        }
        one.patterns.removeAll(QString());
        if (one.text.isEmpty() && one.patterns.isEmpty())
            continue;
        if (one.patterns.isEmpty())
            one.patterns.append(everyFile);
        filters.append(one);
    }
    return filters;
}

QStringList qtNameFilters(const QVector<FileFilter> &filters)
{
    QStringList names;
    for (const FileFilter &filter : filters) {
        QStringList patterns;
        for (const QString &pattern : filter.patterns)
            patterns.append(inAnyCase(pattern));
        names.append(QStringLiteral("%1 (%2)").arg(filter.text, patterns.join(u' ')));
    }
    return names;
}

QString withDefaultExtension(
    const QString &path, const QString &defaultExtension, const QVector<FileFilter> &filters, int filterIndex)
{
    const QString name = FileNameOfPath(path);
    const qsizetype dot = name.lastIndexOf(u'.');
    const bool hasExtension = dot > 0 && dot + 1 < name.size();
    if (name.isEmpty() || defaultExtension.isEmpty() || hasExtension)
        return path;
    QString extension = defaultExtension;
    if (filterIndex >= 1 && filterIndex <= filters.size()) {
        const QStringList &patterns = filters[filterIndex - 1].patterns;
        const bool known = patterns.contains(QLatin1String("*.") + defaultExtension, Qt::CaseInsensitive)
            || patterns.contains(everyFile);
        if (!known && patterns.first().startsWith(QLatin1String("*.")))
            extension = patterns.first().mid(2);
    }
    return (name.endsWith(u'.') && name.size() > 1 ? path : path + QLatin1Char('.')) + extension;
}
