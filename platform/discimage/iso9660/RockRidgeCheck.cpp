#include "platform/discimage/iso9660/RockRidgeCheck.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace Tessaron
{

namespace
{

using Bytes = std::span<const std::uint8_t>;

/// The entries of a record take less in any sound image; areas that lead to themselves end here.
constexpr std::size_t maximumContinuation = 65536;

/// Entries of SUSP and Rock Ridge with their fixed lengths, 0 for those of any length.
struct KnownEntry {
    std::string_view signature;
    std::size_t length = 0;
};
constexpr KnownEntry knownEntries[] = {{"CE", 28}, {"PD", 0}, {"SP", 7},  {"ST", 4},  {"ER", 0},  {"ES", 5}, {"PX", 0},
                                       {"PN", 20}, {"SL", 0}, {"NM", 0},  {"CL", 12}, {"PL", 12}, {"RE", 4}, {"TF", 0},
                                       {"SF", 0},  {"RR", 5}, {"ZF", 16}, {"AL", 0},  {"AA", 0},  {"BA", 0}, {"AS", 0}};

std::string_view signatureOf(Bytes entry)
{
    return {reinterpret_cast<const char *>(entry.data()), 2};
}

class RecordCheck
{
public:
    RecordCheck(const DiscImageSource &source, std::uint32_t blockSize, const RockRidgeUse &use,
                const VolumeProblems &problems)
        : m_source(source)
        , m_blockSize(blockSize)
        , m_use(use)
        , m_problems(problems)
    {
    }

    /// Goes through an area and those where it goes on.
    void run(Bytes area, std::uint64_t offset)
    {
        std::vector<std::uint8_t> buffer;
        std::size_t total = 0;
        for (;;) {
            m_nextLength = 0;
            checkArea(area, offset);
            if (m_nextLength == 0)
                return;
            total += m_nextLength;
            if (total > maximumContinuation)
                return damaged(offset, QStringLiteral("the continuation areas of a record have no end"));
            offset = m_nextOffset;
            buffer.resize(m_nextLength);
            if (const NSError error = m_source.read(offset, buffer.data(), buffer.size()))
                return m_problems.error(structure(), error);
            area = buffer;
        }
    }

    [[nodiscard]] const RockRidgeRecordFacts &facts() const { return m_facts; }
    [[nodiscard]] bool hasAttributes() const { return m_facts.mode.has_value(); }
    [[nodiscard]] bool hasTimes() const { return m_hasTimes; }
    [[nodiscard]] bool isMarked() const { return m_isMarked; }
    [[nodiscard]] bool hasSharingProtocol() const { return m_hasSharingProtocol; }
    [[nodiscard]] std::size_t skippedBytes() const { return m_skippedBytes; }
    [[nodiscard]] bool hasOtherExtensions() const { return m_hasOtherExtensions; }
    [[nodiscard]] bool isLink() const { return m_isLink; }
    [[nodiscard]] bool isCutOff() const { return m_nameContinues || m_linkContinues; }

    static QString structure() { return QStringLiteral("system use entry"); }

private:
    void damaged(std::uint64_t offset, const QString &message) const
    {
        m_problems.damaged(offset, structure(), message);
    }

    void checkArea(Bytes area, std::uint64_t offset)
    {
        std::size_t at = 0;
        while (at + SystemUseField::data <= area.size()) {
            const std::size_t size = area[at + SystemUseField::length];
            if (area[at] == 0 && size == 0)
                break; // some writers fill up with zeros
            if (size < SystemUseField::data || size > area.size() - at)
                return damaged(offset + at, QStringLiteral("an entry of %1 bytes is impossible").arg(size));
            const Bytes entry = area.subspan(at, size);
            checkEntry(entry, offset + at);
            at += size;
            if (signatureOf(entry) == "ST")
                return;
        }
        if (std::any_of(area.begin() + std::ptrdiff_t(at), area.end(), [](std::uint8_t byte) { return byte != 0; }))
            damaged(offset + at, QStringLiteral("there is something behind the last entry"));
    }

    void checkEntry(Bytes entry, std::uint64_t offset)
    {
        const std::string_view signature = signatureOf(entry);
        const auto *const known =
            std::find_if(std::begin(knownEntries), std::end(knownEntries),
                         [signature](const KnownEntry &one) { return one.signature == signature; });
        if (known == std::end(knownEntries)) {
            if (!m_use.hasOtherExtensions && !m_hasOtherExtensions)
                damaged(offset, QStringLiteral("an entry has an unknown mark"));
            return;
        }
        if (known->length != 0 && known->length != entry.size())
            return damaged(offset + SystemUseField::length, QStringLiteral("an entry has the wrong length"));
        if (entry[SystemUseField::version] != 1 && signature != "AA" && signature != "ZF" && signature != "AL")
            damaged(offset + SystemUseField::version, QStringLiteral("an entry has an unknown version"));
        if (signature == "CE")
            checkContinuation(entry, offset);
        else if (signature == "PX")
            checkAttributes(entry, offset);
        else if (signature == "PN")
            checkNumbers(entry, offset, 2);
        else if (signature == "TF")
            checkTimes(entry, offset);
        else if (signature == "NM")
            checkName(entry, offset);
        else if (signature == "SL")
            checkLink(entry, offset);
        else if (signature == "CL" || signature == "PL")
            checkRelocation(entry, offset);
        else if (signature == "SP")
            checkSharingProtocol(entry, offset);
        else if (signature == "ER")
            checkExtension(entry, offset);
    }

    /// `count` numbers of 32 bits in both byte orders behind the head.
    void checkNumbers(Bytes entry, std::uint64_t offset, std::size_t count)
    {
        for (std::size_t index = 0; index < count; ++index) {
            const std::size_t at = SystemUseField::data + 8 * index;
            if (loadLittleEndian<std::uint32_t>(&entry[at])
                != loadBigEndian<std::uint32_t>(&entry[at + sizeof(std::uint32_t)]))
                damaged(offset + at, QStringLiteral("the two byte orders of a number disagree"));
        }
    }

    void checkContinuation(Bytes entry, std::uint64_t offset)
    {
        checkNumbers(entry, offset, 3);
        const std::uint64_t block = loadLittleEndian<std::uint32_t>(&entry[ContinuationField::block]);
        m_nextOffset = m_source.offsetOnDisc(block * m_blockSize)
            + loadLittleEndian<std::uint32_t>(&entry[ContinuationField::offset]);
        m_nextLength = loadLittleEndian<std::uint32_t>(&entry[ContinuationField::length]);
        if (!m_source.contains(m_nextOffset, m_nextLength)) {
            damaged(offset, QStringLiteral("entries go on beyond the end of the image"));
            m_nextLength = 0;
        }
    }

    void checkAttributes(Bytes entry, std::uint64_t offset)
    {
        if (entry.size() != PosixField::serialNumber && entry.size() != PosixField::size)
            return damaged(offset + SystemUseField::length, QStringLiteral("an entry has the wrong length"));
        checkNumbers(entry, offset, (entry.size() - SystemUseField::data) / 8);
        m_facts.mode = loadLittleEndian<std::uint32_t>(&entry[PosixField::mode]);
        m_facts.userId = loadLittleEndian<std::uint32_t>(&entry[PosixField::userId]);
        m_facts.groupId = loadLittleEndian<std::uint32_t>(&entry[PosixField::groupId]);
    }

    void checkTimes(Bytes entry, std::uint64_t offset)
    {
        if (entry.size() < RockRidgeField::content)
            return damaged(offset + SystemUseField::length, QStringLiteral("an entry has the wrong length"));
        const std::uint8_t flags = entry[RockRidgeField::flags];
        const bool isLong = (flags & TimesFlag::longForm) != 0;
        const std::size_t size = isLong ? IsoDescriptorField::dateSize : IsoRecordField::dateSize;
        const auto count = std::size_t(std::popcount(std::uint8_t(flags & ~TimesFlag::longForm)));
        if (entry.size() != RockRidgeField::content + count * size)
            return damaged(offset + RockRidgeField::flags,
                           QStringLiteral("the number of times is not that of the entry's flags"));
        m_hasTimes = true;
        for (std::size_t index = 0; index < count; ++index) {
            const Bytes stamp = entry.subspan(RockRidgeField::content + index * size, size);
            const bool isUnset =
                std::all_of(stamp.begin(), stamp.end(), [](std::uint8_t b) { return b == 0 || b == '0'; });
            const std::optional<VolumeTime> time =
                isLong ? volumeTimeFromDigits(stamp.data()) : volumeTimeFromRecordingDate(stamp.data());
            if (!isUnset && !time)
                damaged(offset + RockRidgeField::content + index * size, QStringLiteral("a time makes no sense"));
            const std::size_t modificationIndex = (flags & TimesFlag::creation) != 0 ? 1 : 0;
            if ((flags & TimesFlag::modification) != 0 && index == modificationIndex)
                m_facts.modified = time;
        }
    }

    void checkName(Bytes entry, std::uint64_t offset)
    {
        constexpr std::uint8_t specialFlags = NameFlag::current | NameFlag::parent;
        constexpr std::uint8_t knownFlags = NameFlag::continues | specialFlags | NameFlag::host;
        if (entry.size() < RockRidgeField::content)
            return damaged(offset + SystemUseField::length, QStringLiteral("an entry has the wrong length"));
        if ((entry[RockRidgeField::flags] & ~knownFlags) != 0 || (entry[RockRidgeField::flags] & specialFlags) != 0)
            damaged(offset + RockRidgeField::flags, QStringLiteral("a name has unknown flags"));
        if (m_facts.hasName && !m_nameContinues)
            damaged(offset, QStringLiteral("a record has two names"));
        const Bytes name = entry.subspan(RockRidgeField::content);
        if (std::any_of(name.begin(), name.end(), [](std::uint8_t byte) { return byte == 0 || byte == '/'; }))
            damaged(offset + RockRidgeField::content, QStringLiteral("a name has characters that are not allowed"));
        m_nameContinues = (entry[RockRidgeField::flags] & NameFlag::continues) != 0;
        m_facts.hasName = true;
    }

    void checkLink(Bytes entry, std::uint64_t offset)
    {
        namespace Flag = LinkComponentFlag;
        constexpr std::uint8_t specialFlags = Flag::current | Flag::parent | Flag::root;
        constexpr std::uint8_t knownFlags = Flag::continues | specialFlags;
        namespace Component = LinkComponentField;
        m_isLink = true;
        if (entry.size() < RockRidgeField::content || entry[RockRidgeField::flags] > Flag::continues)
            return damaged(offset + RockRidgeField::flags, QStringLiteral("a link target has unknown flags"));
        for (std::size_t at = RockRidgeField::content; at < entry.size();) {
            if (at + Component::text > entry.size()
                || at + Component::text + entry[at + Component::length] > entry.size())
                return damaged(offset + at, QStringLiteral("a part of a link target leaves its entry"));
            const std::size_t length = entry[at + Component::length];
            const std::uint8_t flags = entry[at + Component::flags];
            const Bytes text = entry.subspan(at + Component::text, length);
            const bool isSpecial = (flags & specialFlags) != 0;
            const bool isWrong = (flags & ~knownFlags) != 0 || (isSpecial && length != 0)
                || std::popcount(std::uint8_t(flags & specialFlags)) > 1
                || std::any_of(text.begin(), text.end(), [](std::uint8_t byte) { return byte == 0; });
            if (isWrong)
                damaged(offset + at, QStringLiteral("a part of a link target makes no sense"));
            at += Component::text + length;
        }
        m_linkContinues = entry[RockRidgeField::flags] == Flag::continues;
    }

    void checkRelocation(Bytes entry, std::uint64_t offset)
    {
        checkNumbers(entry, offset, 1);
        m_facts.hasChildLink = m_facts.hasChildLink || signatureOf(entry) == "CL";
    }

    void checkSharingProtocol(Bytes entry, std::uint64_t offset)
    {
        m_hasSharingProtocol = entry[SharingProtocolField::checkBytes] == SharingProtocolField::firstCheckByte
            && entry[SharingProtocolField::checkBytes + 1] == SharingProtocolField::secondCheckByte;
        if (!m_hasSharingProtocol)
            damaged(offset + SharingProtocolField::checkBytes, QStringLiteral("the check bytes of SP are wrong"));
        m_skippedBytes = entry[SharingProtocolField::skippedBytes];
    }

    void checkExtension(Bytes entry, std::uint64_t offset)
    {
        if (entry.size() < ExtensionField::texts
            || entry.size()
                != ExtensionField::texts + entry[ExtensionField::identifierLength]
                    + entry[ExtensionField::descriptionLength] + entry[ExtensionField::sourceLength])
            return damaged(offset + ExtensionField::identifierLength, QStringLiteral("the texts of ER do not fill it"));
        const std::string_view identifier(reinterpret_cast<const char *>(entry.data()) + ExtensionField::texts,
                                          entry[ExtensionField::identifierLength]);
        constexpr std::string_view rockRidge[] = {"RRIP_1991A", "IEEE_P1282", "IEEE_1282"};
        if (std::find(std::begin(rockRidge), std::end(rockRidge), identifier) != std::end(rockRidge))
            m_isMarked = true;
        else if (std::any_of(std::begin(rockRidge), std::end(rockRidge), [identifier](std::string_view known) {
                     return known.size() == identifier.size()
                         && std::inner_product(known.begin(), known.end(), identifier.begin(), 0, std::plus(),
                                               std::not_equal_to())
                         <= 1;
                 }))
            damaged(offset + ExtensionField::texts, QStringLiteral("the name of Rock Ridge in ER is damaged"));
        else
            m_hasOtherExtensions = true;
    }

    const DiscImageSource &m_source;
    const std::uint32_t m_blockSize;
    const RockRidgeUse &m_use;
    const VolumeProblems &m_problems;
    RockRidgeRecordFacts m_facts;
    std::uint64_t m_nextOffset = 0;
    std::size_t m_nextLength = 0;
    std::size_t m_skippedBytes = 0;
    bool m_hasTimes = false;
    bool m_isMarked = false; ///< ER names Rock Ridge
    bool m_hasSharingProtocol = false;
    bool m_hasOtherExtensions = false;
    bool m_nameContinues = false;
    bool m_linkContinues = false;
    bool m_isLink = false;
};

/// Bytes that look like entries: two capital letters, a length, version 1.
bool looksLikeEntries(Bytes area)
{
    return area.size() >= SystemUseField::data && area[0] >= 'A' && area[0] <= 'Z' && area[1] >= 'A' && area[1] <= 'Z'
        && area[SystemUseField::length] >= SystemUseField::data && area[SystemUseField::length] <= area.size()
        && area[SystemUseField::version] == 1;
}

} // namespace

RockRidgeUse checkRockRidgeUse(const DiscImageSource &source, std::uint32_t blockSize, const IsoRecord &rootRecord,
                               const VolumeProblems &problems)
{
    RockRidgeUse use;
    if (rootRecord.systemUse.empty())
        return use;
    RecordCheck check(source, blockSize, use, problems);
    const bool isSigned =
        rootRecord.systemUse.size() >= SystemUseField::data && signatureOf(rootRecord.systemUse) == "SP";
    if (!isSigned && !looksLikeEntries(rootRecord.systemUse)
        && !std::any_of(rootRecord.systemUse.begin(), rootRecord.systemUse.end(),
                        [](std::uint8_t b) { return b == SharingProtocolField::firstCheckByte; }))
        return use; // of another system
    check.run(rootRecord.systemUse, rootRecord.systemUseOffset);
    if (!isSigned)
        problems.remains(rootRecord.systemUseOffset, RecordCheck::structure(),
                         QStringLiteral("there are entries of Rock Ridge, but SP does not come first"));
    use.isUsed = check.isMarked() || check.hasAttributes();
    if (!check.isMarked() && check.hasAttributes())
        problems.unnoticed(rootRecord.systemUseOffset, RecordCheck::structure(),
                           QStringLiteral("no ER names Rock Ridge, though there are entries of it"));
    use.hasOtherExtensions = check.hasOtherExtensions();
    use.hasTimes = check.hasTimes();
    use.skippedBytes = check.skippedBytes();
    return use;
}

RockRidgeRecordFacts checkRockRidgeRecord(const DiscImageSource &source, std::uint32_t blockSize,
                                          const RockRidgeUse &use, const IsoRecord &record, bool isRootRecord,
                                          const VolumeProblems &problems)
{
    RecordCheck check(source, blockSize, use, problems);
    const std::size_t skipped = isRootRecord ? 0 : std::min(use.skippedBytes, record.systemUse.size());
    if (!isRootRecord) // the root's own entries were looked at
        check.run(record.systemUse.subspan(skipped), record.systemUseOffset + skipped);
    else {
        VolumeProblemReport silent([](const VolumeProblem &) { return true; }, {});
        const VolumeProblems none(silent, VolumeKind::RockRidge);
        RecordCheck again(source, blockSize, use, none);
        again.run(record.systemUse, record.systemUseOffset);
        return again.facts();
    }
    const auto damaged = [&](const QString &message) {
        problems.damaged(record.offset, QStringLiteral("directory record"), message);
    };
    if (check.isCutOff())
        damaged(QStringLiteral("the rest of its name or of its link target is missing"));
    constexpr std::uint8_t parentIdentifier = 1;
    if (record.isSpecial() && record.identifier[0] == parentIdentifier)
        return check.facts(); // writers leave much out there, and no reader looks at it
    if (!check.hasAttributes()) {
        damaged(QStringLiteral("it has no attributes of Rock Ridge"));
        return check.facts();
    }
    const RockRidgeRecordFacts &facts = check.facts();
    const std::uint32_t type = *facts.mode & S_IFMT;
    if (!record.isSpecial() && !facts.hasName)
        damaged(QStringLiteral("it has no name of Rock Ridge"));
    if (use.hasTimes && !check.hasTimes())
        damaged(QStringLiteral("it has no times of Rock Ridge"));
    if (S_ISDIR(type) != (record.isFolder() || facts.hasChildLink))
        damaged(QStringLiteral("its flags and its mode do not agree on whether it is a folder"));
    if (S_ISLNK(type) != check.isLink())
        damaged(QStringLiteral("its mode and its entries do not agree on whether it is a symbolic link"));
    const std::optional<VolumeTime> recorded = volumeTimeFromRecordingDate(&record.bytes[IsoRecordField::date]);
    const bool isOfObject = !S_ISLNK(type) || use.linksHaveOwnDates;
    if (isOfObject && facts.modified && recorded && facts.modified->seconds != recorded->seconds)
        damaged(QStringLiteral("its date is not that of Rock Ridge"));
    return facts;
}

} // namespace Tessaron
