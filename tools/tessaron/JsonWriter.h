#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <type_traits>
#include <vector>

namespace Tessaron::Tool
{

/// Writes one JSON value (RFC 8259) to a descriptor as it comes, on one line, members in the order given: a report on
/// a million items needs no tree of them in memory. Text that came from undecodable bytes holds U+FFFD in their place.
///
/// A failing write is remembered and told by finish().
class JsonWriter
{
public:
    explicit JsonWriter(int descriptor);

    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    /// Name of the member that the next value belongs to.
    void key(const char *name);

    void value(const QString &text);
    void value(std::int64_t number);
    void value(std::uint64_t number);
    /// With `decimals` digits after the point.
    void value(double number, int decimals);
    void value(bool truth);
    void null();

    /// key() and value() in one.
    template <typename Value>
    void member(const char *name, const Value &content)
    {
        key(name);
        if constexpr (std::is_same_v<Value, bool> || std::is_same_v<Value, QString>)
            value(content);
        else if constexpr (std::is_unsigned_v<Value>)
            value(std::uint64_t(content));
        else
            value(std::int64_t(content));
    }

    /// A member that is an array of texts.
    void textsMember(const char *name, const QStringList &texts);

    /// The member as text, and when the bytes are not UTF-8 a second member "…Bytes" with them percent-encoded.
    void pathMember(const char *name, const QByteArray &path);

    /// The errno value of a write that has failed, 0 as long as all went well.
    [[nodiscard]] int failure() const { return m_errno; }

    /// Ends the line and writes what is left; false (with `errno` set) when anything could not be written.
    [[nodiscard]] bool finish();

private:
    void separate();
    void flushIfLarge();

    int m_descriptor;
    int m_errno = 0;
    QByteArray m_buffer;
    std::vector<bool> m_hasMembers; ///< one for each open object or array
    bool m_afterKey = false;
};

} // namespace Tessaron::Tool
