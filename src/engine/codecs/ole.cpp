#include "engine/codecs/ole.h"

#include "engine/codecs/rawtext.h"

#include <QTimeZone>

#include <algorithm>
#include <mutex>

// Qt's word of the same name stands in the way of GLib's headers.
#undef signals
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-utils.h>

namespace {

constexpr int maximumNames = 4096;
constexpr size_t maximumProperties = 4096;

void unreference(void *object)
{
    g_object_unref(object);
}

void sayNothing(const gchar *, GLogLevelFlags, const gchar *, gpointer)
{
}

void initialize()
{
    gsf_init();
    // Damaged files are this program's daily work and nothing to write to the terminal.
    for (const char *domain : {"libgsf:msole", "libgsf"})
        g_log_set_handler(domain, GLogLevelFlags(G_LOG_LEVEL_MASK | G_LOG_FLAG_RECURSION), sayNothing, nullptr);
    // A stream that cannot be reached is reported without a name.
    g_log_set_handler(nullptr, G_LOG_LEVEL_WARNING, sayNothing, nullptr);
}

std::shared_ptr<void> owned(void *object)
{
    return object ? std::shared_ptr<void>(object, unreference) : nullptr;
}

GsfInfile *infile(const std::shared_ptr<void> &handle)
{
    return static_cast<GsfInfile *>(handle.get());
}

std::shared_ptr<void> childOf(const std::shared_ptr<void> &handle, const QString &name)
{
    return owned(gsf_infile_child_by_name(infile(handle), name.toUtf8().constData()));
}

}

std::optional<OleFolder> OleFolder::open(const QByteArray &file)
{
    static std::once_flag once;
    std::call_once(once, initialize);
    const std::shared_ptr<void> input =
        owned(gsf_input_memory_new(reinterpret_cast<const guint8 *>(file.constData()), gsf_off_t(file.size()), FALSE));
    if (!input)
        return {};
    std::shared_ptr<void> root = owned(gsf_infile_msole_new(static_cast<GsfInput *>(input.get()), nullptr));
    if (!root)
        return {};
    return OleFolder(std::move(root), file.size());
}

QStringList OleFolder::names() const
{
    QStringList names;
    const int count = std::min(gsf_infile_num_children(infile(m_handle)), maximumNames);
    for (int i = 0; i < count; ++i)
        names.append(QString::fromUtf8(gsf_infile_name_by_index(infile(m_handle), i)));
    return names;
}

std::optional<OleFolder> OleFolder::folder(const QString &name) const
{
    std::shared_ptr<void> child = childOf(m_handle, name);
    if (!child || !GSF_IS_INFILE(child.get()) || gsf_infile_num_children(infile(child)) < 0)
        return {};
    return OleFolder(std::move(child), m_fileBytes);
}

QByteArray OleFolder::stream(const QString &name) const
{
    const std::shared_ptr<void> child = childOf(m_handle, name);
    if (!child || (GSF_IS_INFILE(child.get()) && gsf_infile_num_children(infile(child)) >= 0))
        return {};
    GsfInput *const input = static_cast<GsfInput *>(child.get());
    const qsizetype size = qsizetype(std::min<gsf_off_t>(gsf_input_size(input), m_fileBytes));
    QByteArray bytes(std::max<qsizetype>(size, 0), '\0');
    // In parts, so that what stands in front of a damaged place comes through.
    constexpr qsizetype atOnce = 64 * 1024;
    qsizetype filled = 0;
    while (filled < bytes.size()) {
        const qsizetype count = std::min(atOnce, bytes.size() - filled);
        if (!gsf_input_read(input, size_t(count), reinterpret_cast<guint8 *>(bytes.data() + filled)))
            break;
        filled += count;
    }
    bytes.truncate(filled);
    return bytes;
}

OleProperties::OleProperties(const QByteArray &stream)
    : m_stream(stream)
{
    const ByteReader reader(m_stream);
    constexpr size_t header = 48;
    if (!reader.has(0, header) || reader.u16le(0) != 0xfffe)
        return;
    const size_t section = reader.u32le(44);
    const size_t count = std::min<size_t>(reader.u32le(section + 4), maximumProperties);
    for (size_t i = 0; i < count && reader.has(section + 8 + 8 * i, 8); ++i) {
        const size_t entry = section + 8 + 8 * i;
        m_places.emplace(reader.u32le(entry), section + reader.u32le(entry + 4));
    }
}

size_t OleProperties::valueAt(quint32 id, quint32 type) const
{
    const auto place = m_places.find(id);
    const ByteReader reader(m_stream);
    if (place == m_places.end() || !reader.has(place->second, 8) || reader.u32le(place->second) != type)
        return 0;
    return place->second + 4;
}

Bytes OleProperties::part(size_t at, quint64 count) const
{
    const Bytes all = bytesOf(m_stream);
    if (at >= all.size())
        return {};
    return all.subspan(at, size_t(std::min<quint64>(count, all.size() - at)));
}

std::optional<quint32> OleProperties::number(quint32 id) const
{
    const ByteReader reader(m_stream);
    for (const quint32 type : {Int32, UInt32}) {
        if (const size_t at = valueAt(id, type))
            return reader.u32le(at);
    }
    for (const quint32 type : {Int16, UInt16}) {
        if (const size_t at = valueAt(id, type))
            return reader.u16le(at);
    }
    return {};
}

std::optional<float> OleProperties::real(quint32 id) const
{
    const size_t at = valueAt(id, Real32);
    if (!at)
        return {};
    const quint32 bits = ByteReader(m_stream).u32le(at);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

QString OleProperties::text(quint32 id) const
{
    const ByteReader reader(m_stream);
    if (const size_t at = valueAt(id, Text))
        return textOfBytes(part(at + 4, reader.u32le(at)));
    const size_t at = valueAt(id, WideText);
    if (!at)
        return {};
    QString text;
    const size_t count = part(at + 4, 2 * quint64(reader.u32le(at))).size() / 2;
    for (size_t i = 0; i < count && reader.u16le(at + 4 + 2 * i) != 0; ++i)
        text.append(QChar(reader.u16le(at + 4 + 2 * i)));
    return text.trimmed();
}

QDateTime OleProperties::time(quint32 id) const
{
    const size_t at = valueAt(id, Time);
    if (!at)
        return {};
    // Tenths of microseconds since 1601.
    const qint64 milliseconds = qint64(ByteReader(m_stream).u64(at, false) / 10'000);
    return QDateTime(QDate(1601, 1, 1), QTime(0, 0), QTimeZone::utc()).addMSecs(milliseconds);
}

Bytes OleProperties::blob(quint32 id) const
{
    const size_t at = valueAt(id, Blob);
    return at ? part(at + 4, ByteReader(m_stream).u32le(at)) : Bytes{};
}
