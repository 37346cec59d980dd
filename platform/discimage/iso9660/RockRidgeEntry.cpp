#include "platform/discimage/iso9660/RockRidgeEntry.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"

#include <bit>
#include <sys/sysmacros.h>
#include <vector>

namespace Tessaron
{

namespace
{

// All of a record's entries together. A name of 255 bytes and a link target of 4096 take less than a tenth of it, and
// areas that lead to themselves end here.
constexpr std::size_t maximumContinuation = 65536;

constexpr std::uint16_t signature(char first, char second)
{
    return std::uint16_t(std::uint8_t(first) << 8 | std::uint8_t(second));
}

/// The signature of an entry as signature() makes it.
std::uint16_t signatureOf(std::span<const std::uint8_t> use)
{
    return loadBigEndian<std::uint16_t>(&use[SystemUseField::signature]);
}

/// The other place where a record's entries go on (SUSP 5.1).
struct Continuation {
    std::uint64_t block = 0;
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
};

class Parser
{
public:
    explicit Parser(RockRidgeEntry *entry)
        : m_entry(*entry)
    {
    }

    /// Reads the entries of one area; false when they are damaged, with the place in the area.
    bool parse(std::span<const std::uint8_t> area, std::size_t *wrongAt)
    {
        m_continuation.reset();
        // An area may end with a byte of padding.
        for (std::size_t at = 0; at + SystemUseField::data <= area.size();) {
            const std::size_t size = area[at + SystemUseField::length];
            *wrongAt = at;
            if (size == 0 && area[at] == 0)
                return true; // some writers fill up with zeros
            if (size < SystemUseField::data || size > area.size() - at)
                return false;
            const auto use = area.subspan(at, size);
            if (signatureOf(use) == signature('S', 'T'))
                return true;
            if (!parseEntry(use))
                return false;
            at += size;
        }
        return true;
    }

    [[nodiscard]] const std::optional<Continuation> &continuation() const { return m_continuation; }

private:
    bool parseEntry(std::span<const std::uint8_t> use)
    {
        switch (signatureOf(use)) {
        case signature('S', 'P'):
            m_entry.hasSharingProtocol = use.size() >= SharingProtocolField::size
                && use[SharingProtocolField::checkBytes] == SharingProtocolField::firstCheckByte
                && use[SharingProtocolField::checkBytes + 1] == SharingProtocolField::secondCheckByte;
            m_entry.skippedBytes =
                use.size() >= SharingProtocolField::size ? use[SharingProtocolField::skippedBytes] : 0;
            return true;
        case signature('E', 'R'):
            return parseExtension(use);
        case signature('R', 'R'):
            m_entry.isRockRidge = true;
            return true;
        case signature('C', 'E'):
            if (use.size() < ContinuationField::size)
                return false;
            m_continuation = {loadLittleEndian<std::uint32_t>(&use[ContinuationField::block]),
                              loadLittleEndian<std::uint32_t>(&use[ContinuationField::offset]),
                              loadLittleEndian<std::uint32_t>(&use[ContinuationField::length])};
            return true;
        case signature('P', 'X'):
            return parseAttributes(use);
        case signature('P', 'N'):
            return parseDevice(use);
        case signature('T', 'F'):
            return parseTimes(use);
        case signature('N', 'M'):
            return parseName(use);
        case signature('S', 'L'):
            return parseLink(use);
        case signature('C', 'L'):
            if (use.size() < ChildLinkField::size)
                return false;
            m_entry.childBlock = loadLittleEndian<std::uint32_t>(&use[ChildLinkField::block]);
            return true;
        case signature('R', 'E'):
            m_entry.isRelocated = true;
            return true;
        default:
            return true; // of another extension
        }
    }

    bool parseExtension(std::span<const std::uint8_t> use)
    {
        if (use.size() < ExtensionField::texts
            || ExtensionField::texts + use[ExtensionField::identifierLength] > use.size())
            return false;
        const QByteArrayView identifier(reinterpret_cast<const char *>(use.data()) + ExtensionField::texts,
                                        use[ExtensionField::identifierLength]);
        for (const char *const known : {"RRIP_1991A", "IEEE_P1282", "IEEE_1282"})
            m_entry.isRockRidge = m_entry.isRockRidge || identifier == QByteArrayView(known);
        return true;
    }

    bool parseAttributes(std::span<const std::uint8_t> use)
    {
        if (use.size() < PosixField::serialNumber)
            return false;
        m_entry.isRockRidge = true;
        m_entry.mode = loadLittleEndian<std::uint32_t>(&use[PosixField::mode]);
        m_entry.userId = loadLittleEndian<std::uint32_t>(&use[PosixField::userId]);
        m_entry.groupId = loadLittleEndian<std::uint32_t>(&use[PosixField::groupId]);
        if (use.size() >= PosixField::size) // the older text has no serial number
            m_entry.serialNumber = loadLittleEndian<std::uint32_t>(&use[PosixField::serialNumber]);
        return true;
    }

