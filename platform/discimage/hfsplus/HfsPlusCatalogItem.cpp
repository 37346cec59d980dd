#include "platform/discimage/hfsplus/HfsPlusCatalogItem.h"

#include "platform/foundation/ByteOrder.h"

#include <QString>

#include <algorithm>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

enum RecordType : std::uint16_t {
    FolderRecord = 1,
    FileRecord = 2,
    FolderThreadRecord = 3,
    FileThreadRecord = 4,
};

// Of folder and file records ("Catalog Folder Records", "Catalog File Records").
constexpr std::size_t childCountField = 4;
constexpr std::size_t idField = 8;
constexpr std::size_t createdField = 12;
constexpr std::size_t modifiedField = 16;
constexpr std::size_t modeField = 42;
constexpr std::size_t specialField = 44;
constexpr std::size_t folderRecordSize = 88;
constexpr std::size_t fileRecordSize = 248;
constexpr std::size_t threadHeadSize = 10;
constexpr std::size_t keyHeadSize = 6;
constexpr std::size_t dataForkOffset = 88;
constexpr std::size_t dataForkSize = 80;
constexpr std::size_t finderInfoOffset = 48;
constexpr std::size_t typeAndCreatorSize = 8;

/// From 1904 to 1970, seconds.
constexpr std::int64_t epochDistance = 2'082'844'800;

bool isAscii(HfsPlusBytes name)
{
    for (std::size_t at = 0; at + 1 < name.size(); at += 2) {
        if (name[at] != 0 || name[at + 1] >= 0x80)
            return false;
    }
    return true;
}

/// UTF-8 of the name without any exchange.
QByteArray composedName(HfsPlusBytes name)
{
    if (isAscii(name)) {
        QByteArray text(qsizetype(name.size() / 2), Qt::Uninitialized);
        for (qsizetype index = 0; index < text.size(); ++index)
            text[index] = char(name[std::size_t(index) * 2 + 1]);
        return text;
    }
    QString text(qsizetype(name.size() / 2), Qt::Uninitialized);
    for (qsizetype index = 0; index < text.size(); ++index)
        text[index] = QChar(loadBigEndian<std::uint16_t>(&name[std::size_t(index) * 2]));
    return text.normalized(QString::NormalizationForm_C).toUtf8();
}

} // namespace

VolumeObjectKind HfsPlusItem::kind() const
{
    if (isFolder)
        return VolumeObjectKind::Folder;
    if (mode == 0)
        return typeAndCreator == "slnkrhap" ? VolumeObjectKind::SymbolicLink : VolumeObjectKind::File;
    if (S_ISLNK(mode))
        return VolumeObjectKind::SymbolicLink;
    return S_ISREG(mode) ? VolumeObjectKind::File : VolumeObjectKind::Other;
}

std::optional<HfsPlusThread> hfsPlusThread(HfsPlusBytes data)
{
    if (data.size() < threadHeadSize)
        return std::nullopt;
    const std::uint16_t type = loadBigEndian<std::uint16_t>(data.data());
    const std::size_t nameSize = 2 * std::size_t{loadBigEndian<std::uint16_t>(&data[8])};
    if ((type != FolderThreadRecord && type != FileThreadRecord) || nameSize > data.size() - threadHeadSize)
        return std::nullopt;
    const auto *const name = reinterpret_cast<const char *>(data.data()) + threadHeadSize;
    return HfsPlusThread{type == FolderThreadRecord, loadBigEndian<std::uint32_t>(&data[4]),
                         QByteArray(name, qsizetype(nameSize))};
}

std::optional<HfsPlusItem> hfsPlusItem(HfsPlusBytes data)
{
    if (data.size() < folderRecordSize)
        return std::nullopt;
    const std::uint16_t type = loadBigEndian<std::uint16_t>(data.data());
    if (type != FolderRecord && (type != FileRecord || data.size() < fileRecordSize))
        return std::nullopt;
    HfsPlusItem item;
    item.isFolder = type == FolderRecord;
    item.childCount = loadBigEndian<std::uint32_t>(&data[childCountField]);
    item.id = loadBigEndian<std::uint32_t>(&data[idField]);
    item.created = loadBigEndian<std::uint32_t>(&data[createdField]);
    item.modified = loadBigEndian<std::uint32_t>(&data[modifiedField]);
    item.mode = loadBigEndian<std::uint16_t>(&data[modeField]);
    item.special = loadBigEndian<std::uint32_t>(&data[specialField]);
    if (!item.isFolder) {
        const auto *const bytes = reinterpret_cast<const char *>(data.data());
        item.typeAndCreator = {bytes + finderInfoOffset, typeAndCreatorSize};
        item.dataFork = data.subspan(dataForkOffset, dataForkSize);
    }
    return item;
}

std::uint32_t hfsPlusParentId(HfsPlusBytes key)
{
    return loadBigEndian<std::uint32_t>(key.data());
}

HfsPlusBytes hfsPlusKeyName(HfsPlusBytes key)
{
    const std::size_t size = 2 * std::size_t{loadBigEndian<std::uint16_t>(&key[4])};
    return key.subspan(keyHeadSize, std::min(size, (key.size() - keyHeadSize) / 2 * 2));
}

QByteArray hfsPlusKey(std::uint32_t parentId, QByteArrayView name)
{
    QByteArray key(qsizetype(keyHeadSize), Qt::Uninitialized);
    auto *const to = reinterpret_cast<std::uint8_t *>(key.data());
    storeBigEndian<std::uint32_t>(to, parentId);
    storeBigEndian<std::uint16_t>(to + 4, static_cast<std::uint16_t>(name.size() / 2));
    key.append(name);
    return key;
}

std::optional<QByteArray> hfsPlusDisplayName(HfsPlusBytes name)
{
    QByteArray text = composedName(name);
    if (text.isEmpty() || text == "." || text == ".." || text.contains(':'))
        return std::nullopt;
    text.replace('/', ':');
    return text;
}

VolumeTime hfsPlusTime(std::uint32_t secondsSince1904)
{
    return {std::int64_t{secondsSince1904} - epochDistance, 0};
}

} // namespace Tessaron
