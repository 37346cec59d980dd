#include "platform/discimage/hfsplus/HfsPlusVolumeReader.h"

#include "platform/discimage/hfsplus/HfsPlusKeyOrder.h"
#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t rootParentId = 1;
constexpr std::uint32_t rootId = 2;
constexpr std::uint32_t extentsFileId = 3;
constexpr std::uint32_t catalogFileId = 4;
constexpr std::uint32_t firstUserId = 16;

/// No system follows a longer symbolic link.
constexpr std::uint64_t longestLinkTarget = 65536;

constexpr std::u16string_view privateFolderName{u"\0\0\0\0HFS+ Private Data", 21};
constexpr std::u16string_view privateDirectoriesName{u".HFS+ Private Directory Data\r", 29};

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

HfsPlusBytes bytesOf(QByteArrayView bytes)
{
    return {reinterpret_cast<const std::uint8_t *>(bytes.data()), std::size_t(bytes.size())};
}

QByteArray bigEndian(std::u16string_view text)
{
    QByteArray bytes(qsizetype(text.size() * 2), Qt::Uninitialized);
    for (std::size_t index = 0; index < text.size(); ++index)
        storeBigEndian<std::uint16_t>(reinterpret_cast<std::uint8_t *>(bytes.data()) + 2 * index, text[index]);
    return bytes;
}

} // namespace

VolumeReaderResult HfsPlusVolumeReader::open(const std::shared_ptr<const DiscImageSource> &source)
{
    VolumeReaderResult result;
    const std::optional<HfsPlusHeader> header = findHfsPlusHeader(*source, &result.error);
    if (!header)
        return result;
    std::unique_ptr<HfsPlusVolumeReader> reader(new HfsPlusVolumeReader(source));
    result.error = reader->load(source, *header);
    if (result.error)
        return result;
    result.error = checkHfsPlusHeaderCopy(*source, *header);
    result.reader = std::move(reader);
    return result;
}

NSError HfsPlusVolumeReader::load(const std::shared_ptr<const DiscImageSource> &source, const HfsPlusHeader &header)
{
    m_header = header;
    m_facts.kind = VolumeKind::HFSPlus;
    m_facts.blockSize = header.place.blockSize;
    m_facts.blockCount = header.place.blockCount;
    m_facts.offset = header.place.offset;
    m_facts.modified = hfsPlusTime(header.modified);
    m_facts.firstYear = 1904;
    m_facts.lastYear = 2040; // until 6 February
    if (NSError error = openTrees(source))
        return error;
    if (NSError error = readRoot())
        return error;
    return findPrivateFolder();
}

NSError HfsPlusVolumeReader::openTrees(const std::shared_ptr<const DiscImageSource> &source)
{
    const HfsPlusBytes header = m_header.bytes;
    NSError error;
    HfsPlusBTreeWalker::Traits traits;
    traits.shortestKey = HfsPlusExtentsKeyField::size;
    traits.orderFor = [](std::uint8_t) { return hfsPlusExtentsOrder(); };
    traits.name = QStringLiteral("extents file");
    error =
        extentsOf(header.subspan(HfsPlusHeaderField::extentsFile), extentsFileId, m_header.offset(), &traits.extents);
    if (!error)
        m_extents = HfsPlusBTreeWalker::open(source, std::move(traits), &error);
    if (error)
        return error;
    traits = {};
    traits.shortestKey = HfsPlusCatalogKeyField::name;
    traits.orderFor = [isHfsx = m_header.isHfsx](std::uint8_t compareType) {
        return hfsPlusCatalogOrder(isHfsx, compareType);
    };
    traits.name = QStringLiteral("catalog");
    error =
        extentsOf(header.subspan(HfsPlusHeaderField::catalogFile), catalogFileId, m_header.offset(), &traits.extents);
    if (!error)
        m_catalog = HfsPlusBTreeWalker::open(source, std::move(traits), &error);
    return error;
}

NSError HfsPlusVolumeReader::readRoot()
{
    HfsPlusTreePlace place;
    HfsPlusItem item;
    if (NSError error = findFolder(rootId, &place, &item))
        return error;
    if (hfsPlusParentId(place.key) != rootParentId)
        return damaged(place.recordOffset(), QStringLiteral("The root of the HFS+ volume lies in a folder"));
    m_rootCreated = item.created;
    m_facts.created = hfsPlusTime(item.created);
    m_facts.name = QString::fromUtf8(hfsPlusDisplayName(hfsPlusKeyName(place.key)).value_or(QByteArray()));
    return describe(item, place.recordOffset(), &m_root);
}

