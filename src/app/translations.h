#pragma once

#include <QLocale>
#include <QStringList>

/// The user's language. Texts stand in the sources in English; the other languages come from files beside the program
/// (translationsFolder()), and what a file does not hold is said in English.

/// The files to look for, best first, without folder and suffix: for "de-AT" lumora_de_AT, then lumora_de. Nothing
/// behind English or C, whose texts are the program's own.
QStringList translationNames(const QStringList &languages);
/// Gives the application the language that LANGUAGE, LC_ALL, LC_MESSAGES and LANG ask for, with Qt's own texts in it.
/// To be called before there is any window. The plain C locale is English whatever LANGUAGE says, as for the system's
/// own programs.
void installTranslations();

/// The language that texts are shown in: how numbers are written among them. Numbers in files are not written so.
QLocale textLocale();
/// The path of a resource in that language, ":/lumora/help/index_de.html", else as it is given.
QString inTextLanguage(const QString &resource);
