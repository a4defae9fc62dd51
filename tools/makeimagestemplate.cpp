// Makes the template of the thumbnail cache: an images.dat without any record.
//
//     makeimagestemplate FILE

#include "thumbnails/imagesschema.h"
#include "thumbnails/sqlite.h"

#include <QFile>

#include <cstdio>

namespace {

/// The log lets one process write while others read.
constexpr char pragmas[] = "PRAGMA page_size=4096; PRAGMA journal_mode=WAL;";

bool make(SqliteConnection &connection)
{
    return connection.run(pragmas) && prepareImagesConnection(connection) && connection.run("BEGIN")
        && connection.run(imagesSchema) && connection.run("COMMIT") && hasImagesTable(connection);
}

}

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    const QString path = QString::fromLocal8Bit(argv[1]);
    QFile::remove(path);
    SqliteConnection connection;
    if (!connection.open(path, SqliteConnection::Open::Create, 0) || !make(connection)) {
        std::fprintf(stderr, "makeimagestemplate: %s\n", qPrintable(connection.reason()));
        return 1;
    }
    return connection.close() ? 0 : 1;
}
