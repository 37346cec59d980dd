#include "imaging/burning/EarlierFiles.h"

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/iso9660/ElTorito.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/discrecording/drives/DRDevice.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <QDateTime>
#include <QSet>

#include <algorithm>
#include <array>
#include <optional>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace Tessaron
{

namespace
{

NSError cannotAppend(const QString &why)
{
    return discJobError(DiscJobErrorCode::Destination, QStringLiteral("nothing can be added to the disc: %1").arg(why),
                        QStringLiteral("What is on it would not be shown any more. Put an empty disc in."));
}

/// The last session whose first track holds data: what systems mount. What is overwritten counts as one.
std::optional<RecordedTrackDescription> lastDataTrack(const DiscDescription &disc)
{
    std::optional<RecordedTrackDescription> found;
    if (isOverwritten(disc.family)) {
        if (disc.readableBlocks > 0)
            found.emplace().blocks = disc.readableBlocks;
        return found;
    }
    std::uint32_t session = 0;
    for (const RecordedTrackDescription &track : disc.tracks) {
        if (track.session != session && !track.isAudio)
            found = track;
        session = track.session;
    }
    return found;
}

/// What keeps most of the names and attributes comes first.
constexpr std::array readingOrder = {VolumeKind::RockRidge, VolumeKind::Joliet, VolumeKind::ISO9660, VolumeKind::UDF,
                                     VolumeKind::HFSPlus};

const FoundVolume *bestVolume(const std::vector<FoundVolume> &volumes)
{
    for (const VolumeKind kind : readingOrder) {
        for (const FoundVolume &volume : volumes) {
            if (volume.kind == kind)
                return &volume;
        }
    }
    return nullptr;
}

std::uint32_t typeBits(const VolumeObject &object)
{
    switch (object.kind) {
    case VolumeObjectKind::Folder:
        return S_IFDIR;
    case VolumeObjectKind::SymbolicLink:
        return S_IFLNK;
    case VolumeObjectKind::File:
    case VolumeObjectKind::Other:
        break;
    }
    return S_IFREG;
}

std::uint32_t modeOf(const VolumeObject &object)
{
    const std::uint32_t usual = object.kind == VolumeObjectKind::Folder ? 0755
        : object.kind == VolumeObjectKind::SymbolicLink                 ? 0777
                                                                        : 0644;
    return object.mode && (*object.mode & S_IFMT) != 0 ? *object.mode : typeBits(object) | object.mode.value_or(usual);
}

/// Where the contents of a file begin; no value when they cannot be led to: in pieces, or within a block.
std::optional<std::uint64_t> firstBlockOf(const VolumeObject &file, const DiscImageSource &source)
{
    if (file.size == 0)
        return 0;
    if (file.extents.size() != 1 || file.extents.front().isHole)
        return std::nullopt;
    const std::uint64_t byte = source.byteOnDisc(file.extents.front().offset);
    if (byte % logicalBlockSize != 0 || byte / logicalBlockSize > UINT32_MAX)
        return std::nullopt;
    return byte / logicalBlockSize;
}

Result<DRRecordedObject> recordedObject(const VolumeObject &object, const QByteArray &path,
                                        const DiscImageSource &source)
{
    const std::optional<std::uint64_t> first = firstBlockOf(object, source);
    if (!first)
        return cannotAppend(
            QStringLiteral("its file %1 lies there in a way that a further session cannot lead to").arg(quoted(path)));
    DRRecordedObject recorded;
    recorded.mode = modeOf(object);
    recorded.userId = object.userId.value_or(0);
    recorded.groupId = object.groupId.value_or(0);
    if (object.modified)
        recorded.modification = *object.modified;
    recorded.size = object.size;
    recorded.firstBlock = std::uint32_t(*first);
    recorded.deviceNumber = object.deviceNumber;
    recorded.linkTarget = object.linkTarget;
    return recorded;
}

std::shared_ptr<DRFolder> recordedFolder(const VolumeObject &object)
{
    std::shared_ptr<DRFolder> folder = DRFolder::virtualFolderWithName(stringWithFileSystemRepresentation(object.name));
    folder->setProperty(modeOf(object), DRPosixFileMode, DRAllFilesystems);
    if (object.userId)
        folder->setProperty(*object.userId, DRPosixUID, DRAllFilesystems);
    if (object.groupId)
        folder->setProperty(*object.groupId, DRPosixGID, DRAllFilesystems);
    if (object.modified)
        folder->setProperty(QDateTime::fromSecsSinceEpoch(object.modified->seconds, Qt::UTC), DRContentModificationDate,
                            DRAllFilesystems);
    return folder;
}

/// Whether nothing was ever written where filesystems begin.
Result<bool> isEmptyAtItsBegin(const DiscImageSource &source)
{
    constexpr std::uint64_t blocksLookedAt = 512; // with the first anchor of UDF, and what disks begin with
    std::vector<char> begin(std::size_t(std::min(blocksLookedAt * logicalBlockSize, source.length())));
    if (NSError error = source.read(0, begin.data(), begin.size()))
        return error;
    return std::all_of(begin.begin(), begin.end(), [](char byte) { return byte == 0; });
}

/// Everything is kept and found again by its path.
NSError errorOfName(const QByteArray &name, const QByteArray &folderPath)
{
    if (!name.isEmpty() && name != "." && name != ".." && !name.contains('/') && !name.contains('\0'))
        return {};
    return cannotAppend(QStringLiteral("in its folder %1 something is called %2, as nothing can be")
                            .arg(quoted('/' + folderPath), quoted(name)));
}

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.isEmpty() ? name : folder + '/' + name;
}

} // namespace

