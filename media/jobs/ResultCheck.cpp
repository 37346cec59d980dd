#include "media/jobs/ResultCheck.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::size_t chunkHeaderSize = 8;

/// Offsets in an RF64 file (EBU Tech 3306): its first chunk is "ds64".
namespace RF64Field
{
constexpr std::size_t ds64 = 12;
constexpr std::size_t riffSize = ds64 + chunkHeaderSize;
constexpr std::size_t end = riffSize + 8;
} // namespace RF64Field

/// How long the file is by its own account; 0 for one that does not begin as it should.
std::uint64_t announcedLength(const ReadResult &read, std::int32_t format)
{
    std::array<std::uint8_t, RF64Field::end> head = {};
    if (read(0, head.data(), head.size()) != head.size())
        return 0;
    const auto begins = [&head](const char *name) { return std::memcmp(head.data(), name, 4) == 0; };
    if (format == KRAudioConverter::aiffFormat)
        return begins("FORM") ? chunkHeaderSize + std::uint64_t(loadBigEndian<std::uint32_t>(&head[4])) : 0;
    if (begins("RF64"))
        return chunkHeaderSize + loadLittleEndian<std::uint64_t>(&head[RF64Field::riffSize]);
    return begins("RIFF") ? chunkHeaderSize + std::uint64_t(loadLittleEndian<std::uint32_t>(&head[4])) : 0;
}

/// Bytes of the frame that begins with this header (ISO/IEC 11172-3, 2.4.1.3); 0 where none does.
std::size_t lengthOfFrame(const std::uint8_t *header)
{
    constexpr std::array<std::uint32_t, 16> kilobits = {0,   32,  40,  48,  56,  64,  80,  96,
                                                        112, 128, 160, 192, 224, 256, 320, 0};
    constexpr std::array<std::uint32_t, 4> rates = {44100, 48000, 32000, 0};
    constexpr std::uint32_t syncAndKind = 0xFFFA, syncAndKindMask = 0xFFFE; // the last bit is that of protection
    constexpr std::uint32_t samplesInByteTimesBits = 144; // 1152 samples of 8 bits a byte
    const std::uint32_t bits = loadBigEndian<std::uint32_t>(header);
    const std::uint32_t rate = rates[bits >> 10 & 3], kilobit = kilobits[bits >> 12 & 15], padding = bits >> 9 & 1;
    if ((bits >> 16 & syncAndKindMask) != syncAndKind || rate == 0 || kilobit == 0)
        return 0;
    return samplesInByteTimesBits * kilobit * 1000 / rate + padding;
}

QString flawOfFrames(std::uint64_t bytes, const ReadResult &read)
{
    constexpr std::size_t headerSize = 4;
    std::vector<std::uint8_t> piece(std::size_t(64) * 1024);
    std::uint64_t position = 0, pieceBegin = 0;
    std::size_t pieceLength = 0;
    while (position < bytes) {
        if (position + headerSize > pieceBegin + pieceLength) {
            pieceBegin = position;
            pieceLength = read(position, piece.data(), piece.size());
        }
        if (pieceLength < headerSize)
            return QStringLiteral("the result ends inside of a frame");
        const std::size_t length = lengthOfFrame(&piece[std::size_t(position - pieceBegin)]);
        if (length == 0)
            return QStringLiteral("the result is damaged at byte %1").arg(position);
        position += length;
    }
    return position == bytes ? QString() : QStringLiteral("the result ends inside of a frame");
}

} // namespace

QString flawOfResult(std::uint64_t bytes, const ReadResult &read, std::int32_t format)
{
    if (bytes == 0)
        return QStringLiteral("the result is empty");
    if (format != KRAudioConverter::waveFormat && format != KRAudioConverter::aiffFormat)
        return flawOfFrames(bytes, read);
    const std::uint64_t announced = announcedLength(read, format);
    if (announced == bytes)
        return {};
    return announced == 0 ? QStringLiteral("the result has no header")
                          : QStringLiteral("the result has %1 bytes, and its header says %2").arg(bytes).arg(announced);
}

QString flawOfResult(const QByteArray &path, std::int32_t format)
{
    const UniqueDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0)
        return QStringLiteral("there is no result: %1").arg(systemText(errno));
    const auto read = [&file](std::uint64_t offset, void *buffer, std::size_t length) {
        std::size_t got = 0;
        static_cast<void>(readFully(file.get(), offset, buffer, length, &got)); // What is missing tells.
        return got;
    };
    return flawOfResult(std::uint64_t(status.st_size), read, format);
}

} // namespace Tessaron
