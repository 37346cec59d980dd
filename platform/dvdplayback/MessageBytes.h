#pragma once

#include <QByteArray>
#include <QString>

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace Tessaron
{

/// Puts values behind each other as bytes, integers with their lowest byte first.
class MessageWriter
{
public:
    template <std::integral Integer>
    void add(Integer value)
    {
        using Unsigned = std::make_unsigned_t<Integer>;
        for (std::size_t index = 0; index < sizeof(Integer); ++index)
            m_bytes.append(static_cast<char>(static_cast<Unsigned>(value) >> (8 * index)));
    }
    void add(bool value) { add(std::uint8_t(value ? 1 : 0)); }
    void add(const QByteArray &bytes)
    {
        add(std::uint32_t(bytes.size()));
        m_bytes.append(bytes);
    }
    void add(const QString &text) { add(text.toUtf8()); }

    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

/// Takes them back. The bytes may be anything: what is not there reads as zero or empty, and isGood() is false from
/// then on. Keeps no copy of the bytes.
class MessageReader
{
public:
    explicit MessageReader(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }

    template <std::integral Integer>
    [[nodiscard]] Integer take()
    {
        using Unsigned = std::make_unsigned_t<Integer>;
        Unsigned value = 0;
        if (remaining() < sizeof(Integer)) {
            m_isGood = false;
            return 0;
        }
        for (std::size_t index = 0; index < sizeof(Integer); ++index)
            value = static_cast<Unsigned>(
                value
                | static_cast<Unsigned>(static_cast<Unsigned>(std::uint8_t(m_bytes[m_position++])) << (8 * index)));
        return static_cast<Integer>(value);
    }
    [[nodiscard]] bool takeBool()
    {
        const auto value = take<std::uint8_t>();
        m_isGood = m_isGood && value <= 1;
        return value == 1;
    }
    [[nodiscard]] QByteArray takeBytes(std::size_t atMost)
    {
        const auto length = take<std::uint32_t>();
        if (length > atMost || length > remaining()) {
            m_isGood = false;
            return {};
        }
        QByteArray bytes = m_bytes.sliced(m_position, qsizetype(length));
        m_position += qsizetype(length);
        return bytes;
    }
    /// UTF-8, and nothing else.
    [[nodiscard]] QString takeText(std::size_t atMost)
    {
        const QByteArray bytes = takeBytes(atMost);
        QString text = QString::fromUtf8(bytes);
        m_isGood = m_isGood && text.toUtf8() == bytes;
        return text;
    }
    /// A value of an enumeration that counts from 0 to `last`.
    template <typename Enumeration>
    [[nodiscard]] Enumeration takeEnumeration(Enumeration last)
    {
        const auto value = take<std::uint8_t>();
        if (value <= static_cast<std::uint8_t>(last))
            return static_cast<Enumeration>(value);
        m_isGood = false;
        return {};
    }
    /// How many values follow; each takes one byte at least.
    [[nodiscard]] std::size_t takeCount(std::size_t atMost)
    {
        const auto count = take<std::uint32_t>();
        if (count <= atMost && count <= remaining())
            return count;
        m_isGood = false;
        return 0;
    }

    void fail() { m_isGood = false; }
    [[nodiscard]] bool isGood() const { return m_isGood; }
    /// All was good, and nothing is left.
    [[nodiscard]] bool isAtEnd() const { return m_isGood && remaining() == 0; }

private:
    [[nodiscard]] std::size_t remaining() const { return std::size_t(m_bytes.size() - m_position); }

    const QByteArray m_bytes;
    qsizetype m_position = 0;
    bool m_isGood = true;
};

} // namespace Tessaron
