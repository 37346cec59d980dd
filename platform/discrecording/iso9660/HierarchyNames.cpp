#include "platform/discrecording/iso9660/HierarchyNames.h"

#include "platform/discrecording/iso9660/DescriptorText.h"
#include "platform/discrecording/names/JolietNameRules.h"
#include "platform/discrecording/names/UniqueNames.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <string>

namespace Tessaron
{

namespace
{

/// Bytes of the volume's name in a volume descriptor (ECMA-119 8.4.7).
constexpr std::size_t volumeNameSize = 32;

/// True for the characters that a Joliet name holds as they are and that are one byte of UTF-8.
constexpr std::array<bool, 256> makePlainTable()
{
    std::array<bool, 256> table{};
    for (unsigned int byte = 0x20; byte < 0x80; ++byte)
        table[byte] = std::string_view("*/:;?\\").find(static_cast<char>(byte)) == std::string_view::npos;
    return table;
}
constexpr std::array<bool, 256> isPlainInJoliet = makePlainTable();

/// Makes the Joliet name of an ordinary name, which needs none of the rules; false for any other name.
bool assignPlainName(std::string_view rawName, RecordedName *name)
{
    if (rawName.empty() || rawName.size() > jolietNameLimit || rawName.back() == '.' || rawName.back() == ' ')
        return false;
    name->clear();
    for (const char character : rawName) {
        if (!isPlainInJoliet[static_cast<unsigned char>(character)])
            return false;
        name->appendUnit(static_cast<char16_t>(character));
    }
    return true;
}

std::u16string unitsOf(std::string_view bytes)
{
    std::u16string units;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
        units += static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) << 8
                                       | static_cast<unsigned char>(bytes[at + 1]));
    return units;
}

QString textOf(std::string_view bytes, NameCoding coding)
{
    return coding == NameCoding::Joliet ? QStringView(unitsOf(bytes)).toString()
                                        : QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

/// The first bytes of a name as a number of the same order.
std::uint64_t prefixOf(std::string_view name)
{
    std::uint8_t bytes[8] = {};
    std::copy_n(name.begin(), std::min(name.size(), sizeof bytes), bytes);
    return loadBigEndian<std::uint64_t>(bytes);
}

/// FNV-1a of the units by which readers compare.
std::uint64_t keyHashOfUnits(std::string_view bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const auto unit = static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) << 8
                                                | static_cast<unsigned char>(bytes[at + 1]));
        hash = (hash ^ jolietKeyUnit(unit)) * 0x100000001B3u;
    }
    return hash;
}

} // namespace

void RecordedName::assign(std::u16string_view units)
{
    clear();
    for (const char16_t unit : units.substr(0, m_bytes.size() / 2))
        appendUnit(unit);
}

void SiblingNames::clear()
{
    m_bytes.clear();
    m_entries.clear();
}

void SiblingNames::add(NodeIndex node, NameRole role, std::string_view name, bool isChanged)
{
    m_entries.push_back({prefixOf(name), node, static_cast<std::uint32_t>(m_bytes.size()),
                         static_cast<std::uint8_t>(name.size()), role, isChanged, false});
    m_bytes += name;
}

void SiblingNames::replace(Entry &entry, std::string_view name)
{
    entry.prefix = prefixOf(name);
    entry.offset = static_cast<std::uint32_t>(m_bytes.size());
    entry.size = static_cast<std::uint8_t>(name.size());
    entry.isTaken = true;
    m_bytes += name;
}

bool SiblingNames::precedes(const Entry &one, const Entry &other) const
{
    return one.prefix != other.prefix ? one.prefix < other.prefix : nameOf(one) < nameOf(other);
}

void SiblingNames::sort()
{
    const auto inOrder = [this](const Entry &one, const Entry &other) { return precedes(one, other); };
    // Mostly they are in order already, since the objects are ordered by their own names.
    if (!std::is_sorted(m_entries.begin(), m_entries.end(), inOrder))
        std::sort(m_entries.begin(), m_entries.end(), inOrder);
}

bool SiblingNames::allDifferWithoutCase() const
{
    std::vector<std::uint64_t> hashes;
    hashes.reserve(m_entries.size());
    for (const Entry &entry : m_entries)
        hashes.push_back(keyHashOfUnits(nameOf(entry)));
    std::sort(hashes.begin(), hashes.end());
    return std::adjacent_find(hashes.begin(), hashes.end()) == hashes.end();
}

bool SiblingNames::allDiffer() const
{
    const auto areSame = [this](const Entry &one, const Entry &other) {
        return one.prefix == other.prefix && nameOf(one) == nameOf(other);
    };
    return std::adjacent_find(m_entries.begin(), m_entries.end(), areSame) == m_entries.end();
}

