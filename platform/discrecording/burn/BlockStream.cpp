#include "platform/discrecording/burn/BlockStream.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/content/FileContentsReader.h"

namespace Tessaron
{

BlockStream::BlockStream(BlockSink &sink, std::stop_token cancellation, BytesTaken bytesTaken)
    : m_sink(sink)
    , m_cancellation(std::move(cancellation))
    , m_bytesTaken(std::move(bytesTaken))
{
}

void BlockStream::countBytes(std::uint64_t bytes) const
{
    if (m_bytesTaken)
        m_bytesTaken(bytes);
}

NSError BlockStream::beginTrack(const DiscTrack &track)
{
    m_track = track;
    if (!track.pregap.isStored)
        skip(track.pregap.length);
    return m_sink.beginTrack(track);
}

NSError BlockStream::endTrack()
{
    if (!m_track.postgap.isStored)
        skip(m_track.postgap.length);
    return m_sink.endTrack();
}

NSError BlockStream::writeBlocks(const void *bytes, std::uint32_t blockCount, std::uint32_t blockSize)
{
    if (m_cancellation.stop_requested())
        return burnCancelledError();
    if (NSError error = m_sink.writeBlocks({bytes, blockCount, blockSize, m_position}))
        return error;
    m_position = m_position + blockCount;
    countBytes(std::uint64_t(blockCount) * blockSize);
    return {};
}

NSError BlockStream::copyFileRun(const FileContents &file, const FileRun &run)
{
    NSError error;
    const UniqueDescriptor from = openFileContents(file, &error, m_cancellation);
    if (m_cancellation.stop_requested())
        return burnCancelledError();
    if (error)
        return error;
    const CopyProgress progress = [this](std::uint64_t bytes) {
        countBytes(bytes);
        return !m_cancellation.stop_requested();
    };
    using Outcome = FileCopyResult::Outcome;
    const FileCopyResult result = m_sink.copyFile({from.get(), run.offset, run.length}, logicalBlockSize, progress);
    switch (result.outcome) {
    case Outcome::Cancelled:
        return burnCancelledError();
    case Outcome::WriteFailed:
        return result.writeError;
    case Outcome::EndedEarly:
    case Outcome::ReadFailed:
        return fileContentsReadError(from.get(), file, result.readErrno);
    case Outcome::Copied:
        break;
    }
    m_position = m_position + std::int64_t((run.length + logicalBlockSize - 1) / logicalBlockSize);
    return verifyFileContentsUnchanged(from.get(), file);
}

} // namespace Tessaron
