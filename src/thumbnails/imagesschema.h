#pragma once

#include <QByteArrayView>

class SqliteConnection;

// What an images.mdb holds. The template is made of this when the program is built; the program itself only copies it.

/// The live cache, its template, and the file that compaction writes; all in one folder.
inline constexpr char imagesFile[] = "images.mdb";
inline constexpr char imagesTemplateFile[] = "images.dat";
inline constexpr char imagesCompactedFile[] = "Cimages.mdb";

/// Table tblImages, one record for each name and size. tblImageCounts holds how many there are of each size: counting
/// half a million rows would take longer than opening the window.
extern const char imagesSchema[];

/// The order of names: without regard to case, byte by byte where a name is no text. Below, at or above 0.
int compareImageNames(QByteArrayView a, QByteArrayView b);

/// What every connection to such a file is given before its first statement: the order of names, and limits for what a
/// file from elsewhere may ask of the program.
bool prepareImagesConnection(SqliteConnection &connection);

/// Whether the file has the table with its fields; a view of that name, which may be endless, is none.
bool hasImagesTable(SqliteConnection &connection);
