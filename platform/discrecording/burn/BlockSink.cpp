#include "platform/discrecording/burn/BlockSink.h"

#include <cerrno>

namespace Tessaron
{

BlockSink::~BlockSink() = default;

NSError BlockSink::beginDisc(const TableOfContents & /*disc*/)
{
    return {};
}

NSError BlockSink::beginTrack(const DiscTrack & /*track*/)
{
    return {};
}

NSError BlockSink::endTrack()
{
    return {};
}

NSError BlockSink::endDisc()
{
    return {};
}

NSError BlockSink::abandonDisc(const NSError &reason)
{
    return reason;
}

bool BlockSink::takesBlocksFromAnyThread() const
{
    return false;
}

bool BlockSink::copiesFiles() const
{
    return false;
}

FileCopyResult BlockSink::copyFile(const FileRange & /*range*/, std::uint32_t /*blockSize*/,
                                   const CopyProgress & /*progress*/)
{
    return {FileCopyResult::Outcome::WriteFailed, 0, NSError::errorWithErrno(ENOTSUP, {})};
}

} // namespace Tessaron
