#pragma once

#include "platform/discrecording/burn/DRCallbackDevice.h"
#include "platform/discrecording/burn/FileSink.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <functional>
#include <optional>

namespace Tessaron::Testing
{

/// Keeps what it gets in memory, and fails or reacts at a given block.
class MemoryConsumer final : public DRDeviceConsumer
{
public:
    OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                         std::uint32_t atAddress) override;

    QByteArray bytes;
    QList<std::uint32_t> addresses; ///< of every call
    std::optional<std::uint32_t> failingBlock; ///< the call with it returns `failure`
    OSStatus failure = -36;
    std::function<void()> beforeWrite; ///< called on the burn thread
};

/// A file of a test as sink, with a look at what the kernel copies. As a consumer it passes everything to itself.
class SpiedFile final : public DRDeviceConsumer, public BlockSink
{
public:
    /// Opens for writing, making the file where there is none.
    explicit SpiedFile(const QByteArray &path);

    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override;
    [[nodiscard]] bool copiesFiles() const override { return m_sink.copiesFiles(); }
    [[nodiscard]] FileCopyResult copyFile(const FileRange &range, std::uint32_t blockSize,
                                          const CopyProgress &progress) override;
    [[nodiscard]] NSError endDisc() override { return m_sink.endDisc(); }

    OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                         std::uint32_t atAddress) override;
    [[nodiscard]] BlockSink *blockSink() override { return this; }

    std::uint64_t copiedBytes = 0; ///< the zero bytes behind included
    std::function<void()> beforeCopy; ///< called once a file to be copied is open

private:
    UniqueDescriptor m_output;
    FileSink m_sink;
};

/// Notes the calls that it gets, in order, and fails at a chosen one.
class ScriptedSink final : public BlockSink
{
public:
    [[nodiscard]] NSError beginDisc(const TableOfContents &disc) override;
    [[nodiscard]] NSError beginTrack(const DiscTrack &track) override;
    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override;
    [[nodiscard]] NSError endTrack() override;
    [[nodiscard]] NSError endDisc() override;

    QStringList calls; ///< "disc 2", "track 1", "blocks 3 at 0", "end track", "end disc"
    QString failingCall; ///< the call that is noted like this fails
    TableOfContents disc; ///< as announced

private:
    [[nodiscard]] NSError note(const QString &call);
};

} // namespace Tessaron::Testing
