#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// The filter text of the common file dialogs: pairs of a visible text and its patterns, "Lists
/// (*.Lsl)|*.Lsl|All|*.*|".
struct FileFilter
{
    QString text; ///< "Lists (*.Lsl)"
    QStringList patterns; ///< "*.Lsl"; "*" alone for every file
};
QVector<FileFilter> fileFilters(const QString &filter);

/// The same as Qt's dialogs take it, one text per filter. The patterns match in any case also where the desktop's own
/// dialog compares letter by letter: "*.[lL][sS][lL]".
QStringList qtNameFilters(const QVector<FileFilter> &filters);

/// `path` with an extension when its name has none: that of the chosen filter, when the filter does not hold the
/// default one, so that a name typed under "JPEG" does not end in ".BMP". An empty default adds nothing. `filterIndex`
/// is 1-based.
QString withDefaultExtension(
    const QString &path, const QString &defaultExtension, const QVector<FileFilter> &filters, int filterIndex);
