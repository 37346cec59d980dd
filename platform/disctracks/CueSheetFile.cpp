#include "platform/disctracks/CueSheetReader.h"
#include "platform/disctracks/DescribedFilePath.h"
#include "platform/disctracks/DescribedFiles.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::int64_t maximumCDTextSize = 8 * 256 * 18 + 5; // with a header and a zero

struct OpenedFile {
    UniqueDescriptor descriptor;
    std::uint64_t length = 0;
};

/// Opens a regular file; anything else is refused, and a fifo not waited for.
Result<OpenedFile> openRegularFile(const QByteArray &path)
{
    const QString name = stringWithFileSystemRepresentation(path);
    OpenedFile file;
    file.descriptor.reset(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file.descriptor || ::fstat(file.descriptor.get(), &status) != 0)
        return NSError::errorWithErrno(errno, name);
    if (S_ISDIR(status.st_mode))
        return NSError::errorWithErrno(EISDIR, name);
    if (!S_ISREG(status.st_mode))
        return NSError(NSOSStatusErrorDomain, paramErr,
                       {{NSLocalizedFailureReasonErrorKey, QStringLiteral("it is not a regular file")},
                        {NSFilePathErrorKey, name}});
    file.length = std::uint64_t(status.st_size);
    return file;
}

Result<QByteArray> contentsOf(const QByteArray &path, std::int64_t most)
{
    const Result<OpenedFile> file = openRegularFile(path);
    if (!file)
        return file.error();
    const QString name = stringWithFileSystemRepresentation(path);
    if (file->length > std::uint64_t(most))
        return NSError(NSOSStatusErrorDomain, paramErr,
                       {{NSLocalizedFailureReasonErrorKey,
                         QStringLiteral("it has %1 bytes, far more than such a file can have").arg(file->length)},
                        {NSFilePathErrorKey, name}});
    QByteArray bytes(qsizetype(file->length), Qt::Uninitialized);
    std::size_t got = 0;
    if (const int failure = readFully(file->descriptor.get(), 0, bytes.data(), std::size_t(bytes.size()), &got))
        return NSError::errorWithErrno(failure, name);
    bytes.truncate(qsizetype(got));
    return bytes;
}

// Where the fields of RIFF and AIFF files lie. The file begins with a chunk that holds all others; what it holds is a
// kind of four letters, then chunks.
namespace Chunk
{
constexpr std::size_t id = 0;
constexpr std::size_t size = 4; // of what follows the head
constexpr std::size_t headSize = 8;
constexpr std::size_t kindOfFile = headSize;
constexpr std::size_t first = 12;
constexpr std::size_t idSize = 4;
} // namespace Chunk
namespace WaveFormat
{
constexpr std::size_t channelCount = 2;
constexpr std::size_t sampleRate = 4;
constexpr std::size_t bitsPerSample = 14;
constexpr std::size_t size = 16;
} // namespace WaveFormat
namespace AiffCommon
{
constexpr std::size_t channelCount = 0;
constexpr std::size_t bitsPerSample = 6;
constexpr std::size_t sampleRate = 8;
constexpr std::size_t size = 18;
} // namespace AiffCommon

bool hasId(const std::uint8_t *bytes, const char *id)
{
    return std::memcmp(bytes, id, Chunk::idSize) == 0;
}

/// How long the samples of a WAVE or AIFF file of CD audio are; no value for anything that needs a decoder.
class SoundFile
{
public:
    explicit SoundFile(const OpenedFile &file)
        : m_file(file)
    {
    }

    /// Where the samples are.
    struct Samples {
        std::uint64_t offset = 0; ///< bytes
        std::uint64_t length = 0;
        bool isBig = false; ///< the higher byte comes first
    };

    [[nodiscard]] std::optional<Samples> samples() const
    {
        std::array<std::uint8_t, Chunk::first> head;
        if (!read(0, head.data(), head.size()))
            return std::nullopt;
        if (hasId(&head[Chunk::id], "RIFF") && hasId(&head[Chunk::kindOfFile], "WAVE"))
            return ofChunks("fmt ", "data", false);
        if (hasId(&head[Chunk::id], "FORM") && hasId(&head[Chunk::kindOfFile], "AIFF"))
            return ofChunks("COMM", "SSND", true);
        return std::nullopt;
    }

private:
    [[nodiscard]] bool read(std::uint64_t offset, std::uint8_t *to, std::size_t length) const
    {
        std::size_t got = 0;
        return readFully(m_file.descriptor.get(), offset, to, length, &got) == 0 && got == length;
    }

