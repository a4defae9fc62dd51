#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <map>
#include <utility>

/// The keys and values of one root, and their text. The grammar is this program's own, UTF-8, one thing a line:
///
///     Lumora registry 1
///     ["Software\\Tessaly\\Lumora V3\\Options"]
///     "MMVolume"="100"
///     ""="the unnamed value"
///     end
///
/// Inside quotes a backslash is "\\" and a quote "\""; "\n", "\r", "\t" and "\u" with four hex digits stand
/// for control characters and for units that have no UTF-8 form. Lines may end in CR LF. The last line tells a whole
/// file from one that was cut.
class RegistryTree
{
public:
    /// What keeps a hostile or runaway file from eating the machine.
    static constexpr qint64 largestFile = 4 * 1024 * 1024;
    static constexpr qsizetype longestPath = 1024;
    static constexpr qsizetype longestName = 16383;
    static constexpr qsizetype longestValue = 1024 * 1024;

    /// Reads what can be read; `damaged` is raised when that was not all.
    static RegistryTree fromText(const QByteArray &text, bool &damaged);
    QByteArray text() const;

    /// A path without empty parts: "\\a\\\\b\\" is "a\\b".
    static QString cleanPath(const QString &key);
    /// Keys and names compare by this form.
    static QString folded(const QString &name) { return name.toCaseFolded(); }

    const QString *value(const QString &key, const QString &name) const;
    bool hasKey(const QString &key) const;
    QVector<std::pair<QString, QString>> values(const QString &key) const;
    QStringList subKeys(const QString &key) const;

    /// Each gives whether it changed anything. Paths are clean.
    bool createKey(const QString &key);
    bool setValue(const QString &key, const QString &name, const QString &value);
    bool deleteValue(const QString &key, const QString &name);
    bool deleteKey(const QString &key);

private:
    struct Value
    {
        QString name;
        QString value;
        quint64 order = 0;
    };
    struct Key
    {
        QString path;
        std::map<QString, Value> values; ///< by folded name
    };
    using Keys = std::map<QString, Key>; ///< by folded path: what lies below a key stands in one run behind it

    static bool readLine(QStringView line, RegistryTree &tree, Key *&key);
    Key &addKey(const QString &path);
    bool store(Key &key, const QString &name, const QString &value);
    static QVector<const Value *> inOrder(const Key &key);
    std::pair<Keys::const_iterator, Keys::const_iterator> below(const QString &key) const;

    Keys m_keys;
    quint64 m_nextOrder = 0;
};
