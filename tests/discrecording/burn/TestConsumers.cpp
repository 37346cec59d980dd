#include "tests/discrecording/burn/TestConsumers.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

OSStatus MemoryConsumer::writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                                     std::uint32_t atAddress)
{
    if (beforeWrite)
        beforeWrite();
    if (failingBlock && *failingBlock >= atAddress && *failingBlock < atAddress + blockCount)
        return failure;
    addresses << atAddress;
    bytes.append(static_cast<const char *>(buffer), qsizetype(blockCount) * blockSize);
    return noErr;
}

SpiedFile::SpiedFile(const QByteArray &path)
    : m_output(::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644))
    , m_sink(m_output.get(), QString::fromUtf8(path), FileSink::Syncing::No)
{
}

NSError SpiedFile::writeBlocks(const BlockBatch &run)
{
    return m_sink.writeBlocks(run);
}

FileCopyResult SpiedFile::copyFile(const FileRange &range, std::uint32_t blockSize, const CopyProgress &progress)
{
    if (beforeCopy)
        beforeCopy();
    return m_sink.copyFile(range, blockSize, [&](std::uint64_t bytes) {
        copiedBytes += bytes;
        return progress(bytes);
    });
}

OSStatus SpiedFile::writeBlocks(const void * /*buffer*/, std::uint32_t /*blockCount*/, std::uint32_t /*blockSize*/,
                                std::uint32_t /*atAddress*/)
{
    ADD_FAILURE() << "the sink is asked instead";
    return ioErr;
}

NSError ScriptedSink::note(const QString &call)
{
    calls << call;
    return call == failingCall ? NSError(NSOSStatusErrorDomain, ioErr) : NSError();
}

NSError ScriptedSink::beginDisc(const TableOfContents &contents)
{
    disc = contents;
    return note(QStringLiteral("disc %1").arg(contents.trackCount()));
}

NSError ScriptedSink::beginTrack(const DiscTrack &track)
{
    return note(QStringLiteral("track %1").arg(track.number));
}

NSError ScriptedSink::writeBlocks(const BlockBatch &run)
{
    return note(QStringLiteral("blocks %1 at %2").arg(run.count).arg(run.at.number()));
}

NSError ScriptedSink::endTrack()
{
    return note(QStringLiteral("end track"));
}

NSError ScriptedSink::endDisc()
{
    return note(QStringLiteral("end disc"));
}

} // namespace Tessaron::Testing