    [[nodiscard]] std::optional<Samples> ofChunks(const char *formatId, const char *samplesId, bool isBig) const
    {
        bool isCDAudio = false;
        for (std::uint64_t at = Chunk::first; at + Chunk::headSize <= m_file.length;) {
            std::array<std::uint8_t, Chunk::headSize> head;
            if (!read(at, head.data(), head.size()))
                return std::nullopt;
            const std::uint64_t size = isBig ? loadBigEndian<std::uint32_t>(&head[Chunk::size])
                                             : loadLittleEndian<std::uint32_t>(&head[Chunk::size]);
            const std::uint64_t start = at + Chunk::headSize;
            if (hasId(&head[Chunk::id], formatId))
                isCDAudio = isBig ? isCDFormatOfAiff(start) : isCDFormatOfWave(start);
            if (hasId(&head[Chunk::id], samplesId)) {
                constexpr std::uint64_t aiffOffsets = 8; // in front of the samples
                const std::uint64_t skipped = isBig ? aiffOffsets : 0;
                // Writers that never came back to correct it leave a size of 0 or more than there is.
                const std::uint64_t there = m_file.length - start;
                const std::uint64_t length = size == 0 ? there : std::min(size, there);
                if (!isCDAudio || length < skipped)
                    return std::nullopt;
                return Samples{start + skipped, length - skipped, isBig};
            }
            at = start + size + size % 2;
        }
        return std::nullopt;
    }

    /// 16 bits, two channels, 44,100 Hz.
    [[nodiscard]] bool isCDFormatOfWave(std::uint64_t at) const
    {
        std::array<std::uint8_t, WaveFormat::size> format;
        return read(at, format.data(), format.size())
            && loadLittleEndian<std::uint16_t>(&format[WaveFormat::channelCount]) == 2
            && loadLittleEndian<std::uint32_t>(&format[WaveFormat::sampleRate]) == 44100
            && loadLittleEndian<std::uint16_t>(&format[WaveFormat::bitsPerSample]) == 16;
    }
    [[nodiscard]] bool isCDFormatOfAiff(std::uint64_t at) const
    {
        std::array<std::uint8_t, AiffCommon::size> common;
        // The rate is an 80-bit number: 44,100 is 1.345825... times 2^15.
        constexpr std::array<std::uint8_t, 10> rate = {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};
        return read(at, common.data(), common.size())
            && loadBigEndian<std::uint16_t>(&common[AiffCommon::channelCount]) == 2
            && loadBigEndian<std::uint16_t>(&common[AiffCommon::bitsPerSample]) == 16
            && std::memcmp(&common[AiffCommon::sampleRate], rate.data(), rate.size()) == 0;
    }

    const OpenedFile &m_file;
};

Result<std::optional<std::uint64_t>> measureFile(const QByteArray &folder, const SoundMeasure &otherSounds,
                                                 CueFile *file)
{
    const Result<QByteArray> path = pathOfDescribedFile(folder, {file->nameAsWritten, file->name}, file->isSound());
    if (!path)
        return path.error();
    if (path->isEmpty())
        return NSError::errorWithErrno(ENOENT, stringWithFileSystemRepresentation(folder + file->name));
    const Result<OpenedFile> opened = openRegularFile(*path);
    if (!opened)
        return opened.error();
    file->path = *path;
    if (!file->isSound())
        return std::optional(opened->length);
    const std::optional<SoundFile::Samples> samples = SoundFile(*opened).samples();
    if (!samples)
        return otherSounds ? otherSounds(*path) : std::nullopt;
    file->firstSample = samples->offset;
    file->isAiff = samples->isBig;
    return std::optional(samples->length);
}

} // namespace

CueSheetFiles filesBeside(const QByteArray &path, const SoundMeasure &otherSounds)
{
    const QByteArray folder = path.left(path.lastIndexOf('/') + 1);
    CueSheetFiles files;
    files.measure = [folder, otherSounds](CueFile *file) { return measureFile(folder, otherSounds, file); };
    files.cdText = [folder](const QByteArray &name) -> Result<QByteArray> {
        const Result<QByteArray> found = pathOfDescribedFile(folder, {name});
        if (!found)
            return found.error();
        if (found->isEmpty())
            return NSError(NSOSStatusErrorDomain, fnfErr,
                           {{NSLocalizedFailureReasonErrorKey, QStringLiteral("the file is not there")}});
        return contentsOf(*found, maximumCDTextSize);
    };
    return files;
}

Result<QByteArray> textOfDescription(const QByteArray &path)
{
    return contentsOf(path, maximumCueSheetSize);
}

Result<CueSheet> cueSheetOfFile(const QByteArray &path, const SoundMeasure &otherSounds)
{
    const Result<QByteArray> text = textOfDescription(path);
    return text ? cueSheetOfText(*text, filesBeside(path, otherSounds)) : Result<CueSheet>(text.error());
}

} // namespace Tessaron