Result<std::shared_ptr<EarlierFiles>> EarlierFiles::read(DRDevice &device, const std::stop_token &stop)
{
    const std::optional<RecordedTrackDescription> track = lastDataTrack(device.disc());
    if (!track)
        return std::shared_ptr<EarlierFiles>();
    const auto first = std::uint64_t(std::max<std::int64_t>(track->firstBlock, 0));
    const std::uint64_t end = std::max(device.disc().readableBlocks, first + track->blocks);
    return readFrom(device.readBack(first, end - first),
                    isOverwritten(device.disc().family) ? EmptyBegin::HasNoFiles : EmptyBegin::IsAnError, stop);
}

Result<std::shared_ptr<EarlierFiles>> EarlierFiles::readFrom(const std::shared_ptr<const DiscImageSource> &session,
                                                             EmptyBegin emptyBegin, const std::stop_token &stop)
{
    const std::vector<FoundVolume> volumes = volumesInImage(session);
    const FoundVolume *const volume = bestVolume(volumes);
    if (volume == nullptr && emptyBegin == EmptyBegin::HasNoFiles) {
        const Result<bool> isEmpty = isEmptyAtItsBegin(*session);
        if (!isEmpty)
            return cannotAppend(isEmpty.error().localizedFailureReason());
        if (*isEmpty)
            return std::shared_ptr<EarlierFiles>();
    }
    if (volume == nullptr)
        return cannotAppend(QStringLiteral("no filesystem that is known here was found in its last session"));
    if (!volume->reader || volume->error)
        return cannotAppend(QStringLiteral("the filesystem (%1) of its last session is damaged: %2")
                                .arg(volumeKindName(volume->kind), volume->error.localizedFailureReason()));
    std::shared_ptr<EarlierFiles> files(new EarlierFiles);
    files->m_volumeName = volume->reader->facts().name;
    files->measure(volumes, *session);
    files->m_startsComputers = readBootCatalog(*session).has_value();
    if (NSError error = files->readVolume(*volume->reader, stop))
        return error;
    if (stop.stop_requested())
        return discJobCancellation();
    return files;
}

