#include "platform/coreservices/AliasRecord.h"

#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

constexpr QByteArrayView magic("TsAl", 4);
constexpr std::uint16_t currentVersion = 1;
constexpr std::uint16_t folderFlag = 1;
constexpr qsizetype checksumAt = 12;
constexpr qsizetype checkedFrom = checksumAt + 8;

std::uint64_t checksumOf(QByteArrayView bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
    return hash;
}

template <typename Integer>
void append(QByteArray &to, Integer value)
{
    std::uint8_t bytes[sizeof(Integer)];
    storeBigEndian<Integer>(bytes, value);
    to.append(reinterpret_cast<const char *>(bytes), sizeof bytes);
}

void appendText(QByteArray &to, const QByteArray &text)
{
    append<std::uint32_t>(to, static_cast<std::uint32_t>(text.size()));
    to.append(text);
}

/// Takes values off the front of bytes; once they run out, everything read is zero and isWhole() false.
class Reader
{
public:
    explicit Reader(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }

    template <typename Integer>
    Integer take()
    {
        const QByteArrayView bytes = takeBytes(sizeof(Integer));
        return bytes.isEmpty() ? Integer(0)
                               : loadBigEndian<Integer>(reinterpret_cast<const std::uint8_t *>(bytes.data()));
    }

    QByteArray takeText()
    {
        const auto length = static_cast<qsizetype>(take<std::uint32_t>());
        return takeBytes(length).toByteArray();
    }

    [[nodiscard]] bool isWhole() const { return m_isWhole; }
    [[nodiscard]] bool isAtEnd() const { return m_bytes.isEmpty(); }

private:
    QByteArrayView takeBytes(qsizetype count)
    {
        if (count > m_bytes.size()) {
            m_isWhole = false;
            m_bytes = {};
            return {};
        }
        const QByteArrayView taken = m_bytes.first(count);
        m_bytes = m_bytes.sliced(count);
        return taken;
    }

    QByteArrayView m_bytes;
    bool m_isWhole = true;
};

/// A path that a system call can be given: absolute and without a NUL.
bool isUsablePath(const QByteArray &path)
{
    return path.startsWith('/') && !path.contains('\0');
}

} // namespace

QByteArray aliasDataFromRecord(const AliasRecord &record)
{
    QByteArray body;
    append<std::uint64_t>(body, record.volumeIdentifier);
    append<std::uint64_t>(body, record.inode);
    append<std::uint64_t>(body, static_cast<std::uint64_t>(record.birthTime.seconds));
    append<std::uint32_t>(body, record.birthTime.nanoseconds);
    appendText(body, record.volumeType);
    appendText(body, record.pathInVolume);
    appendText(body, record.path);
    appendText(body, record.handle);

    QByteArray data = magic.toByteArray();
    append<std::uint16_t>(data, currentVersion);
    append<std::uint16_t>(data, record.isFolder ? folderFlag : 0);
    append<std::uint32_t>(data, static_cast<std::uint32_t>(checkedFrom + body.size()));
    append<std::uint64_t>(data, checksumOf(body));
    return data.append(body);
}

std::optional<AliasRecord> aliasRecordFromData(QByteArrayView data, AliasChecksum checksum)
{
    if (data.size() < checkedFrom || data.size() > longestAliasData || !data.startsWith(magic))
        return std::nullopt;
    Reader reader(data.sliced(magic.size()));
    const auto version = reader.take<std::uint16_t>();
    const auto flags = reader.take<std::uint16_t>();
    const auto length = reader.take<std::uint32_t>();
    const auto sum = reader.take<std::uint64_t>();
    if (version != currentVersion || length != data.size())
        return std::nullopt;
    if (checksum == AliasChecksum::Checked && sum != checksumOf(data.sliced(checkedFrom)))
        return std::nullopt;

    AliasRecord record;
    record.isFolder = flags & folderFlag;
    record.volumeIdentifier = reader.take<std::uint64_t>();
    record.inode = reader.take<std::uint64_t>();
    record.birthTime.seconds = static_cast<std::int64_t>(reader.take<std::uint64_t>());
    record.birthTime.nanoseconds = reader.take<std::uint32_t>();
    record.volumeType = reader.takeText();
    record.pathInVolume = reader.takeText();
    record.path = reader.takeText();
    record.handle = reader.takeText();
    if (!reader.isWhole() || !reader.isAtEnd() || !isUsablePath(record.path) || !isUsablePath(record.pathInVolume))
        return std::nullopt;
    return record;
}

} // namespace Tessaron
