#pragma once

#include "platform/discrecording/burn/BlockSink.h"

#include <QString>

namespace Tessaron
{

/// Writes the blocks one after another to an open file, from its position on. In the end a regular file is as long as
/// what was written. Contents of big files are copied by the kernel into a regular file, which shares extents where
/// the file systems have them and keeps holes; a pipe or a device gets every byte.
class FileSink final : public BlockSink
{
public:
    /// Whether the end of the disc waits until the file's contents are on the disk (fsync(2)): only then can they no
    /// longer be lost, and only then is it known that the disk took them all.
    enum class Syncing : std::uint8_t { No, AtTheEnd };

    /// The descriptor stays the caller's and must stay open. `name` is what people know the output by, mostly its
    /// path; errors name it and carry it under NSFilePathErrorKey. With an empty one they speak of "the output".
    FileSink(int descriptor, const QString &name, Syncing syncing);

    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override;
    [[nodiscard]] bool takesBlocksFromAnyThread() const override { return true; }
    [[nodiscard]] bool copiesFiles() const override;
    [[nodiscard]] FileCopyResult copyFile(const FileRange &range, std::uint32_t blockSize,
                                          const CopyProgress &progress) override;
    [[nodiscard]] NSError endDisc() override;

private:
    [[nodiscard]] int endAtPosition() const;

    const int m_descriptor;
    const QString m_name;
    const Syncing m_syncing;
    const bool m_isRegular;
};

} // namespace Tessaron
