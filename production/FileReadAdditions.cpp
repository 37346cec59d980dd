#include "platform/foundation/ByteOrder.h"
#include <TessaronClasses/FileReadAdditions.h>

#include <array>
#include <cstring>

namespace Tessaron
{

namespace
{

template <std::size_t length>
bool readExactly(NSFileHandle &handle, std::array<std::uint8_t, length> *bytes)
{
    return handle.readInto(bytes->data(), length) == length;
}

template <typename Unsigned, typename Value>
OSStatus readBig(NSFileHandle &handle, Value *value)
{
    std::array<std::uint8_t, sizeof(Unsigned)> bytes;
    if (!readExactly(handle, &bytes))
        return eofErr;
    *value = static_cast<Value>(loadBigEndian<Unsigned>(bytes.data()));
    return noErr;
}

template <typename Unsigned, typename Value>
OSStatus readLittle(NSFileHandle &handle, Value *value)
{
    std::array<std::uint8_t, sizeof(Unsigned)> bytes;
    if (!readExactly(handle, &bytes))
        return eofErr;
    *value = static_cast<Value>(loadLittleEndian<Unsigned>(bytes.data()));
    return noErr;
}

/// Packed bytes, read in chunks. All are as long as the first one, however short that was.
class PackedChunks
{
public:
    explicit PackedChunks(NSFileHandle &handle)
        : m_handle(handle)
        , m_chunk(handle.readDataOfLength(firstLength))
    {
    }

    /// The next byte; false at the end of the data.
    [[nodiscard]] bool takeByte(std::int8_t *byte)
    {
        if (m_next == m_chunk.size() && !refill())
            return false;
        *byte = static_cast<std::int8_t>(m_chunk[m_next++]);
        return true;
    }

    /// Copies the next bytes, which must lie in one chunk; false when they do not.
    [[nodiscard]] bool copyTo(char *to, qsizetype count)
    {
        if (const qsizetype unread = m_chunk.size() - m_next; unread < count) {
            // The bytes become the start of a chunk.
            m_handle.seekToFileOffset(m_handle.offsetInFile() - std::uint64_t(unread));
            if (!refill() || m_chunk.size() < count)
                return false;
        }
        std::memcpy(to, m_chunk.constData() + m_next, std::size_t(count));
        m_next += count;
        return true;
    }

private:
    static constexpr std::size_t firstLength = 3000;

    [[nodiscard]] bool refill()
    {
        m_chunk = m_handle.readDataOfLength(std::size_t(m_chunk.size()));
        m_next = 0;
        return !m_chunk.isEmpty();
    }

    NSFileHandle &m_handle;
    QByteArray m_chunk;
    qsizetype m_next = 0;
};

/// Bytes one after another, counted.
class CountedBytes
{
public:
    explicit CountedBytes(NSFileHandle &handle)
        : m_handle(handle)
    {
    }

    [[nodiscard]] bool take(char *byte)
    {
        constexpr std::size_t chunkLength = 2000;
        if (m_next == m_chunk.size()) {
            m_chunk = m_handle.readDataOfLength(chunkLength);
            m_next = 0;
            if (m_chunk.isEmpty())
                return false;
        }
        *byte = m_chunk[m_next++];
        ++m_count;
        return true;
    }

