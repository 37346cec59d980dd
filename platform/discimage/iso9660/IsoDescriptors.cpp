#include "platform/discimage/iso9660/IsoDescriptors.h"

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

// Where fields of a volume descriptor lie (ECMA-119 8.4, counted from 0).
constexpr std::size_t typeField = 0;
constexpr std::size_t identifierField = 1;
constexpr std::size_t volumeNameField = 40;
constexpr std::size_t volumeNameSize = 32;
constexpr std::size_t blockCountField = 80;
constexpr std::size_t escapeField = 88;
constexpr std::size_t blockSizeField = 128;
constexpr std::size_t rootRecordField = 156;
constexpr std::size_t creationField = 813;
constexpr std::size_t modificationField = 830;
constexpr std::size_t applicationUseField = 883;
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
    const std::uint8_t *const escape = &sector[escapeField];
    return escape[0] == '%' && escape[1] == '/' && (escape[2] == '@' || escape[2] == 'C' || escape[2] == 'E');
}

NSError readDescriptor(const Sector &sector, std::uint64_t offset, VolumeKind kind, IsoDescriptor *descriptor)
{
    DiscVolumeFacts &facts = descriptor->facts;
    facts.kind = kind;
    const std::uint8_t *const name = &sector[volumeNameField];
    facts.name =
        trimmed(kind == VolumeKind::Joliet ? textFromBigEndianUnits(name, volumeNameSize)
                                           : QString::fromLatin1(reinterpret_cast<const char *>(name), volumeNameSize));
    facts.blockSize = loadLittleEndian<std::uint16_t>(&sector[blockSizeField]);
    facts.blockCount = loadLittleEndian<std::uint32_t>(&sector[blockCountField]);
    facts.created = volumeTimeFromDigits(&sector[creationField]);
    facts.modified = volumeTimeFromDigits(&sector[modificationField]);
    descriptor->offset = offset;
    const std::uint8_t *const root = &sector[rootRecordField];
    descriptor->rootBlock = loadLittleEndian<std::uint32_t>(root + 2);
    descriptor->rootLength = loadLittleEndian<std::uint32_t>(root + 10);
    descriptor->rootTime = volumeTimeFromRecordingDate(root + 18);
    descriptor->isStandIn = kind == VolumeKind::ISO9660
        && std::memcmp(&sector[applicationUseField], standInNote.data(), standInNote.size()) == 0;
    if (facts.blockSize != 512 && facts.blockSize != 1024 && facts.blockSize != 2048)
        return discImageError(DiscImageErrorCode::Damaged, offset + blockSizeField,
                              QStringLiteral("Blocks of %1 bytes are impossible").arg(facts.blockSize));
    if (loadBigEndian<std::uint32_t>(root + 6) != descriptor->rootBlock
        || loadBigEndian<std::uint32_t>(root + 14) != descriptor->rootLength)
        return discImageError(DiscImageErrorCode::Damaged, offset + rootRecordField,
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
        if (std::memcmp(&sector[identifierField], "CD001", 5) != 0 || sector[typeField] == Terminator)
            return firstError;
        if (sector[typeField] == BootRecord) {
            set->isBootable = std::memcmp(&sector[7], "EL TORITO SPECIFICATION", 23) == 0;
            continue;
        }
        const bool isOurs = sector[typeField] == Primary
            ? !set->primary
            : sector[typeField] == Supplementary && isJoliet(sector) && !set->joliet;
        if (!isOurs)
            continue;
        const VolumeKind kind = sector[typeField] == Primary ? VolumeKind::ISO9660 : VolumeKind::Joliet;
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
