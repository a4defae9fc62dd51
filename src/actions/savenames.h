#pragma once

#include <QString>

#include <optional>

/// Names that are proposed for what is saved; `fileName` comes without its folder.

/// Up to the first dot, without blanks around it: "a" of "a.b.jpg". None when there is no dot to cut at.
std::optional<QString> nameBeforeFirstDot(const QString &fileName);

/// "tbn_sea.BMP" of "sea.jpg". Exactly three letters make room for "BMP", however long the extension is: "sea.jpeg"
/// gives "tbn_sea.jBMP".
QString thumbnailName(const QString &fileName);
