#include "tools/tessaron/ImageMaker.h"

#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "tools/tessaron/FreeSpace.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/KRTrackWriter.h>

#include <optional>
#include <sys/stat.h>

namespace Tessaron::Tool
{

namespace
{

Problem writeProblem(const NSError &error)
{
    const QString reason = error.localizedFailureReason();
    return {Problem::Kind::Write, reason.isEmpty() ? error.localizedDescription() : reason,
            error.localizedRecoverySuggestion(), fileSystemRepresentation(error.filePath()), error.code()};
}

} // namespace

ImageMaker::ImageMaker(ImageOrder order)
    : m_order(std::move(order))
    , m_life(std::make_shared<int>())
{
}

ImageMaker::~ImageMaker()
{
    m_life.reset();
}

void ImageMaker::start(std::function<void()> whenEnded)
{
    m_whenEnded = std::move(whenEnded);
    m_gatherer = std::make_unique<SourceGatherer>(m_order.sources);
    m_gatherer->start([this] { sourcesGathered(); });
}

void ImageMaker::interrupt()
{
    stop(interruption());
}

/// Ends the stage that runs; its end then finds the problem. The first problem stays.
void ImageMaker::stop(const Problem &problem)
{
    if (m_hasEnded || m_outcome.problem)
        return;
    m_outcome.problem = problem;
    if (m_writer)
        m_writer->cancelTrackWriting();
    else if (m_rootItem)
        end(); // the layout's worker goes with the item tree
    else if (m_gatherer)
        m_gatherer->cancel();
}

ProgressState ImageMaker::progress() const
{
    ProgressState state;
    state.phase = m_phase;
    if (m_gatherer) {
        state.files = m_gatherer->files();
        state.folders = m_gatherer->folders();
    } else {
        state.files = m_outcome.files;
        state.folders = m_outcome.folders;
    }
    if (!m_writer)
        return state;
    const DRBurnAmounts amounts = m_writer->amounts();
    state.bytesWritten = amounts.bytesWritten;
    state.bytesTotal = amounts.bytesTotal;
    if (state.phase == ProgressState::Phase::Planning && amounts.bytesTotal > 0)
        state.phase = ProgressState::Phase::Writing;
    return state;
}

void ImageMaker::sourcesGathered()
{
    m_outcome.files = m_gatherer->files();
    m_outcome.folders = m_gatherer->folders();
    m_outcome.gatheringErrors = m_gatherer->errors();
    if (!m_outcome.problem)
        m_outcome.problem = m_gatherer->problem();
    if (!m_outcome.problem && m_order.isStrict && !m_outcome.gatheringErrors.empty()) {
        const GatheringError &first = m_outcome.gatheringErrors.front();
        m_outcome.problem = {
            Problem::Kind::NotStored,
            QStringLiteral("the folder %1 cannot be listed: %2").arg(quoted(first.path), first.message),
            {},
            first.path};
    }
    if (m_outcome.problem) {
        end();
        return;
    }
    m_phase = ProgressState::Phase::Planning;
    m_rootItem = rootItem();
    m_gatherer.reset();
    m_allocatedSize = m_rootItem->contentsPhysicalSize();

    KRFileHierarchyItemLayoutTarget target;
    target.context = m_life;
    target.KRFileHierarchyItemDRLayoutCreationProgress = [](KRFileHierarchyItem &, float) {};
    target.KRFileHierarchyItemDRLayoutCreationFinished =
        [this](KRFileHierarchyItem &, const std::shared_ptr<DRFolder> &folder) { layoutMade(folder); };
    if (!m_rootItem->createDRLayoutAsyncNotifyProgressToTarget(target))
        stop({Problem::Kind::Layout, QStringLiteral("the disc's layout cannot be made"), {}, {}});
}

std::shared_ptr<KRFileHierarchyItem> ImageMaker::rootItem()
{
    std::vector<GatheredSource> &gathered = m_gatherer->gathered();
    if (m_order.rootIsOnlySource)
        return std::move(gathered.front().item);
    std::shared_ptr<KRFileHierarchyItem> root = KRFileHierarchyItem::fileHierarchyItemWithFileReference(
        KRFileReference::virtualFolderWithName(m_order.volumeName));
    for (std::size_t index = 0; index < gathered.size(); ++index) {
        root->addItem(gathered[index].item);
        gathered[index].item.reset();
    }
    return root;
}

/// Gives the sources of a disc with several the names of their arguments, which may be those of links.
void ImageMaker::nameSources(const DRFolder &root) const
{
    if (m_order.rootIsOnlySource)
        return;
    // A source that vanished meanwhile is missing from the layout; the others keep their order.
    auto object = root.children().begin();
    for (std::size_t index = 0; index < m_order.sources.size() && object != root.children().end(); ++index) {
        if ((*object)->sourceRef() != *m_rootItem->items()[index]->fileReference()->fileRef())
            continue;
        const QString name = stringWithFileSystemRepresentation(m_order.sources[index].name);
        if ((*object)->baseName() != name)
            (*object)->setBaseName(name);
        ++object;
    }
}

void ImageMaker::layoutMade(const std::shared_ptr<DRFolder> &folder)
{
    if (m_outcome.problem)
        return;
    if (!folder) {
        stop({Problem::Kind::Layout, QStringLiteral("the disc's layout cannot be made"), {}, {}});
        return;
    }
    nameSources(*folder);
    folder->setBaseName(m_order.volumeName);
    folder->setExplicitFilesystemMask(m_order.filesystems);
    startWriting(folder);
    // The layout stands for itself. Freeing a large tree takes a while, which the burn's planning uses meanwhile.
    m_rootItem.reset();
}

void ImageMaker::startWriting(const std::shared_ptr<DRFolder> &folder)
{
    KRTrackWriterDelegate delegate;
    delegate.context = m_life;
    delegate.KRTrackWriterWritingProgress = [this](KRTrackWriter &, float) { lookAhead(); };
    delegate.KRTrackWriterWritingDidEnd = [this](KRTrackWriter &) { writingEnded({}); };
    delegate.KRTrackWriterDidCancel = [this](KRTrackWriter &) { writingEnded(interruption()); };
    delegate.KRTrackWriterWritingDidFailWithError = [this](KRTrackWriter &, const NSError &error) {
        writingEnded(writeProblem(error));
    };
    m_writer = KRTrackWriter::trackWriterWithTrack(DRTrack::trackForRootFolder(folder),
                                                   stringWithFileSystemRepresentation(m_order.path));
    if (const NSError error = m_writer->writeTrackAndNotifyDelegate(delegate)) {
        m_outcome.problem = {Problem::Kind::Write,
                             QStringLiteral("the image file cannot be opened for writing"),
                             {},
                             m_order.path,
                             error.code()};
        m_writer.reset();
        end();
    }
}

void ImageMaker::lookAhead()
{
    if (m_isPlanChecked || !m_writer || m_writer->amounts().bytesTotal == 0)
        return;
    m_isPlanChecked = true;
    Problem problem = checkPlan();
    if (!problem)
        problem = checkSpace(m_writer->amounts().bytesTotal);
    if (problem)
        stop(problem);
}

Problem ImageMaker::checkPlan() const
{
    const std::shared_ptr<const DRStorageReport> report = m_writer->storageReport();
    if (!m_order.isStrict || !report || report->lostCount() == 0)
        return {};
    return {Problem::Kind::NotStored,
            counted(report->lostCount(), "item cannot be stored as it is", "items cannot be stored as they are"),
            QStringLiteral("Leave --strict out to make the image without them."),
            {}};
}

Problem ImageMaker::checkSpace(std::uint64_t imageSize) const
{
    // Holes in the sources may stay holes in the image: only what they occupy is sure to be needed.
    const std::uint64_t needed = std::min(imageSize, m_allocatedSize);
    const std::optional<std::uint64_t> free = freeSpaceForPlainWriting(m_order.descriptor);
    // The writing has begun. What it has taken is asked for last, so that what it takes meanwhile counts twice rather
    // than never.
    struct stat own = {};
    const std::uint64_t taken = ::fstat(m_order.descriptor, &own) == 0 ? std::uint64_t(own.st_blocks) * 512 : 0;
    if (!free || needed <= *free + taken)
        return {};
    return {Problem::Kind::Space,
            QStringLiteral("the disk is too full: the image needs %1, but only %2 is free")
                .arg(sizeText(imageSize), sizeText(*free + taken)),
            QStringLiteral("Make room, or choose another place for the output."), m_order.path};
}

void ImageMaker::writingEnded(const Problem &problem)
{
    const DRBurnAmounts amounts = m_writer->amounts();
    m_outcome.report = m_writer->storageReport();
    m_outcome.bytes = amounts.bytesTotal;
    if (amounts.bytesTotal > 0) {
        m_outcome.files = amounts.filesTotal;
        m_outcome.folders = amounts.foldersTotal;
    }
    if (!m_outcome.problem && !problem && !m_isPlanChecked)
        m_outcome.problem = checkPlan(); // it was all over before anybody looked
    if (!m_outcome.problem)
        m_outcome.problem = problem;
    end();
}

void ImageMaker::end()
{
    if (m_hasEnded)
        return;
    m_hasEnded = true;
    m_phase = m_outcome.problem ? m_phase : ProgressState::Phase::Writing;
    // Not from inside a callback of an object that this one is about to let go.
    performOnMainThread([this, life = CallbackContext(m_life)] {
        if (life.isAlive() && m_whenEnded)
            m_whenEnded();
    });
}

} // namespace Tessaron::Tool
