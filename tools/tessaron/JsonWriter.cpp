#include "tools/tessaron/JsonWriter.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <cerrno>

namespace Tessaron::Tool
{

namespace
{

constexpr qsizetype flushSize = 1 << 16;

void appendQuoted(QByteArray &buffer, const QByteArray &utf8)
{
    buffer += '"';
    for (const char byte : utf8) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte == '"' || byte == '\\') {
            buffer += '\\';
            buffer += byte;
        } else if (value < 0x20 || value == 0x7f) {
            buffer += "\\u00" + QByteArray::number(value, 16).rightJustified(2, '0');
        } else {
            buffer += byte;
        }
    }
    buffer += '"';
}

} // namespace

JsonWriter::JsonWriter(int descriptor)
    : m_descriptor(descriptor)
{
}

void JsonWriter::separate()
{
    flushIfLarge();
    if (m_afterKey) {
        m_afterKey = false;
    } else if (!m_hasMembers.empty()) {
        if (m_hasMembers.back())
            m_buffer += ',';
        m_hasMembers.back() = true;
    }
}

void JsonWriter::flushIfLarge()
{
    if (m_buffer.size() < flushSize)
        return;
    if (m_errno == 0 && !writeAll(m_descriptor, m_buffer))
        m_errno = errno;
    m_buffer.clear();
}

void JsonWriter::beginObject()
{
    separate();
    m_buffer += '{';
    m_hasMembers.push_back(false);
}

void JsonWriter::endObject()
{
    m_buffer += '}';
    m_hasMembers.pop_back();
}

void JsonWriter::beginArray()
{
    separate();
    m_buffer += '[';
    m_hasMembers.push_back(false);
}

void JsonWriter::endArray()
{
    m_buffer += ']';
    m_hasMembers.pop_back();
}

void JsonWriter::key(const char *name)
{
    separate();
    appendQuoted(m_buffer, QByteArray::fromRawData(name, qsizetype(qstrlen(name))));
    m_buffer += ':';
    m_afterKey = true;
}

void JsonWriter::value(const QString &text)
{
    separate();
    appendQuoted(m_buffer, displayableText(text).toUtf8());
}

void JsonWriter::value(std::int64_t number)
{
    separate();
    m_buffer += QByteArray::number(qlonglong(number));
}

void JsonWriter::value(std::uint64_t number)
{
    separate();
    m_buffer += QByteArray::number(qulonglong(number));
}

void JsonWriter::value(double number, int decimals)
{
    separate();
    m_buffer += QByteArray::number(number, 'f', decimals);
}

void JsonWriter::value(bool truth)
{
    separate();
    m_buffer += truth ? "true" : "false";
}

void JsonWriter::textsMember(const char *name, const QStringList &texts)
{
    key(name);
    beginArray();
    for (const QString &text : texts)
        value(text);
    endArray();
}

void JsonWriter::pathMember(const char *name, const QByteArray &path)
{
    member(name, stringWithFileSystemRepresentation(path));
    if (!isUtf8(path))
        member((QByteArray(name) + "Bytes").constData(), QString::fromLatin1(percentEncoded(path)));
}

void JsonWriter::null()
{
    separate();
    m_buffer += "null";
}

bool JsonWriter::finish()
{
    m_buffer += '\n';
    if (m_errno == 0 && !writeAll(m_descriptor, m_buffer))
        m_errno = errno;
    m_buffer.clear();
    errno = m_errno;
    return m_errno == 0;
}

} // namespace Tessaron::Tool
