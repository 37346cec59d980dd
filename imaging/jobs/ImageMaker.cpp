#include "imaging/jobs/ImageMaker.h"

#include "imaging/jobs/FreeSpace.h"
#include "imaging/jobs/LayoutWriting.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/disctracks/SectorForm.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/SizeFormatting.h>

#include <QSet>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

NSError noLayout()
{
    return discJobError(DiscJobErrorCode::Layout, QStringLiteral("the disc's layout cannot be made"));
}

bool isOutOfMemory(const std::vector<UnreadableFolder> &folders)
{
    return std::any_of(folders.begin(), folders.end(),
                       [](const UnreadableFolder &folder) { return folder.errnoValue == ENOMEM; });
}

QString sizeText(std::uint64_t bytes)
{
    const unsigned long long value = bytes;
    return sizeFormatForUnsignedLongLong(&value);
}

} // namespace

ImageMaker::ImageMaker(ImageMakerOrder order)
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
    if (m_order.tree) {
        m_rootItem = m_order.tree;
        startLayout();
        return;
    }
    m_gatherer = std::make_unique<SourceGatherer>(m_order.sources);
    m_gatherer->start([this] { sourcesGathered(); });
}

void ImageMaker::cancel()
{
    stop(discJobCancellation());
}

/// Ends the stage that runs; its end then finds the problem. The first problem stays.
void ImageMaker::stop(const NSError &error)
{
    if (m_hasEnded || m_result.error)
        return;
    m_result.error = error;
    if (m_writer)
        m_writer->cancel();
    else if (m_rootItem)
        endLayout();
    else if (m_gatherer)
        m_gatherer->cancel();
}

/// The layout's worker goes with the item tree, which a tree of the order's survives for a while.
void ImageMaker::endLayout()
{
    m_rootItem->cancelDRLayoutCreationNotifyTarget({});
    end();
}

DiscJobProgress ImageMaker::progress() const
{
    DiscJobProgress state;
    state.phase = m_phase;
    if (m_gatherer) {
        state.files = m_gatherer->files();
        state.folders = m_gatherer->folders();
    } else {
        state.files = m_result.files;
        state.folders = m_result.folders;
    }
    if (!m_writer)
        return state;
    const DRBurnAmounts amounts = m_writer->amounts();
    state.bytesDone = amounts.bytesWritten;
    state.bytesTotal = amounts.bytesTotal;
    if (state.phase == DiscJobPhase::Planning && amounts.bytesTotal > 0)
        state.phase = DiscJobPhase::Writing;
    return state;
}

void ImageMaker::sourcesGathered()
{
    m_result.files = m_gatherer->files();
    m_result.folders = m_gatherer->folders();
    m_result.unreadable = m_gatherer->unreadable();
    if (!m_result.error)
        m_result.error = m_gatherer->error();
    if (m_result.error) {
        end();
        return;
    }
    m_rootItem = rootItem();
    m_gatherer.reset();
    startLayout();
}

