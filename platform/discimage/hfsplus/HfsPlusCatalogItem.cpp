#include "platform/discimage/hfsplus/HfsPlusCatalogItem.h"

#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/foundation/ByteOrder.h"

#include <QString>

#include <algorithm>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

namespace Field = HfsPlusItemField;
namespace Thread = HfsPlusThreadField;
namespace Key = HfsPlusCatalogKeyField;

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
    if (data.size() < Thread::name)
        return std::nullopt;
    const std::uint16_t type = loadBigEndian<std::uint16_t>(data.data());
    const std::size_t nameSize = 2 * std::size_t{loadBigEndian<std::uint16_t>(&data[Thread::nameLength])};
    if ((type != HfsPlusFolderThreadRecord && type != HfsPlusFileThreadRecord) || nameSize > data.size() - Thread::name)
        return std::nullopt;
    const auto *const name = reinterpret_cast<const char *>(data.data()) + Thread::name;
    return HfsPlusThread{type == HfsPlusFolderThreadRecord, loadBigEndian<std::uint32_t>(&data[Thread::parentId]),
                         QByteArray(name, qsizetype(nameSize))};
}

std::optional<HfsPlusItem> hfsPlusItem(HfsPlusBytes data)
{
    if (data.size() < Field::folderSize)
        return std::nullopt;
    const std::uint16_t type = loadBigEndian<std::uint16_t>(data.data());
    if (type != HfsPlusFolderRecord && (type != HfsPlusFileRecord || data.size() < Field::fileSize))
        return std::nullopt;
    HfsPlusItem item;
    item.isFolder = type == HfsPlusFolderRecord;
    item.childCount = loadBigEndian<std::uint32_t>(&data[Field::childCount]);
    item.id = loadBigEndian<std::uint32_t>(&data[Field::id]);
    item.created = loadBigEndian<std::uint32_t>(&data[Field::creationDate]);
    item.modified = loadBigEndian<std::uint32_t>(&data[Field::modificationDate]);
    item.mode = loadBigEndian<std::uint16_t>(&data[Field::mode]);
    item.special = loadBigEndian<std::uint32_t>(&data[Field::special]);
    if (!item.isFolder) {
        const auto *const bytes = reinterpret_cast<const char *>(data.data());
        item.typeAndCreator = {bytes + Field::finderInfo, Field::typeAndCreatorSize};
        item.dataFork = data.subspan(Field::dataFork, HfsPlusForkDataField::size);
    }
    return item;
}

std::uint32_t hfsPlusParentId(HfsPlusBytes key)
{
    return loadBigEndian<std::uint32_t>(&key[Key::parentId]);
}

HfsPlusBytes hfsPlusKeyName(HfsPlusBytes key)
{
    const std::size_t size = 2 * std::size_t{loadBigEndian<std::uint16_t>(&key[Key::nameLength])};
    return key.subspan(Key::name, std::min(size, (key.size() - Key::name) / 2 * 2));
}

QByteArray hfsPlusKey(std::uint32_t parentId, QByteArrayView name)
{
    QByteArray key(qsizetype(Key::name), Qt::Uninitialized);
    auto *const to = reinterpret_cast<std::uint8_t *>(key.data());
    storeBigEndian<std::uint32_t>(to + Key::parentId, parentId);
    storeBigEndian<std::uint16_t>(to + Key::nameLength, static_cast<std::uint16_t>(name.size() / 2));
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
    return {{std::int64_t{secondsSince1904} - epochDistance, 0}};
}

} // namespace Tessaron