/// How far the filesystems say that they go; files are looked at as they are read.
void EarlierFiles::measure(const std::vector<FoundVolume> &volumes, const DiscImageSource &source)
{
    for (const FoundVolume &volume : volumes) {
        m_hasUDF = m_hasUDF || volume.kind == VolumeKind::UDF;
        m_hasHFSPlus = m_hasHFSPlus || volume.kind == VolumeKind::HFSPlus;
        if (!volume.reader)
            continue;
        const DiscVolumeFacts &facts = volume.reader->facts();
        // The blocks of ISO 9660 are counted from the disc's begin, whatever lies in front of the session.
        const bool countsFromBegin = volume.kind != VolumeKind::UDF && volume.kind != VolumeKind::HFSPlus;
        const std::uint64_t begin = countsFromBegin ? 0 : source.byteOnDisc(facts.offset);
        const std::uint64_t end = begin + facts.blockCount * facts.blockSize;
        m_endBlock = std::max(m_endBlock, (end + logicalBlockSize - 1) / logicalBlockSize);
    }
}

NSError EarlierFiles::readVolume(const VolumeReader &volume, const std::stop_token &stop)
{
    m_root = DRFolder::virtualFolderWithName({});
    QHash<QByteArray, std::shared_ptr<DRFolder>> folders{{QByteArray(), m_root}};
    QSet<QByteArray> namesInFolder; // in the one that is being listed
    NSError failure;
    VolumeWalker walker;
    walker.enterFolder = [&](const QByteArray &, const VolumeObject &) {
        namesInFolder.clear();
        return true;
    };
    walker.object = [&](const QByteArray &folderPath, const VolumeObject &object) {
        const QByteArray path = joined(folderPath, object.name);
        failure = errorOfName(object.name, folderPath);
        if (!failure && namesInFolder.contains(object.name))
            failure = cannotAppend(QStringLiteral("it has more than one object %1").arg(quoted('/' + path)));
        if (failure)
            return false;
        namesInFolder.insert(object.name);
        if (object.kind == VolumeObjectKind::Folder) {
            const std::shared_ptr<DRFolder> folder = recordedFolder(object);
            folders.value(folderPath)->addChild(folder);
            folders.insert(path, folder);
            return !stop.stop_requested();
        }
        const Result<DRRecordedObject> recorded = recordedObject(object, path, volume.source());
        if (recorded) {
            folders.value(folderPath)
                ->addChild(DRFile::recordedFileWithName(stringWithFileSystemRepresentation(object.name), *recorded));
            noteContents(*recorded);
        } else {
            failure = recorded.error();
        }
        return !failure && !stop.stop_requested();
    };
    walker.failed = [&](const QByteArray &path, const NSError &error) {
        failure = cannotAppend(
            QStringLiteral("its folder %1 cannot be read: %2").arg(quoted('/' + path), error.localizedFailureReason()));
        return false;
    };
    walkVolume(volume, walker);
    return failure;
}

void EarlierFiles::noteContents(const DRRecordedObject &recorded)
{
    if (recorded.size == 0)
        return;
    const std::uint64_t first = recorded.firstBlock;
    m_firstBlockOfContents = std::min(m_firstBlockOfContents.value_or(first), first);
    m_endBlock = std::max(m_endBlock, first + (recorded.size + logicalBlockSize - 1) / logicalBlockSize);
}

NSError EarlierFiles::addTo(DRFolder &root)
{
    if (!root.isVirtual())
        return discJobError(DiscJobErrorCode::Layout, QStringLiteral("the disc's layout cannot be added to"));
    return merge(root, *m_root, {});
}