NSError HfsPlusVolumeReader::findPrivateFolder()
{
    HfsPlusTreePlace place;
    bool isFound = false;
    if (NSError error = find(rootId, bigEndian(privateFolderName), &place, &isFound))
        return error;
    if (!isFound)
        return {};
    const std::optional<HfsPlusItem> folder = hfsPlusItem(place.data);
    if (!folder || !folder->isFolder)
        return damaged(place.recordOffset(), QStringLiteral("The folder of hard links is not a folder"));
    m_privateFolder = folder->id;
    m_privateFolderCreated = folder->created;
    return {};
}

VolumeObject HfsPlusVolumeReader::root() const
{
    return m_root;
}

NSError HfsPlusVolumeReader::find(std::uint32_t parentId, QByteArrayView name, HfsPlusTreePlace *place,
                                  bool *isFound) const
{
    return m_catalog->find(bytesOf(hfsPlusKey(parentId, name)), place, isFound);
}

NSError HfsPlusVolumeReader::findFolder(std::uint32_t id, HfsPlusTreePlace *place, HfsPlusItem *item) const
{
    bool isFound = false;
    if (NSError error = find(id, {}, place, &isFound))
        return error;
    const std::optional<HfsPlusThread> thread = isFound ? hfsPlusThread(place->data) : std::nullopt;
    if (!thread || !thread->isFolder)
        return damaged(m_header.offset(), QStringLiteral("The HFS+ catalog has no thread for folder %1").arg(id));
    const std::uint64_t threadOffset = place->recordOffset();
    if (NSError error = find(thread->parentId, thread->name, place, &isFound))
        return error;
    const std::optional<HfsPlusItem> folder = isFound ? hfsPlusItem(place->data) : std::nullopt;
    if (!folder || !folder->isFolder || folder->id != id)
        return damaged(threadOffset, QStringLiteral("A thread of the HFS+ catalog does not lead to its folder"));
    *item = *folder;
    return {};
}

NSError HfsPlusVolumeReader::checkThread(std::uint32_t fileId, std::uint64_t recordOffset) const
{
    HfsPlusTreePlace place;
    bool isFound = false;
    if (NSError error = find(fileId, {}, &place, &isFound))
        return error;
    const std::optional<HfsPlusThread> thread = isFound ? hfsPlusThread(place.data) : std::nullopt;
    if (thread) {
        if (NSError error = find(thread->parentId, thread->name, &place, &isFound))
            return error;
    }
    if (!thread || !isFound || place.recordOffset() != recordOffset)
        return damaged(recordOffset, QStringLiteral("A file of the HFS+ volume is not the one that has its ID"));
    return {};
}

NSError HfsPlusVolumeReader::extentsOf(HfsPlusBytes fork, std::uint32_t fileId, std::uint64_t recordOffset,
                                       std::vector<VolumeExtent> *extents) const
{
    const HfsPlusForkHead head = hfsPlusForkHead(fork.data());
    HfsPlusForkExtents found(m_header.place, head);
    if (NSError error = found.add(fork.data() + HfsPlusForkDataField::extents, recordOffset))
        return error;
    if (!found.isComplete() && fileId >= firstUserId) {
        if (NSError error = checkThread(fileId, recordOffset))
            return error;
    }
    while (!found.isComplete()) {
        std::array<std::uint8_t, HfsPlusExtentsKeyField::size> key{}; // of the data fork
        storeBigEndian<std::uint32_t>(&key[HfsPlusExtentsKeyField::fileId], fileId);
        storeBigEndian<std::uint32_t>(&key[HfsPlusExtentsKeyField::firstBlock], found.blocksFound());
        HfsPlusTreePlace place;
        bool isFound = false;
        if (m_extents) { // the extents file itself has no more than eight
            if (NSError error = m_extents->find(key, &place, &isFound))
                return error;
        }
        if (!isFound || place.data.size() < HfsPlusExtentField::recordSize)
            return damaged(recordOffset, QStringLiteral("A fork has fewer blocks than it says"));
        if (NSError error = found.add(place.data.data(), place.recordOffset()))
            return error;
    }
    return found.finish(recordOffset, extents);
}

bool HfsPlusVolumeReader::isHidden(std::uint32_t parentId, HfsPlusBytes name) const
{
    if (parentId != rootId)
        return false;
    const auto is = [name](std::u16string_view wanted) { return std::ranges::equal(name, bytesOf(bigEndian(wanted))); };
    return is(privateFolderName) || is(privateDirectoriesName)
        || (m_header.hasJournal && (is(u".journal") || is(u".journal_info_block")));
}

