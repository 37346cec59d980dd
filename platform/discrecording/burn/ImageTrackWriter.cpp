#include "platform/discrecording/burn/ImageTrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/planning/DiscImagePlan.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// From here on the kernel copies. For 2 GiB it takes 15 to 25 % less processor time than the readers and as much time
/// on the clock as `cp`; smaller files gain more from being read side by side.
constexpr std::uint64_t smallestKernelCopy = std::uint64_t(16) << 20;

BlockPipeline::Options optionsFor(const BlockStream &stream, const SectorEncoder &encoder)
{
    BlockPipeline::Options options;
    options.smallestFileRunLeft = stream.copiesFiles() && encoder.isPlain() ? smallestKernelCopy : 0;
    return options;
}

std::optional<SectorEncoder> encoderFor(const DiscTrack &track)
{
    const std::optional<SectorForm> form = track.sectorForm();
    return form ? SectorEncoder::encoderFor(track.kind, *form) : std::nullopt;
}

} // namespace

ImageTrackWriter::ImageTrackWriter(std::shared_ptr<DRFolder> root, const DiscTrack &described)
    : m_described(described)
    , m_encoder(encoderFor(described).value())
    , m_root(std::move(root))
{
}

ImageTrackWriter::ImageTrackWriter(std::shared_ptr<const BlockImage> image,
                                   std::optional<BlockPipeline::Options> options, const DiscTrack &described)
    : m_described(described)
    , m_encoder(encoderFor(described).value())
    , m_image(std::move(image))
    , m_options(options)
{
}

ImageTrackWriter::~ImageTrackWriter() = default;

bool ImageTrackWriter::canWrite(const DiscTrack &described)
{
    return encoderFor(described).has_value();
}

NSError ImageTrackWriter::plan(BlockAddress begin, const std::stop_token &cancellation,
                               const std::function<void(double)> &progress)
{
    const BlockAddress firstBlock = begin + std::int64_t(m_described.pregap.length);
    if (m_image)
        return checkLength(firstBlock);
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskAll;
    options.firstBlock = firstBlock;
    NSError error;
    DiscImagePlan plan = planDiscImage(m_root, options, cancellation, progress, &error);
    if (cancellation.stop_requested())
        return burnCancelledError();
    if (error)
        return error;
    m_root.reset(); // the image does not need the tree, which may be big
    m_image = std::move(plan.image);
    m_facts = {plan.fileCount, plan.folderCount, std::move(plan.report)};
    return checkLength(firstBlock);
}

/// Sectors with a header say their place in minutes, of which they have 99 at most.
NSError ImageTrackWriter::checkLength(BlockAddress firstBlock) const
{
    constexpr BlockAddress last(404'849);
    const BlockAddress end = firstBlock + std::int64_t(track().length);
    if (m_encoder.isPlain() || m_encoder.blockSize() == std::size_t(SectorForm::WithoutHeader) || end - 1 <= last)
        return {};
    return burnError(
        paramErr,
        QStringLiteral("The disc would end at block %1. Sectors of %2 bytes are those of a CD, which has no "
                       "place behind block %3.")
            .arg(end.number() - 1)
            .arg(m_encoder.blockSize())
            .arg(last.number()),
        QStringLiteral("Put fewer files onto it, or use blocks of 2048 bytes."));
}

DiscTrack ImageTrackWriter::track() const
{
    DiscTrack track = m_described;
    track.length = m_image->blockCount() + track.postgap.length;
    return track;
}

NSError ImageTrackWriter::write(BlockStream &stream)
{
    m_subchannel.emplace(stream.track(), stream.position());
    if (NSError error = writePieces(stream))
        return error;
    m_pipeline.reset(); // all is read, so this does not wait; the next track needs the memory
    if (NSError error = m_image->verifyEmptyFiles(stream.cancellation()))
        return error;
    return writePostgap(stream);
}

NSError ImageTrackWriter::writePieces(BlockStream &stream)
{
    const BlockPipeline::Options options = m_options ? *m_options : optionsFor(stream, m_encoder);
    const auto take = [this, &stream](const BlockPipeline::Piece &piece) {
        return piece.isFileRun ? stream.copyFileRun(m_image->fileContents(piece.run.fileIndex), piece.run)
                               : writeUserData(stream, piece.bytes.data(), piece.blockCount);
    };
    if (stream.takesBlocksFromAnyThread()) {
        m_pipeline = std::make_unique<BlockPipeline>(*m_image, options, stream.cancellation(), take);
        return m_pipeline->waitUntilTaken();
    }
    m_pipeline = std::make_unique<BlockPipeline>(*m_image, options, stream.cancellation());
    NSError error;
    const BlockPipeline::Piece *piece = nullptr;
    while (!error && (piece = m_pipeline->next(&error)) != nullptr)
        error = take(*piece);
    return error;
}

NSError ImageTrackWriter::writePostgap(BlockStream &stream)
{
    constexpr std::uint64_t most = 64; // blocks at once
    const std::uint64_t length = m_described.postgap.isStored ? m_described.postgap.length : 0;
    const std::vector<char> zeros(std::size_t(std::min(most, length)) * logicalBlockSize);
    for (std::uint64_t left = length; left > 0;) {
        const auto part = std::uint32_t(std::min(left, most));
        if (NSError error = writeUserData(stream, zeros.data(), part))
            return error;
        left -= part;
    }
    return {};
}

NSError ImageTrackWriter::writeUserData(BlockStream &stream, const void *userData, std::uint32_t blockCount)
{
    if (m_encoder.isPlain())
        return stream.writeBlocks(userData, blockCount, logicalBlockSize);
    m_sectors.resize(blockCount * m_encoder.blockSize());
    m_encoder.encode(static_cast<const char *>(userData), blockCount, stream.position(), m_sectors.data(),
                     &*m_subchannel);
    return stream.writeBlocks(m_sectors.data(), blockCount, std::uint32_t(m_encoder.blockSize()));
}

} // namespace Tessaron
