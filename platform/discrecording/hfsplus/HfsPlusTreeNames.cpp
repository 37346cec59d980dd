#include "platform/discrecording/hfsplus/HfsPlusTreeNames.h"

#include "platform/discrecording/names/HfsPlusCaseFolding.h"
#include "platform/discrecording/names/HfsPlusDecomposition.h"
#include "platform/discrecording/names/HfsPlusNameRules.h"
#include "platform/discrecording/names/UniqueNames.h"
#include "platform/foundation/FileSystemRepresentation.h"

namespace Tessaron
{

namespace
{

/// A volume must have a name; without one it gets the Finder's.
constexpr std::string_view nameOfUnnamedVolume = "untitled";

/// Makes the catalog name of an ordinary name, which needs none of the rules; false for any other name.
bool assignPlainName(std::string_view rawName, HfsPlusName *name)
{
    if (rawName.empty())
        return false;
    name->clear();
    for (const char character : rawName) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte == 0 || byte >= 0x80 || character == '/')
            return false;
        name->append(character == ':' ? u'/' : static_cast<char16_t>(byte));
    }
    return true;
}

std::u16string withExchangedSeparator(std::u16string name)
{
    for (char16_t &unit : name)
        unit = unit == u':' ? u'/' : unit == u'/' ? u':' : unit;
    return name;
}

} // namespace

void HfsPlusSiblings::clear()
{
    m_folded.clear();
    m_entries.clear();
}

HfsPlusSiblings::Entry HfsPlusSiblings::makeEntry(NodeIndex node, std::u16string_view name, bool isChanged)
{
    Entry entry;
    entry.node = node;
    entry.offset = static_cast<std::uint32_t>(m_folded.size());
    entry.nameSize = static_cast<std::uint8_t>(name.size());
    entry.isChanged = isChanged;
    for (const char16_t unit : name) {
        const char16_t folded = hfsPlusFoldedUnit(unit);
        if (folded == 0)
            continue;
        if (entry.size < 4)
            entry.prefix |= std::uint64_t{folded} << (48 - 16 * entry.size);
        m_folded += folded;
        ++entry.size;
    }
    return entry;
}

void HfsPlusSiblings::add(NodeIndex node, std::u16string_view name, bool isChanged)
{
    m_entries.push_back(makeEntry(node, name, isChanged));
}

void HfsPlusSiblings::replace(Entry &entry, std::u16string_view name)
{
    entry = makeEntry(entry.node, name, entry.isChanged);
    entry.isTaken = true;
}

void HfsPlusSiblings::sort()
{
    const auto inOrder = [this](const Entry &one, const Entry &other) {
        return one.prefix != other.prefix ? one.prefix < other.prefix : foldedOf(one) < foldedOf(other);
    };
    if (!std::is_sorted(m_entries.begin(), m_entries.end(), inOrder))
        std::sort(m_entries.begin(), m_entries.end(), inOrder);
}

bool HfsPlusSiblings::allDiffer() const
{
    const auto areSame = [this](const Entry &one, const Entry &other) {
        return one.prefix == other.prefix && foldedOf(one) == foldedOf(other);
    };
    return std::adjacent_find(m_entries.begin(), m_entries.end(), areSame) == m_entries.end();
}

HfsPlusTreeNames::HfsPlusTreeNames(std::shared_ptr<const ContentTree> tree)
    : m_tree(std::move(tree))
{
}

bool HfsPlusTreeNames::ruledName(NodeIndex node, HfsPlusName *name) const
{
    const ContentNode &content = m_tree->nodes[node];
    std::string_view raw = node == 0 ? m_tree->baseName(0) : content.nameView();
    const bool isRenamed = node == 0 ? raw.empty() : content.has(ContentNode::NameIsChanged);
    if (node == 0 && raw.empty())
        raw = nameOfUnnamedVolume;
    if (raw.size() <= HfsPlusName::limit && assignPlainName(raw, name))
        return isRenamed;
    const std::u16string units = hfsPlusName(raw, content.isFolder());
    name->assign(units);
    const QString wanted =
        stringWithFileSystemRepresentation(QByteArrayView(raw.data(), static_cast<qsizetype>(raw.size())));
    return isRenamed || withExchangedSeparator(hfsPlusDecomposed(wanted.toStdU16String())) != units;
}

void HfsPlusTreeNames::nameOf(NodeIndex node, HfsPlusName *name) const
{
    if (!m_changedNames.empty()) {
        const auto changed =
            std::lower_bound(m_changedNames.begin(), m_changedNames.end(), node,
                             [](const ChangedName &entry, NodeIndex wanted) { return entry.node < wanted; });
        if (changed != m_changedNames.end() && changed->node == node) {
            name->assign(std::u16string_view(m_changedTexts).substr(changed->offset, changed->size));
            return;
        }
    }
    (void)ruledName(node, name);
}

void HfsPlusTreeNames::tellApart(HfsPlusSiblings &siblings, const std::stop_token &cancellation)
{
    siblings.sort();
    if (siblings.allDiffer())
        return;
    // The objects' own names, by which the tree is ordered, decide which of them keeps its name.
    std::sort(
        siblings.entries().begin(), siblings.entries().end(),
        [](const HfsPlusSiblings::Entry &one, const HfsPlusSiblings::Entry &other) { return one.node < other.node; });
    std::vector<SiblingName<char16_t>> names;
    names.reserve(siblings.entries().size());
    HfsPlusName name;
    for (const HfsPlusSiblings::Entry &entry : siblings.entries()) {
        (void)ruledName(entry.node, &name);
        names.push_back({std::u16string(name.view()), m_tree->nodes[entry.node].isFolder()});
    }
    makeNamesUnique<char16_t>(std::span(names), hfsPlusLimits, hfsPlusNameKey, cancellation);
    for (std::size_t index = 0; index < names.size(); ++index) {
        HfsPlusSiblings::Entry &entry = siblings.entries()[index];
        (void)ruledName(entry.node, &name);
        if (name.view() == names[index].name)
            continue;
        siblings.replace(entry, names[index].name);
        m_changedNames.push_back({entry.node, static_cast<std::uint32_t>(m_changedTexts.size()),
                                  static_cast<std::uint32_t>(names[index].name.size())});
        m_changedTexts += names[index].name;
    }
    siblings.sort();
}

void HfsPlusTreeNames::finish()
{
    std::sort(m_changedNames.begin(), m_changedNames.end(),
              [](const ChangedName &one, const ChangedName &other) { return one.node < other.node; });
    m_changedNames.shrink_to_fit();
    m_changedTexts.shrink_to_fit();
}

QString HfsPlusTreeNames::displayName(NodeIndex node) const
{
    HfsPlusName name;
    nameOf(node, &name);
    const std::u16string units = withExchangedSeparator(std::u16string(name.view()));
    return QStringView(units).toString().normalized(QString::NormalizationForm_C);
}

} // namespace Tessaron