NSError HfsPlusVolumeReader::listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const
{
    const auto id = static_cast<std::uint32_t>(folder.location);
    HfsPlusTreePlace place;
    HfsPlusItem itself;
    if (NSError error = findFolder(id, &place, &itself))
        return error;
    const std::uint64_t folderOffset = place.recordOffset();
    bool isFound = false;
    if (NSError error = find(id, {}, &place, &isFound)) // the thread, behind which the children are
        return error;
    std::uint32_t count = 0;
    NSError firstError;
    const auto remember = [&firstError](NSError error) {
        if (!firstError)
            firstError = std::move(error);
    };
    for (;; ++count) {
        if (NSError error = m_catalog->advance(&place, &isFound))
            return firstError ? firstError : error;
        if (!isFound || hfsPlusParentId(place.key) != id)
            break;
        const HfsPlusBytes recordedName = hfsPlusKeyName(place.key);
        if (isHidden(id, recordedName))
            continue;
        const std::optional<HfsPlusItem> item = hfsPlusItem(place.data);
        std::optional<QByteArray> name = hfsPlusDisplayName(recordedName);
        if (!item || !name || item->id < firstUserId) {
            remember(damaged(place.recordOffset(), QStringLiteral("An object of the HFS+ catalog makes no sense")));
            continue;
        }
        VolumeObject object;
        if (NSError error = describe(*item, place.recordOffset(), &object)) {
            remember(std::move(error));
            continue;
        }
        object.name = std::move(*name);
        if (!visitor(object))
            return firstError;
    }
    if (count != itself.childCount)
        remember(damaged(folderOffset,
                         QStringLiteral("A folder of the HFS+ volume has %1 children, but says %2")
                             .arg(count)
                             .arg(itself.childCount)));
    return firstError;
}

bool HfsPlusVolumeReader::leadsToPrivateFolder(const HfsPlusItem &item) const
{
    // Any program can give a file this type; a link has the date of the folder that it leads to, too ("Hard Links").
    return item.isHardLink() && m_privateFolder != 0
        && (item.created == m_privateFolderCreated || item.created == m_rootCreated);
}

NSError HfsPlusVolumeReader::describe(const HfsPlusItem &item, std::uint64_t recordOffset, VolumeObject *object) const
{
    if (leadsToPrivateFolder(item))
        return describeLink(item, recordOffset, object);
    object->kind = item.kind();
    object->recordOffset = recordOffset;
    object->modified = hfsPlusTime(item.modified);
    if (item.mode != 0)
        object->mode = item.mode;
    if (item.isFolder) {
        object->location = item.id;
        return {};
    }
    object->identity = item.id;
    if (object->kind == VolumeObjectKind::Other)
        return {};
    if (NSError error = extentsOf(item.dataFork, item.id, recordOffset, &object->extents))
        return error;
    object->size = hfsPlusForkHead(item.dataFork.data()).length;
    return object->kind == VolumeObjectKind::SymbolicLink ? readLinkTarget(object) : NSError();
}

NSError HfsPlusVolumeReader::describeLink(const HfsPlusItem &link, std::uint64_t recordOffset,
                                          VolumeObject *object) const
{
    const std::u16string name = u"iNode" + QString::number(link.special).toStdU16String();
    HfsPlusTreePlace place;
    bool isFound = false;
    if (NSError error = find(m_privateFolder, bigEndian(name), &place, &isFound))
        return error;
    const std::optional<HfsPlusItem> file = isFound ? hfsPlusItem(place.data) : std::nullopt;
    if (!file || file->isFolder || leadsToPrivateFolder(*file))
        return damaged(recordOffset, QStringLiteral("A hard link of the HFS+ volume leads nowhere"));
    return describe(*file, place.recordOffset(), object);
}

NSError HfsPlusVolumeReader::readLinkTarget(VolumeObject *link) const
{
    if (link->size == 0 || link->size > longestLinkTarget)
        return damaged(link->recordOffset, QStringLiteral("A symbolic link has an impossible length"));
    link->linkTarget.resize(qsizetype(link->size));
    std::size_t bytesRead = 0;
    if (NSError error = read(*link, 0, link->linkTarget.data(), std::size_t(link->size), &bytesRead))
        return error;
    link->extents.clear();
    link->size = 0;
    return {};
}

} // namespace Tessaron
