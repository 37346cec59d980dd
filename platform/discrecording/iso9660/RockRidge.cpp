#include "platform/discrecording/iso9660/RockRidge.h"

#include "platform/discrecording/iso9660/BothEndianFields.h"
#include "platform/discrecording/iso9660/IsoDateFields.h"

#include <algorithm>
#include <array>
#include <span>
#include <sys/sysmacros.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::string_view referenceIdentifier = "IEEE_P1282";
constexpr std::string_view referenceDescriptor =
    "THE IEEE P1282 PROTOCOL PROVIDES SUPPORT FOR POSIX FILE SYSTEM SEMANTICS";
constexpr std::string_view referenceSource =
    "PLEASE CONTACT THE IEEE STANDARDS DEPARTMENT, PISCATAWAY, NJ, USA FOR THE P1282 SPECIFICATION";

/// Bytes of a name or of link components that one entry can carry after its flags.
constexpr std::size_t entryCapacity = SystemUse::longestEntry - SystemUse::flaggedHeadSize;

// Flags of NM and SL entries and of the components of SL (IEEE P1282 4.1.3.1, 4.1.4).
constexpr std::uint8_t continues = 1;
constexpr std::uint8_t componentCurrent = 2;
constexpr std::uint8_t componentParent = 4;
constexpr std::uint8_t componentRoot = 8;

// Which times a TF entry holds (4.1.6), in this order.
constexpr std::uint8_t holdsModification = 1u << 1;
constexpr std::uint8_t holdsAccess = 1u << 2;
constexpr std::uint8_t holdsAttributes = 1u << 3;

// Fields of the entries, counted from the end of their heads. Numbers are recorded in both byte orders.
namespace Posix // PX (4.1.1)
{
constexpr std::size_t mode = 0;
constexpr std::size_t linkCount = 8;
constexpr std::size_t userId = 16;
constexpr std::size_t groupId = 24;
constexpr std::size_t serialNumber = 32;
constexpr std::size_t size = 40;
} // namespace Posix
namespace DeviceNumber // PN (4.1.2)
{
constexpr std::size_t high = 0;
constexpr std::size_t low = 8;
constexpr std::size_t size = 16;
} // namespace DeviceNumber
namespace Component // of SL (4.1.3.1), from its own start
{
constexpr std::size_t flags = 0;
constexpr std::size_t length = 1;
constexpr std::size_t text = 2;
} // namespace Component
namespace Relocation // CL and PL (4.1.5.1, 4.1.5.2)
{
constexpr std::size_t block = 0;
constexpr std::size_t size = 8;
} // namespace Relocation
namespace Times // TF (4.1.6)
{
constexpr std::size_t flags = 0;
constexpr std::size_t modification = 1;
constexpr std::size_t access = modification + recordingDateSize;
constexpr std::size_t attributes = access + recordingDateSize;
constexpr std::size_t size = attributes + recordingDateSize;
} // namespace Times
namespace SharingProtocol // SP (SUSP 5.3)
{
constexpr std::size_t checkBytes = 0;
constexpr std::size_t skippedBytes = 2;
constexpr std::size_t size = 3;
} // namespace SharingProtocol
namespace Reference // ER (SUSP 5.5)
{
constexpr std::size_t identifierLength = 0;
constexpr std::size_t descriptorLength = 1;
constexpr std::size_t sourceLength = 2;
constexpr std::size_t version = 3;
constexpr std::size_t texts = 4;
} // namespace Reference

/// What SP is recognised by.
constexpr std::array<std::uint8_t, 2> checkBytes = {0xBE, 0xEF};

std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()};
}

/// Collects the components of a link target into SL entries. An entry that others follow ends within a component, with
/// at least one byte of it on either side: the standards allow other ends as well, but a widespread reader (libarchive
/// 3.6) forgets the slash there. A ".." that is written as a name and not by its flag can be parted like any other.
/// Only an entry without a component of two bytes ends between components.
class LinkEntries
{
public:
    explicit LinkEntries(SystemUse &use)
        : m_use(use)
    {
    }

