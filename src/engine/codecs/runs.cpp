#include "engine/codecs/runs.h"

#include <algorithm>

/// Takes the next control apart; false at the end of the input.
bool RunReader::readControl()
{
    const ByteReader bytes(m_packed);
    const auto takeValue = [&] {
        if (!bytes.has(m_at, m_unit))
            return false;
        std::copy_n(m_packed.begin() + std::ptrdiff_t(m_at), m_unit, m_value.begin());
        m_at += m_unit;
        return true;
    };
    if (!bytes.has(m_at, m_code == RunCode::Symbian12 ? 2 : 1))
        return false;
    const uchar control = bytes.u8(m_at);
    size_t count = 1;
    switch (m_code) {
    case RunCode::Symbian:
        ++m_at;
        m_isRun = control < 128;
        count = m_isRun ? control + 1U : 256U - control;
        break;
    case RunCode::Targa:
        ++m_at;
        m_isRun = control >= 128;
        count = (control & 127U) + 1;
        break;
    case RunCode::Symbian12:
        m_isRun = true;
        count = (bytes.u8(m_at + 1) >> 4) + 1U;
        m_value = {control, uchar(bytes.u8(m_at + 1) & 15)};
        m_at += 2;
        m_pending = count;
        return true;
    case RunCode::Sun:
        m_isRun = control == 0x80;
        if (!m_isRun) {
            const auto begin = m_packed.begin() + std::ptrdiff_t(m_at);
            m_pending = size_t(std::find(begin, m_packed.end(), uchar(0x80)) - begin);
            return true;
        }
        if (!bytes.has(m_at, 2))
            return false;
        count = bytes.u8(m_at + 1) + 1U;
        // The escape itself, where no value follows, is its own value.
        m_at += count == 1 ? 0 : 2;
        if (!takeValue())
            return false;
        m_at += count == 1 ? 1 : 0;
        m_pending = count;
        return true;
    }
    if (m_isRun && !takeValue())
        return false;
    m_pending = count;
    return true;
}

void RunReader::repeat(std::span<uchar> out) const
{
    if (m_unit == 1) {
        std::fill(out.begin(), out.end(), m_value[0]);
        return;
    }
    for (size_t i = 0; i < out.size(); i += m_unit)
        std::copy_n(m_value.begin(), m_unit, out.begin() + std::ptrdiff_t(i));
}

size_t RunReader::read(std::span<uchar> out)
{
    size_t filled = 0;
    while (filled < out.size()) {
        if (m_pending == 0 && !readControl())
            break;
        size_t units = std::min(m_pending, (out.size() - filled) / m_unit);
        if (m_isRun) {
            repeat(out.subspan(filled, units * m_unit));
        } else {
            units = std::min(units, (m_packed.size() - m_at) / m_unit);
            if (units == 0)
                break;
            std::copy_n(m_packed.begin() + std::ptrdiff_t(m_at), units * m_unit, out.begin() + std::ptrdiff_t(filled));
            m_at += units * m_unit;
        }
        filled += units * m_unit;
        m_pending -= units;
    }
    return filled;
}

void packRuns(Bytes units, RunCode code, size_t unit, QByteArray &out)
{
    constexpr size_t longest = 128;
    const size_t count = units.size() / unit;
    const auto same = [&](size_t a, size_t b) {
        return std::memcmp(units.data() + a * unit, units.data() + b * unit, unit) == 0;
    };
    const auto append = [&](size_t control, size_t first, size_t length) {
        out.append(char(control));
        out.append(reinterpret_cast<const char *>(units.data() + first * unit), qsizetype(length * unit));
    };
    // A pair of single bytes inside a literal would not pay for the controls around it.
    const size_t worthwhile = unit == 1 ? 3 : 2;
    const auto startsRun = [&](size_t at) {
        if (at + worthwhile > count)
            return false;
        for (size_t i = 1; i < worthwhile; ++i) {
            if (!same(at, at + i))
                return false;
        }
        return true;
    };
    size_t at = 0;
    while (at < count) {
        size_t length = 1;
        if (startsRun(at)) {
            while (at + length < count && length < longest && same(at, at + length))
                ++length;
            append(code == RunCode::Targa ? 127 + length : length - 1, at, 1);
        } else {
            while (at + length < count && length < longest && !startsRun(at + length))
                ++length;
            append(code == RunCode::Targa ? length - 1 : 256 - length, at, length);
        }
        at += length;
    }
}
