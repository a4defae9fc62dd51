#pragma once

#include "actions/convertcommand.h"

#include <optional>

/// The command line of a conversion: "--convert FORMATS" and what goes with it.
struct ConvertLine
{
    ConvertCommand command;
    bool help = false;
    bool version = false;
    QString error; ///< one line for stderr, exit status 2
};

/// Whether these arguments ask for a conversion and not for a window.
bool asksForConversion(const QStringList &arguments);
ConvertLine parseConvertLine(const QStringList &arguments, const QString &currentFolder);

/// The index of a format's word, by batch index: its batch folder in lower case, "png", "png_inter". Taken in any case
/// and with a dot in front; "jpeg" and "tiff" are known too.
std::optional<int> conversionTypeOfWord(const QString &word);
QString conversionTypeWord(int batchIndex);

/// The part of --help that tells of it.
QString convertHelpText();