    void add(std::uint8_t flags, std::string_view name)
    {
        while (Component::text + name.size() > room()) {
            if (name.size() < 2 || room() <= Component::text) {
                breakBeforeNext();
                continue;
            }
            // At least one byte has to remain for the next entry.
            const std::string_view part = name.substr(0, std::min(room() - Component::text, name.size() - 1));
            append({continues, part});
            flush(continues);
            name.remove_prefix(part.size());
        }
        append({flags, name});
    }

    void finish() { flush(0); }

private:
    struct Part {
        std::uint8_t flags = 0;
        std::string_view name;
    };

    [[nodiscard]] std::size_t room() const { return entryCapacity - m_size; }

    void append(const Part &component)
    {
        m_components[m_count++] = component;
        m_size += Component::text + component.name.size();
    }

    static bool canBeParted(const Part &component)
    {
        return component.flags == componentParent || (component.flags == 0 && component.name.size() > 1);
    }

    /// Takes the last component out of the entry.
    Part takeLast()
    {
        const Part last = m_components[--m_count];
        m_size -= Component::text + last.name.size();
        return last;
    }

    /// Ends the entry within its last component that can be parted, and begins the next one with the rest.
    void breakBeforeNext()
    {
        std::vector<Part> rest;
        while (m_count > 0) {
            const Part last = takeLast();
            const std::string_view name = last.flags == componentParent ? std::string_view("..") : last.name;
            // As a name ".." takes more room than there may be.
            if (canBeParted(last) && Component::text + name.size() - 1 <= room()) {
                append({continues, name.substr(0, name.size() - 1)});
                rest.push_back({0, name.substr(name.size() - 1)});
                break;
            }
            rest.push_back(last);
        }
        if (m_count == 0) {
            for (; !rest.empty(); rest.pop_back())
                append(rest.back());
        }
        flush(continues);
        for (auto component = rest.rbegin(); component != rest.rend(); ++component)
            append(*component);
    }

    void flush(std::uint8_t flags)
    {
        std::array<std::uint8_t, entryCapacity> bytes{};
        std::size_t at = 0;
        for (const Part &component : std::span(m_components).first(m_count)) {
            bytes[at + Component::flags] = component.flags;
            bytes[at + Component::length] = static_cast<std::uint8_t>(component.name.size());
            std::copy(component.name.begin(), component.name.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(at + Component::text));
            at += Component::text + component.name.size();
        }
        m_use.addBytes("SL", flags, {bytes.data(), at});
        m_count = 0;
        m_size = 0;
    }

    SystemUse &m_use;
    std::array<Part, entryCapacity / Component::text> m_components; ///< of the entry that is being filled
    std::size_t m_count = 0;
    std::size_t m_size = 0; ///< bytes that they take
};

/// Calls `visit` for each component of the target; the root is an empty one.
template <typename Visit>
void forEachComponent(std::string_view target, const Visit &visit)
{
    if (target.starts_with('/'))
        visit(std::string_view());
    std::size_t at = 0;
    while (at < target.size()) {
        const std::size_t slash = std::min(target.find('/', at), target.size());
        if (slash > at)
            visit(target.substr(at, slash - at));
        at = slash + 1;
    }
    // A slash at the end asks for a folder; so does ".".
    const bool isRootAlone = target.find_first_not_of('/') == target.npos;
    if (target.ends_with('/') && !isRootAlone)
        visit(std::string_view("."));
}

void addLinkTarget(SystemUse &use, std::string_view target)
{
    LinkEntries entries(use);
    forEachComponent(target, [&](std::string_view component) {
        if (component.empty())
            entries.add(componentRoot, {});
        else if (component == ".")
            entries.add(componentCurrent, {});
        else if (component == "..")
            entries.add(componentParent, {});
        else
            entries.add(0, component);
    });
    entries.finish();
}

void storeDeviceNumber(std::span<std::uint8_t> pn, std::uint64_t device)
{
    // The low half holds the whole number as long as it has the 12 and 8 bits that systems agree on. Beyond these Linux
    // wants major and minor number apart.
    constexpr unsigned int commonMajorBits = 12;
    constexpr unsigned int commonMinorBits = 8;
    const unsigned int major = gnu_dev_major(device);
    const unsigned int minor = gnu_dev_minor(device);
    const bool isCommon = major >> commonMajorBits == 0 && minor >> commonMinorBits == 0;
    storeBothEndian(&pn[DeviceNumber::high], isCommon ? 0 : major);
    storeBothEndian(&pn[DeviceNumber::low], isCommon ? major << commonMinorBits | minor : minor);
}

} // namespace