NSError EarlierFiles::merge(DRFolder &into, DRFolder &earlier, const QByteArray &path)
{
    QHash<QByteArray, DRFSObject *> present;
    for (const std::shared_ptr<DRFSObject> &child : into.children())
        present.insert(child->baseNameBytes(), child.get());
    // A copy, since what is added is taken out of the earlier folder.
    const std::vector<std::shared_ptr<DRFSObject>> children = earlier.children();
    earlier.removeAllChildren();
    for (const std::shared_ptr<DRFSObject> &child : children) {
        const QByteArray childPath = joined(path, child->baseNameBytes());
        DRFSObject *const known = present.value(child->baseNameBytes());
        if (known == nullptr) {
            into.addChild(child);
            keepAll(*child, childPath);
            continue;
        }
        if (known->isFolder() != child->isFolder())
            return discJobError(DiscJobErrorCode::Layout,
                                QStringLiteral("%1 is a %2 on the disc and a %3 among what is to be added")
                                    .arg(quoted('/' + childPath),
                                         child->isFolder() ? QStringLiteral("folder") : QStringLiteral("file"),
                                         known->isFolder() ? QStringLiteral("folder") : QStringLiteral("file")),
                                QStringLiteral("Give it another name, or leave it out."));
        if (!child->isFolder()) {
            m_replaced << stringWithFileSystemRepresentation('/' + childPath);
            continue;
        }
        if (!known->isVirtual())
            return discJobError(DiscJobErrorCode::Layout, QStringLiteral("the disc's layout cannot be added to"));
        if (NSError error = merge(static_cast<DRFolder &>(*known), static_cast<DRFolder &>(*child), childPath))
            return error;
    }
    return {};
}

/// Counts and notes an object with all that is in it. Discs may be of any depth.
void EarlierFiles::keepAll(const DRFSObject &object, const QByteArray &path)
{
    std::vector<std::pair<const DRFSObject *, QByteArray>> left{{&object, path}};
    while (!left.empty()) {
        const auto [next, nextPath] = std::move(left.back());
        left.pop_back();
        if (next->isFolder()) {
            m_kept.insert(nextPath, {0, 0, true});
            ++m_keptFolders;
            for (const std::shared_ptr<DRFSObject> &child : static_cast<const DRFolder *>(next)->children())
                left.emplace_back(child.get(), joined(nextPath, child->baseNameBytes()));
            continue;
        }
        const DRRecordedObject &recorded = *static_cast<const DRFile *>(next)->recordedObject();
        m_kept.insert(nextPath, {recorded.firstBlock, recorded.size, false});
        ++m_keptFiles;
    }
}

NSError EarlierFiles::errorInVolume(const VolumeReader &volume, const std::stop_token &stop) const
{
    QHash<QByteArray, Place> missing = m_kept;
    NSError failure;
    const auto differs = [&failure](const QByteArray &path, const QString &how) {
        failure = discJobError(DiscJobErrorCode::Write,
                               QStringLiteral("%1, which the disc had before, %2").arg(quoted('/' + path), how),
                               QStringLiteral("The earlier session still has it."));
        return false;
    };
    VolumeWalker walker;
    walker.object = [&](const QByteArray &folderPath, const VolumeObject &object) {
        const QByteArray path = joined(folderPath, object.name);
        const auto expected = missing.constFind(path);
        if (expected == missing.constEnd())
            return !stop.stop_requested();
        const bool isFolder = object.kind == VolumeObjectKind::Folder;
        const std::optional<std::uint64_t> first = firstBlockOf(object, volume.source());
        if (expected->isFolder != isFolder
            || (!isFolder && (!first || *first != (object.size > 0 ? expected->firstBlock : 0)))
            || (!isFolder && object.size != expected->size))
            return differs(path, QStringLiteral("is listed wrongly"));
        missing.erase(expected);
        return !stop.stop_requested();
    };
    walker.failed = [&](const QByteArray &path, const NSError &error) {
        return differs(path, QStringLiteral("cannot be listed: %1").arg(error.localizedFailureReason()));
    };
    walkVolume(volume, walker);
    if (stop.stop_requested())
        return discJobCancellation();
    if (!failure && !missing.isEmpty())
        differs(missing.constBegin().key(), QStringLiteral("is not listed any more"));
    return failure;
}

} // namespace Tessaron
