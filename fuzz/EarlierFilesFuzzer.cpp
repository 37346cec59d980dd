#include "fuzz/DiscImagePromises.h"
#include "fuzz/FuzzTarget.h"

#include "imaging/burning/EarlierFiles.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discrecording/objects/DRFolder.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace
{

using namespace Tessaron;

constexpr std::uint64_t blockSize = 2048;

class Bytes final : public ImageBytes
{
public:
    explicit Bytes(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
    }

    [[nodiscard]] std::uint64_t length() const override { return std::uint64_t(m_bytes.size()); }
    [[nodiscard]] NSError read(std::uint64_t offset, void *buffer, std::size_t length) const override
    {
        require(length <= this->length() && offset <= this->length() - length, "reads stay within the disc");
        std::copy_n(m_bytes.begin() + std::ptrdiff_t(offset), length, static_cast<char *>(buffer));
        return {};
    }

private:
    const QByteArray m_bytes;
};

/// A disc whose last session begins at that block, or which has none.
std::shared_ptr<const DiscImageSource> lastSession(const QByteArray &disc, std::uint32_t firstBlock)
{
    const qsizetype inFront = qsizetype(firstBlock) * qsizetype(blockSize);
    DiscImageSectors sectors;
    sectors.kind = TrackKind::Mode1;
    sectors.firstBlock = firstBlock;
    const auto earlier = firstBlock > 0 ? std::make_shared<const Bytes>(disc.first(inFront)) : nullptr;
    return DiscImageSource::sourceWithReader(std::make_shared<const Bytes>(disc.mid(inFront)), sectors, earlier);
}

/// What is added goes behind all contents.
void lookForContents(const EarlierFiles &files, const VolumeReader &volume)
{
    VolumeWalker walker;
    walker.object = [&](const QByteArray &, const VolumeObject &object) {
        if (object.kind != VolumeObjectKind::File || object.size == 0)
            return true;
        const std::uint64_t first = volume.source().byteOnDisc(object.extents.front().offset);
        require((first + object.size + blockSize - 1) / blockSize <= files.endBlock(), "the end is behind contents");
        require(files.firstBlockOfContents() && *files.firstBlockOfContents() <= first / blockSize,
                "no contents lie in front of the first of them");
        return true;
    };
    walkVolume(volume, walker);
}

/// The filesystem that the files were read from finds them all again.
void lookForThem(const EarlierFiles &files, const std::shared_ptr<const DiscImageSource> &session)
{
    static constexpr VolumeKind order[] = {VolumeKind::RockRidge, VolumeKind::Joliet, VolumeKind::ISO9660,
                                           VolumeKind::UDF, VolumeKind::HFSPlus};
    const std::vector<FoundVolume> volumes = volumesInImage(session);
    for (const VolumeKind kind : order) {
        const auto volume =
            std::find_if(volumes.begin(), volumes.end(), [kind](const FoundVolume &one) { return one.kind == kind; });
        if (volume == volumes.end())
            continue;
        require(volume->reader != nullptr, "what was read from can be read");
        require(!files.errorInVolume(*volume->reader, {}), "the files are found where they were");
        lookForContents(files, *volume->reader);
        break;
    }
}

void check(const std::shared_ptr<const DiscImageSource> &session, EarlierFiles::EmptyBegin emptyBegin)
{
    const Result<std::shared_ptr<EarlierFiles>> read = EarlierFiles::readFrom(session, emptyBegin, {});
    if (!read) {
        require(!read.error().localizedDescription().isEmpty(), "an error says something");
        return;
    }
    if (*read == nullptr) {
        require(emptyBegin == EarlierFiles::EmptyBegin::HasNoFiles, "a session is never taken for nothing");
        return;
    }
    EarlierFiles &files = **read;
    require(!files.firstBlockOfContents() || *files.firstBlockOfContents() < files.endBlock(),
            "contents lie in front of the end");
    const std::shared_ptr<DRFolder> added = DRFolder::virtualFolderWithName({});
    require(!files.addTo(*added), "an empty layout takes everything");
    require(files.replaced().isEmpty(), "nothing stands in the way of it");
    require(added->children().empty() == (files.keptFiles() + files.keptFolders() == 0), "what is kept is counted");
    lookForThem(files, session);
}

} // namespace

/// The first two bytes of an input are the block at which the last session begins, 0 for a disc that is overwritten.
/// What follows is the disc; see expandedImage().
int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    constexpr std::size_t headSize = 2;
    if (size < headSize)
        return 0;
    QByteArray disc = expandedImage(bytes + headSize, size - headSize);
    const auto blocks = std::uint32_t(std::uint64_t(disc.size()) / blockSize);
    const std::uint32_t firstBlock = std::min<std::uint32_t>(loadBigEndian<std::uint16_t>(bytes), blocks);
    const auto emptyBegin =
        firstBlock == 0 ? EarlierFiles::EmptyBegin::HasNoFiles : EarlierFiles::EmptyBegin::IsAnError;
    check(lastSession(disc, firstBlock), emptyBegin);
    correctUdfTags(&disc);
    check(lastSession(disc, firstBlock), emptyBegin);
    return 0;
}