HierarchyNames::HierarchyNames(std::shared_ptr<const ContentTree> tree, NameCoding coding, Iso9660Level level)
    : m_tree(std::move(tree))
    , m_coding(coding)
    , m_level(level)
{
}

bool HierarchyNames::ruledName(NodeIndex node, NameRole role, RecordedName *name) const
{
    const ContentNode &content = m_tree->nodes[node];
    const bool hasBaseName = !content.has(ContentNode::NameIsChanged);
    if (m_coding == NameCoding::Iso9660) {
        const std::string_view base = content.nameView();
        name->assign(role == NameRole::Folder ? iso9660FolderName(base, m_level) : iso9660FileName(base, m_level));
        return !hasBaseName || name->view() != base;
    }
    if (assignPlainName(content.nameView(), name))
        return !hasBaseName;
    const std::u16string units = jolietName(content.nameView(), content.isFolder());
    name->assign(units);
    const QByteArrayView raw(content.name, content.nameLength);
    return !hasBaseName || QStringView(units) != stringWithFileSystemRepresentation(raw);
}

void HierarchyNames::nameOf(NodeIndex node, NameRole role, RecordedName *name) const
{
    const std::vector<ChangedName> &names = changedNames(role);
    if (!names.empty()) {
        const auto changed =
            std::lower_bound(names.begin(), names.end(), node,
                             [](const ChangedName &entry, NodeIndex wanted) { return entry.node < wanted; });
        if (changed != names.end() && changed->node == node) {
            name->assign(changed->name);
            return;
        }
    }
    (void)ruledName(node, role, name);
}

std::string_view HierarchyNames::suffix(std::string_view name, NameRole role) const
{
    if (role == NameRole::Folder || m_coding == NameCoding::Joliet)
        return {};
    return name.find('.') == name.npos ? ".;1" : ";1";
}

template <typename Unit, typename KeyOf, typename Decode>
void HierarchyNames::tellApartAs(SiblingNames &siblings, const KeyOf &keyOf, const Decode &decode,
                                 const std::stop_token &cancellation)
{
    const bool isShort = m_level == Iso9660Level::One;
    const NameLimits &limits = m_coding == NameCoding::Joliet ? jolietLimits
        : isShort                                             ? iso9660LevelOneLimits
                                                              : iso9660LevelTwoLimits;
    std::vector<SiblingName<Unit>> names;
    names.reserve(siblings.entries().size());
    for (const SiblingNames::Entry &entry : siblings.entries())
        names.push_back({decode(siblings.nameOf(entry)), entry.role == NameRole::Folder});
    makeNamesUnique<Unit, KeyOf>(names, limits, keyOf, cancellation);
    RecordedName distinct;
    for (std::size_t index = 0; index < names.size(); ++index) {
        SiblingNames::Entry &entry = siblings.entries()[index];
        distinct.assign(names[index].name);
        if (distinct.view() == siblings.nameOf(entry))
            continue;
        siblings.replace(entry, distinct.view());
        auto &changed = entry.role == NameRole::FolderElsewhere ? m_changedPlaceholders : m_changedNames;
        changed.push_back({entry.node, m_texts.store(distinct.view())});
    }
}

void HierarchyNames::tellApart(SiblingNames &siblings, const std::stop_token &cancellation)
{
    siblings.sort();
    const bool isJoliet = m_coding == NameCoding::Joliet;
    if (isJoliet ? siblings.allDifferWithoutCase() : siblings.allDiffer())
        return;
    // The objects' own names, by which the tree is ordered, decide which of them keeps its name.
    std::sort(siblings.entries().begin(), siblings.entries().end(),
              [](const SiblingNames::Entry &one, const SiblingNames::Entry &other) { return one.node < other.node; });
    if (isJoliet)
        tellApartAs<char16_t>(siblings, jolietNameKey, unitsOf, cancellation);
    else
        tellApartAs<char>(
            siblings, ExactName<char>(), [](std::string_view bytes) { return std::string(bytes); }, cancellation);
    siblings.sort();
}

void HierarchyNames::finish()
{
    for (std::vector<ChangedName> *const names : {&m_changedNames, &m_changedPlaceholders}) {
        std::sort(names->begin(), names->end(),
                  [](const ChangedName &one, const ChangedName &other) { return one.node < other.node; });
        names->shrink_to_fit();
    }
}

QString HierarchyNames::displayName(NodeIndex node) const
{
    RecordedName name;
    if (node == 0)
        name = volumeName();
    else
        nameOf(node, &name);
    return textOf(name.view(), m_coding);
}

RecordedName HierarchyNames::volumeName() const
{
    const std::string_view base = m_tree->baseName(0);
    RecordedName name;
    if (m_coding == NameCoding::Joliet)
        name.assign(jolietVolumeName(base));
    else
        name.assign(dCharacters(base, volumeNameSize));
    return name;
}

} // namespace Tessaron