    [[nodiscard]] std::uint64_t count() const { return m_count; }

private:
    NSFileHandle &m_handle;
    QByteArray m_chunk;
    qsizetype m_next = 0;
    std::uint64_t m_count = 0;
};

} // namespace

OSStatus readChar(NSFileHandle &handle, char *value)
{
    return handle.readInto(value, 1) == 1 ? noErr : eofErr;
}

OSStatus readBigUnsignedShort(NSFileHandle &handle, std::uint16_t *value)
{
    return readBig<std::uint16_t>(handle, value);
}

OSStatus readBigSignedShort(NSFileHandle &handle, std::int16_t *value)
{
    return readBig<std::uint16_t>(handle, value);
}

OSStatus readBigUnsignedInt(NSFileHandle &handle, std::uint32_t *value)
{
    return readBig<std::uint32_t>(handle, value);
}

OSStatus readBigSignedInt(NSFileHandle &handle, std::int32_t *value)
{
    return readBig<std::uint32_t>(handle, value);
}

OSStatus readLittleUnsignedShort(NSFileHandle &handle, std::uint16_t *value)
{
    return readLittle<std::uint16_t>(handle, value);
}

OSStatus readLittleSignedShort(NSFileHandle &handle, std::int16_t *value)
{
    return readLittle<std::uint16_t>(handle, value);
}

OSStatus readLittleUnsignedInt(NSFileHandle &handle, std::uint32_t *value)
{
    return readLittle<std::uint32_t>(handle, value);
}

OSStatus readLittleSignedInt(NSFileHandle &handle, std::int32_t *value)
{
    return readLittle<std::uint32_t>(handle, value);
}

OSStatus readBytes(NSFileHandle &handle, void *bytes, std::int32_t length)
{
    if (length < 0)
        return eofErr;
    // By way of memory of its own: a shortfall leaves the destination untouched.
    const QByteArray data = handle.readDataOfLength(std::size_t(length));
    if (data.size() != length)
        return eofErr;
    std::memcpy(bytes, data.constData(), std::size_t(length));
    return noErr;
}

OSStatus readString(NSFileHandle &handle, QString *string, NSStringEncoding encoding, std::int32_t length)
{
    if (length < 0)
        return eofErr;
    const QByteArray data = handle.readDataOfLength(std::size_t(length));
    if (data.size() != length)
        return eofErr;
    *string = stringWithBytes(data, encoding);
    return noErr;
}

OSStatus readPascalString(NSFileHandle &handle, QString *string, NSStringEncoding encoding)
{
    char length = 0;
    if (readChar(handle, &length) != noErr)
        return eofErr;
    constexpr char longest = 127;
    if (const auto unsignedLength = static_cast<unsigned char>(length); unsignedLength > longest) {
        // As many bytes as a negative length is when no sign is seen: all that there are.
        std::array<char, 4096> rest;
        while (handle.readInto(rest.data(), rest.size()) > 0) { }
        return eofErr;
    }
    return length == 0 ? noErr : readString(handle, string, encoding, static_cast<unsigned char>(length));
}

void skipBytes(NSFileHandle &handle, std::uint64_t count)
{
    handle.seekToFileOffset(handle.offsetInFile() + count);
}

std::ptrdiff_t readBytesOfLength(NSFileHandle &handle, void *bytes, std::size_t length)
{
    return handle.readOnce(bytes, length);
}

OSStatus unpackBits(NSFileHandle &handle, void *output, std::uint64_t totalLength)
{
    PackedChunks packed(handle);
    char *const to = static_cast<char *>(output);
    std::uint64_t made = 0;
    while (made < totalLength) {
        std::int8_t control = 0;
        if (!packed.takeByte(&control))
            return eofErr;
        if (control < 0) {
            const int count = 1 - control;
            std::int8_t byte = 0;
            if (!packed.takeByte(&byte))
                return eofErr;
            std::memset(to + made, byte, std::size_t(count));
            made += std::uint64_t(count);
        } else {
            const int count = control + 1;
            if (!packed.copyTo(to + made, count))
                return eofErr;
            made += std::uint64_t(count);
        }
    }
    return noErr;
}

std::uint64_t offsetOfBytesWithBuffer(NSFileHandle &handle, const void *pattern, std::uint32_t length,
                                      std::uint64_t maxOffset)
{
    if (length == 0)
        return 0;
    const char *const wanted = static_cast<const char *>(pattern);
    CountedBytes bytes(handle);
    while (bytes.count() < maxOffset) {
        char byte = 0;
        std::uint32_t matched = 0;
        do {
            if (!bytes.take(&byte))
                return 0;
        } while (byte == wanted[matched] && ++matched < length);
        if (matched == length)
            return bytes.count() - length;
    }
    return 0;
}

} // namespace Tessaron
