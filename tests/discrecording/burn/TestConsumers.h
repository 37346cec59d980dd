#pragma once

#include "platform/discrecording/burn/DRCallbackDevice.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QList>

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

/// Writes into a file, like the writer of disc image files.
class FileConsumer final : public DRDeviceConsumer, public DRFileDescriptorConsumer
{
public:
    /// Opens for writing, making the file where there is none.
    explicit FileConsumer(const QByteArray &path);

    OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                         std::uint32_t atAddress) override;
    int outputDescriptor() override;
    void didCopyBlocks(std::uint32_t blockCount, std::uint32_t blockSize) override;
    [[nodiscard]] int lastWriteErrno() const override { return m_lastWriteErrno; }

    std::uint64_t copiedBytes = 0;
    std::function<void()> beforeCopy; ///< called once a file to be copied is open

private:
    UniqueDescriptor m_output;
    int m_lastWriteErrno = 0;
    bool m_wasAsked = false; ///< the first question only asks what the output is
};

} // namespace Tessaron::Testing
