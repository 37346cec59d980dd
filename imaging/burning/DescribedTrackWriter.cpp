#include "imaging/burning/DescribedTrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t bufferSize = std::size_t(1) << 20; // bytes; rounded down to whole blocks

NSError sourceError(const QByteArray &path, const QString &description, const QString &suggestion, OSStatus status)
{
    QVariantMap userInfo = {{NSLocalizedDescriptionKey, description},
                            {NSFilePathErrorKey, stringWithFileSystemRepresentation(path)}};
    if (!suggestion.isEmpty())
        userInfo.insert(NSLocalizedRecoverySuggestionErrorKey, suggestion);
    return NSError(NSOSStatusErrorDomain, status, userInfo);
}

NSError readError(const QByteArray &path, int failure)
{
    return sourceError(path, QStringLiteral("%1 cannot be read: %2").arg(quoted(path), systemText(failure)), {},
                       statusForErrno(failure));
}

/// A file of an image, which must stay as it is while it is read.
class ImageFile
{
public:
    [[nodiscard]] NSError open(const QByteArray &path)
    {
        m_path = path;
        m_file.reset(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        if (!m_file || ::fstat(m_file.get(), &m_status) != 0)
            return readError(path, errno);
        return S_ISREG(m_status.st_mode) || S_ISBLK(m_status.st_mode)
            ? NSError()
            : sourceError(path, QStringLiteral("%1 is not a file").arg(quoted(path)), {}, paramErr);
    }

    [[nodiscard]] NSError read(std::uint64_t offset, std::vector<char> *buffer) const
    {
        std::size_t got = 0;
        if (const int failure = readFully(m_file.get(), offset, buffer->data(), buffer->size(), &got))
            return readError(m_path, failure);
        return got == buffer->size() ? NSError() : endsEarly();
    }

    [[nodiscard]] NSError endsEarly() const
    {
        return sourceError(m_path, QStringLiteral("%1 ends before its last track does").arg(quoted(m_path)),
                           QStringLiteral("Copy the image again."), eofErr);
    }

    /// Once all is read.
    [[nodiscard]] NSError errorOfChange() const
    {
        struct stat now = {};
        if (::fstat(m_file.get(), &now) != 0)
            return readError(m_path, errno);
        if (now.st_size == m_status.st_size && now.st_mtim.tv_sec == m_status.st_mtim.tv_sec
            && now.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec)
            return {};
        return sourceError(m_path, QStringLiteral("%1 was changed while it was read").arg(quoted(m_path)),
                           QStringLiteral("Leave it alone while the disc is written."), fBsyErr);
    }

    /// No value for a device, which states none.
    [[nodiscard]] std::optional<std::uint64_t> size() const
    {
        return S_ISREG(m_status.st_mode) ? std::optional(std::uint64_t(m_status.st_size)) : std::nullopt;
    }

private:
    QByteArray m_path;
    UniqueDescriptor m_file;
    struct stat m_status = {};
};

void swapBytes(std::vector<char> *samples)
{
    for (std::size_t at = 0; at + 1 < samples->size(); at += 2)
        std::swap((*samples)[at], (*samples)[at + 1]);
}

bool mustDecode(const CueFile &file)
{
    return file.isSound() && !file.firstSample;
}

std::uint64_t blocksOf(const std::vector<CueRun> &runs)
{
    std::uint64_t blocks = 0;
    for (const CueRun &run : runs)
        blocks += run.blocks;
    return blocks;
}

} // namespace

DescribedTrackWriter::DescribedTrackWriter(const CueSheet &disc, std::size_t index, DescribedDiscNotes &notes)
    : m_disc(disc)
    , m_place(disc.places[index])
    , m_track(*disc.contents.tracks()[index])
    , m_notes(notes)
{
}

