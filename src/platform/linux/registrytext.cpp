#include "platform/linux/registrytext.h"

#include <QSet>
#include <QStringDecoder>

#include <algorithm>
#include <optional>

namespace {
constexpr QLatin1String firstLine("Lumora registry 1");
constexpr QLatin1String lastLine("end");
constexpr QChar separator = u'\\';

QString escaped(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (pair) {
            result += c;
            result += text[++i];
        } else if (c == u'\\' || c == u'"') {
            result += u'\\';
            result += c;
        } else if (c == u'\n') {
            result += QLatin1String("\\n");
        } else if (c == u'\r') {
            result += QLatin1String("\\r");
        } else if (c == u'\t') {
            result += QLatin1String("\\t");
        } else if (c.isSurrogate() || c.category() == QChar::Other_Control || c == QChar::ByteOrderMark) {
            result += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result;
}

// The unit behind a backslash at `at`, which moves to its last character; none for an escape that is not one.
std::optional<QChar> unescapedUnit(QStringView text, qsizetype &at)
{
    if (++at >= text.size())
        return std::nullopt;
    switch (text[at].unicode()) {
    case u'\\':
    case u'"':
        return text[at];
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    case u'u': {
        bool isNumber = false;
        const QStringView digits = text.mid(at + 1, 4);
        const ushort unit = digits.toUShort(&isNumber, 16);
        at += 4;
        if (isNumber && digits.size() == 4)
            return QChar(unit);
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

// A quoted text that starts at `at`, which moves behind it; none when a quote is missing or an escape is wrong.
std::optional<QString> readQuoted(QStringView text, qsizetype &at)
{
    if (text.mid(at, 1) != QLatin1String("\""))
        return std::nullopt;
    QString result;
    for (++at; at < text.size(); ++at) {
        const QChar c = text[at];
        if (c == u'"') {
            ++at;
            return result;
        }
        if (c != u'\\') {
            result += c;
        } else if (const std::optional<QChar> unit = unescapedUnit(text, at)) {
            result += *unit;
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::pair<QString, QString>> readValue(QStringView line)
{
    qsizetype at = 0;
    std::optional<QString> name = readQuoted(line, at);
    if (!name || line.mid(at, 1) != QLatin1String("="))
        return std::nullopt;
    std::optional<QString> value = readQuoted(line, ++at);
    if (!value || at != line.size())
        return std::nullopt;
    return std::pair(*name, *value);
}

std::optional<QString> readKey(QStringView line)
{
    qsizetype at = 1;
    const std::optional<QString> path = readQuoted(line, at);
    if (!path || line.mid(at) != QLatin1String("]") || path->size() > RegistryTree::longestPath)
        return std::nullopt;
    const QString clean = RegistryTree::cleanPath(*path);
    return clean.isEmpty() ? std::nullopt : std::optional(clean);
}
}

bool RegistryTree::readLine(QStringView line, RegistryTree &tree, Key *&key)
{
    if (line.startsWith(u'[')) {
        const std::optional<QString> path = readKey(line);
        key = path ? &tree.addKey(*path) : nullptr; // values below a key that cannot be read belong nowhere
        return path.has_value();
    }
    const auto pair = line.startsWith(u'"') ? readValue(line) : std::nullopt;
    if (!key || !pair || pair->first.size() > longestName || pair->second.size() > longestValue)
        return false;
    tree.store(*key, pair->first, pair->second);
    return true;
}

RegistryTree RegistryTree::fromText(const QByteArray &text, bool &damaged)
{
    RegistryTree tree;
    Key *key = nullptr;
    bool ended = false;
    bool first = true;
    damaged = false;
    for (qsizetype from = 0; from < text.size();) {
        qsizetype to = text.indexOf('\n', from);
        if (to < 0)
            to = text.size();
        QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString decoded = decode(QByteArrayView(text).sliced(from, to - from));
        const QStringView line = QStringView(decoded).endsWith(u'\r') ? QStringView(decoded).chopped(1) : decoded;
        from = to + 1;
        const bool isFirst = std::exchange(first, false);
        if (line.isEmpty() || (isFirst && line == firstLine))
            continue;
        damaged = damaged || isFirst || ended || decode.hasError();
        if (line == lastLine)
            ended = true;
        else if (decode.hasError() || !readLine(line, tree, key))
            damaged = true;
    }
    damaged = damaged || !ended;
    return tree;
}

QByteArray RegistryTree::text() const
{
    QString text = firstLine + QLatin1Char('\n');
    for (const auto &[_, key] : m_keys) {
        text += QLatin1String("[\"") + escaped(key.path) + QLatin1String("\"]\n");
        for (const Value *value : inOrder(key)) {
            text += QLatin1Char('"') + escaped(value->name) + QLatin1String("\"=\"") + escaped(value->value)
                + QLatin1String("\"\n");
        }
    }
    text += lastLine + QLatin1Char('\n');
    return text.toUtf8();
}

QString RegistryTree::cleanPath(const QString &key)
{
    return key.split(separator, Qt::SkipEmptyParts).join(separator);
}

RegistryTree::Key &RegistryTree::addKey(const QString &path)
{
    Key &key = m_keys[folded(path)];
    if (key.path.isEmpty())
        key.path = path;
    return key;
}

bool RegistryTree::store(Key &key, const QString &name, const QString &value)
{
    const auto [place, isNew] = key.values.try_emplace(folded(name), Value{name, value, m_nextOrder});
    if (isNew)
        ++m_nextOrder;
    else if (place->second.value == value)
        return false;
    place->second.value = value;
    return true;
}

QVector<const RegistryTree::Value *> RegistryTree::inOrder(const Key &key)
{
    QVector<const Value *> values;
    for (const auto &[_, value] : key.values)
        values.append(&value);
    std::sort(values.begin(), values.end(), [](const Value *a, const Value *b) { return a->order < b->order; });
    return values;
}

std::pair<RegistryTree::Keys::const_iterator, RegistryTree::Keys::const_iterator> RegistryTree::below(
    const QString &key) const
{
    if (key.isEmpty())
        return {m_keys.begin(), m_keys.end()};
    const QString from = folded(key) + separator;
    return {m_keys.lower_bound(from), m_keys.lower_bound(folded(key) + QChar(separator.unicode() + 1))};
}

const QString *RegistryTree::value(const QString &key, const QString &name) const
{
    const auto place = m_keys.find(folded(key));
    if (place == m_keys.end())
        return nullptr;
    const auto found = place->second.values.find(folded(name));
    return found == place->second.values.end() ? nullptr : &found->second.value;
}

bool RegistryTree::hasKey(const QString &key) const
{
    const auto [from, to] = below(key);
    return m_keys.contains(folded(key)) || from != to;
}

QVector<std::pair<QString, QString>> RegistryTree::values(const QString &key) const
{
    QVector<std::pair<QString, QString>> pairs;
    const auto place = m_keys.find(folded(key));
    if (place != m_keys.end()) {
        for (const Value *value : inOrder(place->second))
            pairs.append({value->name, value->value});
    }
    return pairs;
}

QStringList RegistryTree::subKeys(const QString &key) const
{
    QStringList names;
    QSet<QString> seen;
    const qsizetype level = key.isEmpty() ? 0 : key.count(separator) + 1;
    auto [at, to] = below(key);
    for (; at != to; ++at) {
        const QString name = at->second.path.section(separator, level, level);
        if (const QString form = folded(name); !seen.contains(form)) {
            seen.insert(form);
            names.append(name);
        }
    }
    return names;
}

bool RegistryTree::createKey(const QString &key)
{
    if (m_keys.contains(folded(key)))
        return false;
    // The keys above stand for themselves: they stay when this one goes.
    for (qsizetype end = key.indexOf(separator); end >= 0; end = key.indexOf(separator, end + 1))
        addKey(key.left(end));
    addKey(key);
    return true;
}

bool RegistryTree::setValue(const QString &key, const QString &name, const QString &value)
{
    const bool created = createKey(key);
    return store(addKey(key), name, value) || created;
}

bool RegistryTree::deleteValue(const QString &key, const QString &name)
{
    const auto place = m_keys.find(folded(key));
    return place != m_keys.end() && place->second.values.erase(folded(name)) > 0;
}

bool RegistryTree::deleteKey(const QString &key)
{
    const auto [from, to] = below(key);
    const bool hasBelow = from != to;
    m_keys.erase(from, to);
    return m_keys.erase(folded(key)) > 0 || hasBelow;
}
