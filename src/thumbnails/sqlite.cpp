#include "thumbnails/sqlite.h"

#include "platform/filepath.h"

#include <sqlite3.h>

SqliteStatement::SqliteStatement(sqlite3_stmt *statement)
    : m_statement(statement)
{
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(m_statement);
}

void SqliteStatement::bind(int index, qint64 value)
{
    sqlite3_bind_int64(m_statement, index, value);
}

void SqliteStatement::bindText(int index, const QByteArray &utf8)
{
    sqlite3_bind_text(m_statement, index, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
}

void SqliteStatement::bindBlob(int index, const QByteArray &bytes)
{
    sqlite3_bind_blob(m_statement, index, bytes.constData(), int(bytes.size()), SQLITE_TRANSIENT);
}

void SqliteStatement::bindNull(int index)
{
    sqlite3_bind_null(m_statement, index);
}

bool SqliteStatement::step()
{
    const int outcome = sqlite3_step(m_statement);
    m_failed = outcome != SQLITE_ROW && outcome != SQLITE_DONE;
    return outcome == SQLITE_ROW;
}

void SqliteStatement::reset()
{
    sqlite3_reset(m_statement);
}

qint64 SqliteStatement::number(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

QByteArray SqliteStatement::text(int column) const
{
    const uchar *text = sqlite3_column_text(m_statement, column);
    return text ? QByteArray(reinterpret_cast<const char *>(text), sqlite3_column_bytes(m_statement, column))
                : QByteArray();
}

QByteArray SqliteStatement::bytes(int column) const
{
    const void *bytes = sqlite3_column_blob(m_statement, column);
    return bytes ? QByteArray(static_cast<const char *>(bytes), sqlite3_column_bytes(m_statement, column))
                 : QByteArray();
}

bool SqliteStatement::isNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

SqliteConnection::~SqliteConnection()
{
    close();
}

bool SqliteConnection::open(const QString &path, Open how, int patience)
{
    close();
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_EXRESCODE
        | (how == Open::Create ? SQLITE_OPEN_CREATE : 0);
    // A failed open leaves a handle too, which only tells why.
    if (sqlite3_open_v2(pathToBytes(path).constData(), &m_handle, flags, nullptr) != SQLITE_OK)
        return false;
    sqlite3_busy_timeout(m_handle, patience);
    return true;
}

bool SqliteConnection::close()
{
    // An unfinished statement would hold the file, and leave its log behind.
    m_statements.clear();
    const bool closed = sqlite3_close(m_handle) == SQLITE_OK;
    if (!closed)
        sqlite3_close_v2(m_handle);
    m_handle = nullptr;
    return closed;
}

bool SqliteConnection::run(const char *sql)
{
    return m_handle && sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::unique_ptr<SqliteStatement> SqliteConnection::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    if (!m_handle || sqlite3_prepare_v3(m_handle, sql, -1, 0, &statement, nullptr) != SQLITE_OK)
        return nullptr;
    return std::make_unique<SqliteStatement>(statement);
}

SqliteStatement *SqliteConnection::statement(const char *sql)
{
    auto &kept = m_statements[sql];
    if (!kept)
        kept = prepare(sql);
    if (kept)
        kept->reset();
    return kept.get();
}

QByteArray SqliteConnection::value(const char *sql)
{
    const auto statement = prepare(sql);
    return statement && statement->step() ? statement->text(0) : QByteArray();
}

int SqliteConnection::changes() const
{
    return sqlite3_changes(m_handle);
}

bool SqliteConnection::isDamaged() const
{
    if (!m_handle)
        return false;
    const int code = sqlite3_extended_errcode(m_handle);
    return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB || code == SQLITE_IOERR_SHORT_READ;
}

bool SqliteConnection::isBusy() const
{
    return m_handle && (sqlite3_errcode(m_handle) & 0xff) == SQLITE_BUSY;
}

bool SqliteConnection::isMoved() const
{
    int moved = 0;
    return m_handle && sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved;
}

bool SqliteConnection::isReadable() const
{
    if (!m_handle)
        return false;
    const int code = sqlite3_errcode(m_handle);
    return code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE || (code & 0xff) == SQLITE_ERROR;
}

QString SqliteConnection::reason() const
{
    return m_handle ? QString::fromUtf8(sqlite3_errmsg(m_handle)) : QStringLiteral("out of memory");
}

void SqliteConnection::interrupt()
{
    if (m_handle)
        sqlite3_interrupt(m_handle);
}