NSError DescribedTrackWriter::plan(BlockAddress /*begin*/, const std::stop_token & /*cancellation*/,
                                   const std::function<void(double)> & /*progress*/)
{
    const QString track = QStringLiteral("track %1").arg(m_track.number);
    if (!m_place.isLengthKnown)
        return sourceError({}, QStringLiteral("the length of %1 is not known").arg(track),
                           QStringLiteral("Its file must be one that can be decoded."), paramErr);
    if (blocksOf(m_place.pregap) + blocksOf(m_place.data) != m_track.storedBlocks())
        return sourceError({}, QStringLiteral("the files do not hold all of %1").arg(track), {}, eofErr);
    for (const std::vector<CueRun> &runs : {m_place.pregap, m_place.data}) {
        for (const CueRun &run : runs) {
            const CueFile &file = m_disc.files[run.file];
            if (mustDecode(file) && !m_track.isAudio())
                return sourceError(file.path,
                                   QStringLiteral("%1 is data, and %2 holds sound").arg(track, quoted(file.path)), {},
                                   paramErr);
            if (mustDecode(file))
                continue;
            ImageFile opened;
            if (NSError error = opened.open(file.path))
                return error;
            const std::uint64_t end = file.firstSample.value_or(0) + run.offset + run.blocks * m_track.blockSize;
            if (opened.size() && *opened.size() < end)
                return opened.endsEarly();
        }
    }
    return {};
}

NSError DescribedTrackWriter::write(BlockStream &stream)
{
    for (const std::vector<CueRun> &runs : {m_place.pregap, m_place.data}) {
        for (const CueRun &run : runs) {
            const bool isDecoded = mustDecode(m_disc.files[run.file]);
            if (NSError error = isDecoded ? writeDecodedRun(run, stream) : writeRun(run, stream))
                return error;
        }
    }
    return {};
}

NSError DescribedTrackWriter::writeRun(const CueRun &run, BlockStream &stream)
{
    const CueFile &described = m_disc.files[run.file];
    ImageFile file;
    if (NSError error = file.open(described.path))
        return error;
    const std::size_t blockSize = m_track.blockSize;
    std::vector<char> buffer;
    for (std::uint64_t done = 0; done < run.blocks;) {
        const auto count = std::size_t(std::min<std::uint64_t>(run.blocks - done, bufferSize / blockSize));
        buffer.resize(count * blockSize);
        const std::uint64_t offset = described.firstSample.value_or(0) + run.offset + done * blockSize;
        if (NSError error = file.read(offset, &buffer))
            return error;
        if (m_track.isAudio() && described.hasBigEndianSamples())
            swapBytes(&buffer);
        if (NSError error = stream.writeBlocks(buffer.data(), std::uint32_t(count), m_track.blockSize))
            return error;
        done += count;
    }
    return file.errorOfChange();
}

NSError DescribedTrackWriter::writeDecodedRun(const CueRun &run, BlockStream &stream)
{
    const QByteArray &path = m_disc.files[run.file].path;
    constexpr std::uint64_t mostBlocks = bufferSize / 2352;
    AudioDamageReport damage;
    std::vector<char> buffer;
    for (std::uint64_t done = 0; done < run.blocks;) {
        const std::uint64_t count = std::min(run.blocks - done, mostBlocks);
        const std::uint64_t samples = count * CDSound::samplesPerFrame;
        buffer.resize(std::size_t(samples * CDSound::bytesPerSample));
        const std::uint64_t first = run.offset / CDSound::bytesPerSample + done * CDSound::samplesPerFrame;
        const Result<std::size_t> got =
            m_notes.sounds.read(path, first, buffer.data(), std::size_t(samples), &damage, stream.cancellation());
        if (stream.cancellation().stop_requested())
            return burnCancelledError();
        if (!got)
            return sourceError(
                path,
                QStringLiteral("%1 cannot be decoded: %2").arg(quoted(path), got.error().localizedFailureReason()),
                got.error().localizedRecoverySuggestion(), ioErr);
        if (*got < samples)
            return sourceError(path, QStringLiteral("the sound of %1 ends before its track does").arg(quoted(path)),
                               QStringLiteral("Look whether the file is whole."), eofErr);
        if (NSError error = stream.writeBlocks(buffer.data(), std::uint32_t(count), m_track.blockSize))
            return error;
        done += count;
    }
    for (const AudioDamage &place : damage.places)
        m_notes.damages << QStringLiteral("%1 is damaged at %2 s: %3")
                               .arg(quoted(path), QString::number(place.seconds, 'f', 2), place.what);
    return {};
}

Result<BurnPlan> planDescribedDisc(const CueSheet &disc, DescribedDiscNotes &notes, const std::stop_token &stop)
{
    BurnPlan plan;
    plan.contents = disc.contents;
    plan.bytes = plan.contents.storedBytes();
    for (std::size_t index = 0; index < disc.places.size(); ++index) {
        auto writer = std::make_unique<DescribedTrackWriter>(disc, index, notes);
        if (NSError error = writer->plan({}, stop, {}))
            return error;
        plan.writers.push_back(std::move(writer));
    }
    return plan;
}

} // namespace Tessaron
