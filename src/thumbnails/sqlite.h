#pragma once

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

/// A prepared statement. Values are bound, never written into the text. Finalised at the end of its life, which must
/// come before its connection closes.
class SqliteStatement
{
public:
    explicit SqliteStatement(sqlite3_stmt *statement);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement &) = delete;
    SqliteStatement &operator=(const SqliteStatement &) = delete;

    /// Numbered from 1, as in the text.
    void bind(int index, qint64 value);
    void bindText(int index, const QByteArray &utf8);
    void bindBlob(int index, const QByteArray &bytes);
    void bindNull(int index);
    /// True for a row; false at the end and after a failure, see failed().
    bool step();
    bool failed() const { return m_failed; }
    /// Makes it ready for another run; what was bound stays.
    void reset();

    /// Numbered from 0. A value of another type is converted; there is nothing that cannot be.
    qint64 number(int column) const;
    QByteArray text(int column) const; ///< UTF-8
    QByteArray bytes(int column) const;
    bool isNull(int column) const;

private:
    sqlite3_stmt *m_statement;
    bool m_failed = false;
};

/// A connection to one SQLite file, for one thread at a time.
class SqliteConnection
{
public:
    SqliteConnection() = default;
    ~SqliteConnection();
    SqliteConnection(const SqliteConnection &) = delete;
    SqliteConnection &operator=(const SqliteConnection &) = delete;

    enum class Open { Existing, Create };
    /// Waits for another process up to `patience` milliseconds, at each later step too.
    bool open(const QString &path, Open how, int patience);
    /// False when it could not be closed as it should; it is gone all the same.
    bool close();
    bool isOpen() const { return m_handle; }

    /// Runs statements that give no rows, or whose rows are not wanted.
    bool run(const char *sql);
    /// The statement of this text, prepared at its first use and kept. Null when it cannot be prepared. `sql` must
    /// live as long as the connection: it is its address that counts.
    SqliteStatement *statement(const char *sql);
    /// One that is not kept.
    std::unique_ptr<SqliteStatement> prepare(const char *sql);
    /// The first column of the first row; empty when there is none.
    QByteArray value(const char *sql);

    /// Rows that the last statement changed.
    int changes() const;
    /// The file is damaged, or none of SQLite's: the last failure said so.
    bool isDamaged() const;
    /// Another process had what the last failure was about.
    bool isBusy() const;
    /// The open file has not the name any more that it was opened by: removed, renamed or replaced.
    bool isMoved() const;
    /// The file can be read: what the last statement did not find is not there.
    bool isReadable() const;
    /// The last failure, for the log.
    QString reason() const;
    /// Ends the statement that another thread has under way; callable from any thread while the connection is open.
    void interrupt();
    sqlite3 *handle() const { return m_handle; }

private:
    sqlite3 *m_handle = nullptr;
    std::map<const char *, std::unique_ptr<SqliteStatement>> m_statements;
};