void addRockRidgeAttributes(SystemUse &use, const ContentTree &tree, NodeIndex node, const RockRidgeFacts *facts)
{
    const ContentNode &content = tree.nodes[node];
    const std::span<std::uint8_t> px = use.add("PX", SystemUse::headSize + Posix::size);
    if (facts) {
        storeBothEndian(&px[Posix::mode], content.mode);
        storeBothEndian(&px[Posix::linkCount], facts->linkCount);
        storeBothEndian(&px[Posix::userId], content.userId);
        storeBothEndian(&px[Posix::groupId], content.groupId);
        storeBothEndian(&px[Posix::serialNumber], facts->serialNumber);
    }
    if (content.isDevice())
        storeDeviceNumber(use.add("PN", SystemUse::headSize + DeviceNumber::size), content.deviceNumber());
    const std::span<std::uint8_t> tf = use.add("TF", SystemUse::headSize + Times::size);
    if (!facts)
        return;
    const ObjectTimes times = tree.times(node);
    tf[Times::flags] = holdsModification | holdsAccess | holdsAttributes;
    storeRecordingDate(&tf[Times::modification], times.modification);
    storeRecordingDate(&tf[Times::access], times.access);
    storeRecordingDate(&tf[Times::attributes], times.attributeModification);
}

void addRockRidgeName(SystemUse &use, const ContentTree &tree, NodeIndex node)
{
    std::string_view name = tree.nodes[node].nameView();
    while (name.size() > entryCapacity) {
        use.addBytes("NM", continues, bytesOf(name.substr(0, entryCapacity)));
        name.remove_prefix(entryCapacity);
    }
    use.addBytes("NM", 0, bytesOf(name));
    if (tree.nodes[node].kind == ContentKind::SymbolicLink)
        addLinkTarget(use, tree.linkTarget(node));
}

void addChildLink(SystemUse &use, std::uint32_t block)
{
    storeBothEndian(&use.add("CL", SystemUse::headSize + Relocation::size)[Relocation::block], block);
}

void addParentLink(SystemUse &use, std::uint32_t block)
{
    storeBothEndian(&use.add("PL", SystemUse::headSize + Relocation::size)[Relocation::block], block);
}

void addRelocatedMark(SystemUse &use)
{
    use.add("RE", SystemUse::headSize);
}

void addSharingProtocolIndicator(SystemUse &use)
{
    const std::span<std::uint8_t> sp = use.add("SP", SystemUse::headSize + SharingProtocol::size);
    std::copy(checkBytes.begin(), checkBytes.end(), sp.begin() + SharingProtocol::checkBytes);
    sp[SharingProtocol::skippedBytes] = 0; // no bytes before the entries in other records
}

void addRockRidgeReference(SystemUse &use)
{
    const std::span<std::uint8_t> er = use.add("ER",
                                               SystemUse::headSize + Reference::texts + referenceIdentifier.size()
                                                   + referenceDescriptor.size() + referenceSource.size());
    er[Reference::identifierLength] = static_cast<std::uint8_t>(referenceIdentifier.size());
    er[Reference::descriptorLength] = static_cast<std::uint8_t>(referenceDescriptor.size());
    er[Reference::sourceLength] = static_cast<std::uint8_t>(referenceSource.size());
    er[Reference::version] = 1;
    auto to = std::copy(referenceIdentifier.begin(), referenceIdentifier.end(), er.begin() + Reference::texts);
    to = std::copy(referenceDescriptor.begin(), referenceDescriptor.end(), to);
    std::copy(referenceSource.begin(), referenceSource.end(), to);
}

std::string recordedLinkTarget(std::string_view target)
{
    std::string result;
    forEachComponent(target, [&](std::string_view component) {
        if (!result.empty() && !result.ends_with('/'))
            result += '/';
        result += component.empty() ? std::string_view("/") : component;
    });
    return result;
}

} // namespace Tessaron