void ImageMaker::startLayout()
{
    m_phase = DiscJobPhase::Planning;
    m_allocatedSize = m_rootItem->contentsPhysicalSize();

    KRFileHierarchyItemLayoutTarget target;
    target.context = m_life;
    target.KRFileHierarchyItemDRLayoutCreationProgress = [](KRFileHierarchyItem &, float) {};
    target.KRFileHierarchyItemDRLayoutCreationFinished = [this](KRFileHierarchyItem &,
                                                                const std::shared_ptr<DRFSObject> &root) {
        layoutMade(std::dynamic_pointer_cast<DRFolder>(root));
    };
    if (!m_rootItem->createDRLayoutAsyncNotifyProgressToTarget(target))
        stop(noLayout());
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

/// Gives the sources of a disc with several the names of their arguments, which may be those of links. A layout leaves
/// out a file called "Icon\r", which belongs to the folder that holds it; here it was asked for by itself.
void ImageMaker::nameSources(DRFolder &root) const
{
    if (m_order.rootIsOnlySource || m_order.tree)
        return;
    const std::vector<std::shared_ptr<DRFSObject>> laidOut = root.children(); // in the order of the sources
    auto next = laidOut.begin();
    for (std::size_t index = 0; index < m_order.sources.size(); ++index) {
        const FSRef &ref = *m_rootItem->items()[index]->fileReference()->fileRef();
        std::shared_ptr<DRFSObject> object;
        if (next != laidOut.end() && (*next)->sourceRef() == ref) {
            object = *next++;
        } else {
            object = DRFileCreateReal(&ref);
            root.addChild(object);
        }
        const QString name = stringWithFileSystemRepresentation(m_order.sources[index].name);
        if (object->baseName() != name)
            object->setBaseName(name);
    }
}

void ImageMaker::layoutMade(const std::shared_ptr<DRFolder> &folder)
{
    if (m_result.error)
        return;
    if (!folder) {
        stop(isOutOfMemory(m_rootItem->unreadableFolders()) ? outOfMemoryError() : noLayout());
        return;
    }
    addUnreadable(m_rootItem->unreadableFolders());
    nameSources(*folder);
    folder->setBaseName(m_order.volumeName);
    folder->setExplicitFilesystemMask(DRFilesystemMask(m_order.filesystems.toInt()));
    if (m_order.relocatesDeepFolders)
        folder->setProperty(true, DRRelocatesDeepFolders, DRISO9660);
    if (NSError error = m_order.completeLayout ? m_order.completeLayout(*folder) : NSError()) {
        stop(error);
        return;
    }
    startWriting(folder);
    // The layout stands for itself. Freeing a large tree takes a while, which the burn's planning uses meanwhile.
    m_rootItem.reset();
}

/// A folder that could not be listed is likely to keep its icon from the layout, too: it is named once.
void ImageMaker::addUnreadable(const std::vector<UnreadableFolder> &folders)
{
    QSet<QByteArray> known;
    for (const UnreadableFolder &folder : m_result.unreadable)
        known.insert(folder.path);
    for (const UnreadableFolder &folder : folders) {
        if (!known.contains(folder.path))
            m_result.unreadable.push_back(folder);
    }
}

void ImageMaker::startWriting(const std::shared_ptr<DRFolder> &folder)
{
    m_writer = writing(folder);
    const LayoutWriting::Listener listener{[this] { lookAhead(); },
                                           [this](const NSError &error) { writingEnded(error); }};
    m_result.error = m_writer->start(listener);
    if (m_result.error) {
        m_writer.reset();
        end();
    }
}

std::unique_ptr<LayoutWriting> ImageMaker::writing(const std::shared_ptr<DRFolder> &folder) const
{
    if (m_order.device)
        return writingToDevice(track(folder), m_order.device);
    return writingIntoFile(track(folder), m_order.path, m_order.finalPath, m_order.isSynchronized);
}

std::shared_ptr<DRTrack> ImageMaker::track(const std::shared_ptr<DRFolder> &folder) const
{
    constexpr quint32 postgap = 150; // blocks
    constexpr int wholeSectors = 17; // data form of MMC: mode 1 with all of its fields
    std::shared_ptr<DRTrack> track = DRTrack::trackForRootFolder(folder);
    if (!m_order.isBeforeAudio)
        return track;
    QVariantMap properties = track->properties();
    properties.insert(DRBlockSizeKey, quint32(SectorForm::Raw));
    properties.insert(DRDataFormKey, wholeSectors);
    properties.insert(DRPostGapLengthKey, postgap);
    track->setProperties(properties);
    return track;
}

void ImageMaker::lookAhead()
{
    if (m_isPlanChecked || !m_writer || m_writer->amounts().bytesTotal == 0)
        return;
    m_isPlanChecked = true;
    NSError error = checkPlan();
    if (!error && !m_order.device) // a device knows itself what goes onto it
        error = checkSpace(m_writer->amounts().bytesTotal);
    m_isPlanEnough = !error && m_order.isPlanOnly;
    if (m_isPlanEnough)
        m_writer->cancel();
    else if (error)
        stop(error);
    else
        m_writer->approvePlan();
}

/// Only here, so that all that is missing can be told at once.
NSError ImageMaker::checkPlan()
{
    const std::shared_ptr<const DRStorageReport> report = m_writer->storageReport();
    m_result.isVolumeNameLost = losesVolumeName(report.get());
    if (NSError error = m_order.checkSize ? m_order.checkSize(m_writer->amounts().bytesTotal) : NSError())
        return error;
    if (!m_order.isStrict)
        return {};
    if (report && report->lostCount() > 0)
        return discJobError(
            DiscJobErrorCode::NotStored,
            counted(report->lostCount(), "item cannot be stored as it is", "items cannot be stored as they are"));
    if (m_result.isVolumeNameLost)
        return discJobError(DiscJobErrorCode::NotStored,
                            QStringLiteral("the name of the volume cannot be stored as it is"));
    if (m_result.unreadable.empty())
        return {};
    return discJobError(DiscJobErrorCode::NotStored,
                        counted(m_result.unreadable.size(), "folder cannot be read", "folders cannot be read"));
}

/// The root, whose name is the volume's, is the first in the report.
bool ImageMaker::losesVolumeName(const DRStorageReport *report) const
{
    if (!m_order.isVolumeNameGiven || m_order.isVolumeNameChanged || !report || report->count() == 0)
        return m_order.isVolumeNameChanged;
    const DRStorageReportItem first = report->item(0);
    return first.path == u"/" && first.isLost;
}

NSError ImageMaker::checkSpace(std::uint64_t imageSize) const
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
    return discJobError(DiscJobErrorCode::Space,
                        QStringLiteral("the disk is too full: the image needs %1, but only %2 is free")
                            .arg(sizeText(imageSize), sizeText(*free + taken)),
                        QStringLiteral("Make room, or choose another place for the output."), m_order.finalPath);
}

void ImageMaker::writingEnded(const NSError &error)
{
    const DRBurnAmounts amounts = m_writer->amounts();
    m_result.report = m_writer->storageReport();
    m_result.bytes = amounts.bytesTotal;
    if (amounts.bytesTotal > 0) {
        m_result.files = amounts.filesTotal;
        m_result.folders = amounts.foldersTotal;
    }
    if (!m_result.error && !error && !m_isPlanChecked)
        m_result.error = checkPlan(); // the burn ended before lookAhead() came to it
    // What ended the writing knows more than the wish to end it.
    const bool isCancelled = m_order.device && isDiscJobError(m_result.error, DiscJobErrorCode::Cancelled);
    if (!m_isPlanEnough && (!m_result.error || isCancelled))
        m_result.error = error; // none: the device has all, and the wish came too late
    end();
}

std::shared_ptr<const TableOfContents> ImageMaker::contents() const
{
    return m_writer && !m_result.error ? m_writer->tableOfContents() : nullptr;
}

void ImageMaker::end()
{
    if (m_hasEnded)
        return;
    m_hasEnded = true;
    m_phase = m_result.error ? m_phase : DiscJobPhase::Writing;
    // Not from inside a callback of an object that this one is about to let go.
    performOnMainThread([this, life = CallbackContext(m_life)] {
        if (life.isAlive() && m_whenEnded)
            m_whenEnded();
    });
}

} // namespace Tessaron
