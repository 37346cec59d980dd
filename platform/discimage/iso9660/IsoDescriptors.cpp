#include "platform/discimage/iso9660/IsoDescriptors.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"

#include <array>
#include <cstring>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t sectorSize = 2048;
constexpr std::uint64_t firstDescriptor = 16;
constexpr std::uint64_t maximumDescriptors = 64; // four or five is what there is

namespace Field = IsoDescriptorField;

constexpr std::string_view standInNote = "THE FILES ARE IN THE JOLIET TREE";

enum DescriptorType : std::uint8_t { BootRecord = 0, Primary = 1, Supplementary = 2, Terminator = 255 };

using Sector = std::array<std::uint8_t, sectorSize>;

QString trimmed(QString text)
{
    while (!text.isEmpty() && (text.back() == u' ' || text.back() == u'\0'))
        text.chop(1);
    return text;
}

/// The three escape sequences of Joliet, for the levels of UCS-2.
bool isJoliet(const Sector &sector)
{
    const std::uint8_t *const escape = &sector[Field::escape];
    return escape[0] == '%' && escape[1] == '/' && (escape[2] == '@' || escape[2] == 'C' || escape[2] == 'E');
}

NSError readDescriptor(const Sector &sector, std::uint64_t offset, VolumeKind kind, IsoDescriptor *descriptor)
{
    DiscVolumeFacts &facts = descriptor->facts;
    facts.kind = kind;
    const std::uint8_t *const name = &sector[Field::volumeName];
    facts.name = trimmed(kind == VolumeKind::Joliet
                             ? textFromBigEndianUnits(name, Field::shortTextSize)
                             : QString::fromLatin1(reinterpret_cast<const char *>(name), Field::shortTextSize));
    facts.blockSize = loadLittleEndian<std::uint16_t>(&sector[Field::blockSize]);
    facts.blockCount = loadLittleEndian<std::uint32_t>(&sector[Field::blockCount]);
    facts.created = volumeTimeFromDigits(&sector[Field::creationDate]);
    facts.modified = volumeTimeFromDigits(&sector[Field::modificationDate]);
    descriptor->offset = offset;
    const std::uint8_t *const root = &sector[Field::rootRecord];
    descriptor->rootBlock = loadLittleEndian<std::uint32_t>(root + IsoRecordField::block);
    descriptor->rootLength = loadLittleEndian<std::uint32_t>(root + IsoRecordField::dataLength);
    descriptor->rootTime = volumeTimeFromRecordingDate(root + IsoRecordField::date);
    descriptor->isStandIn = kind == VolumeKind::ISO9660
        && std::memcmp(&sector[Field::applicationUse], standInNote.data(), standInNote.size()) == 0;
    if (facts.blockSize != 512 && facts.blockSize != 1024 && facts.blockSize != 2048)
        return discImageError(DiscImageErrorCode::Damaged, offset + Field::blockSize,
                              QStringLiteral("Blocks of %1 bytes are impossible").arg(facts.blockSize));
    if (loadBigEndian<std::uint32_t>(root + IsoRecordField::block + sizeof(std::uint32_t)) != descriptor->rootBlock
        || loadBigEndian<std::uint32_t>(root + IsoRecordField::dataLength + sizeof(std::uint32_t))
            != descriptor->rootLength)
        return discImageError(DiscImageErrorCode::Damaged, offset + Field::rootRecord,
                              QStringLiteral("The two byte orders of the root's place disagree"));
    return {};
}

} // namespace

QString textFromBigEndianUnits(const std::uint8_t *bytes, std::size_t length)
{
    QString text(qsizetype(length / 2), Qt::Uninitialized);
    for (std::size_t index = 0; index < length / 2; ++index)
        text[qsizetype(index)] = QChar(loadBigEndian<std::uint16_t>(bytes + 2 * index));
    return text;
}

NSError readIsoDescriptors(const DiscImageSource &source, IsoDescriptorSet *set)
{
    NSError firstError;
    Sector sector;
    for (std::uint64_t number = firstDescriptor; number < firstDescriptor + maximumDescriptors; ++number) {
        const std::uint64_t offset = number * sectorSize;
        if (!source.contains(offset, sectorSize))
            return firstError;
        if (NSError error = source.read(offset, sector.data(), sector.size()))
            return error;
        if (std::memcmp(&sector[Field::identifier], "CD001", 5) != 0 || sector[Field::type] == Terminator)
            return firstError;
        if (sector[Field::type] == BootRecord) {
            set->isBootable =
                std::memcmp(&sector[IsoBootRecordField::systemIdentifier], "EL TORITO SPECIFICATION", 23) == 0;
            continue;
        }
        const bool isOurs = sector[Field::type] == Primary
            ? !set->primary
            : sector[Field::type] == Supplementary && isJoliet(sector) && !set->joliet;
        if (!isOurs)
            continue;
        const VolumeKind kind = sector[Field::type] == Primary ? VolumeKind::ISO9660 : VolumeKind::Joliet;
        IsoDescriptor descriptor;
        if (const NSError error = readDescriptor(sector, offset, kind, &descriptor)) {
            if (!firstError)
                firstError = error;
            continue;
        }
        (kind == VolumeKind::ISO9660 ? set->primary : set->joliet) = descriptor;
    }
    return firstError;
}

} // namespace Tessaron