    /// The low half mostly holds the whole number, in the way of 16 bits or of 12 and 8; else the halves are major and
    /// minor number.
    bool parseDevice(std::span<const std::uint8_t> use)
    {
        if (use.size() < DeviceField::size)
            return false;
        const auto high = loadLittleEndian<std::uint32_t>(&use[DeviceField::high]);
        const auto low = loadLittleEndian<std::uint32_t>(&use[DeviceField::low]);
        m_entry.deviceNumber = high == 0 ? makedev(low >> 8, low & 0xFF) : makedev(high, low);
        return true;
    }

    bool parseTimes(std::span<const std::uint8_t> use)
    {
        if (use.size() < RockRidgeField::content)
            return false;
        const std::uint8_t flags = use[RockRidgeField::flags];
        const bool isLong = (flags & TimesFlag::longForm) != 0;
        const std::size_t size = isLong ? IsoDescriptorField::dateSize : IsoRecordField::dateSize;
        const auto stamps = std::size_t(std::popcount(std::uint8_t(flags & ~TimesFlag::longForm)));
        if (use.size() < RockRidgeField::content + stamps * size)
            return false;
        if ((flags & TimesFlag::modification) == 0)
            return true;
        const std::uint8_t *const stamp =
            &use[RockRidgeField::content] + ((flags & TimesFlag::creation) != 0 ? size : 0);
        m_entry.modified = isLong ? volumeTimeFromDigits(stamp) : volumeTimeFromRecordingDate(stamp);
        return true;
    }

    bool parseName(std::span<const std::uint8_t> use)
    {
        if (use.size() < RockRidgeField::content)
            return false;
        m_entry.hasName = true;
        m_entry.name.append(reinterpret_cast<const char *>(use.data()) + RockRidgeField::content,
                            qsizetype(use.size() - RockRidgeField::content));
        return true;
    }

    bool parseLink(std::span<const std::uint8_t> use)
    {
        if (use.size() < RockRidgeField::content)
            return false;
        namespace Component = LinkComponentField;
        m_entry.isLink = true;
        for (std::size_t at = RockRidgeField::content; at < use.size();) {
            if (at + Component::text > use.size() || at + Component::text + use[at + Component::length] > use.size())
                return false;
            const std::size_t length = use[at + Component::length];
            appendComponent(use[at + Component::flags], use.subspan(at + Component::text, length));
            at += Component::text + length;
        }
        return true;
    }

    void appendComponent(std::uint8_t flags, std::span<const std::uint8_t> text)
    {
        QByteArray &target = m_entry.linkTarget;
        if (!m_componentContinues && !target.isEmpty() && !target.endsWith('/'))
            target += '/';
        if ((flags & LinkComponentFlag::root) != 0)
            target = "/";
        else if ((flags & LinkComponentFlag::parent) != 0)
            target += "..";
        else if ((flags & LinkComponentFlag::current) != 0)
            target += '.';
        else
            target.append(reinterpret_cast<const char *>(text.data()), qsizetype(text.size()));
        m_componentContinues = (flags & LinkComponentFlag::continues) != 0;
    }

    RockRidgeEntry &m_entry;
    std::optional<Continuation> m_continuation;
    bool m_componentContinues = false;
};

NSError damaged(std::uint64_t offset)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, QStringLiteral("A system use entry makes no sense"));
}

} // namespace

NSError readRockRidgeEntry(const DiscImageSource &source, std::uint32_t blockSize, std::span<const std::uint8_t> area,
                           std::uint64_t offset, RockRidgeEntry *entry)
{
    Parser parser(entry);
    std::size_t wrongAt = 0;
    if (!parser.parse(area, &wrongAt))
        return damaged(offset + wrongAt);
    std::size_t total = 0;
    std::vector<std::uint8_t> buffer;
    while (parser.continuation()) {
        const Continuation next = *parser.continuation();
        const std::uint64_t place = source.offsetOnDisc(next.block * blockSize) + next.offset;
        // An area without bytes leads nowhere, but could lead there forever.
        total += next.length + SystemUseField::data;
        if (total > maximumContinuation)
            return discImageError(DiscImageErrorCode::Loop, place,
                                  QStringLiteral("The continuation areas of a record have no end"));
        buffer.resize(next.length);
        if (NSError error = source.read(place, buffer.data(), buffer.size()))
            return error;
        if (!parser.parse(buffer, &wrongAt))
            return damaged(place + wrongAt);
    }
    return {};
}

} // namespace Tessaron
