#pragma once

#include <QString>

/// Lower case, then upper case for the first character and for each behind a blank, a dot or a path separator.
QString ProperCase(const QString &text);

/// "800 X 600 X 24"
QString dimensionsText(int width, int height, double depth);

/// What ShowStatusBarText writes for a name.
struct StatusText
{
    QString name; ///< panel 2
    QString extension; ///< for the icon: from the first dot of the text; empty for an empty text
};
StatusText statusText(const QString &text, bool withDimensions);

/// " - not available", behind a name.
QString notAvailable();
