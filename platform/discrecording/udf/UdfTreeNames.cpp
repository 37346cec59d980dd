#include "platform/discrecording/udf/UdfTreeNames.h"

#include "platform/discrecording/names/UdfNameRules.h"
#include "platform/discrecording/names/UniqueNames.h"

#include <algorithm>

namespace Tessaron
{

UdfTreeNames::UdfTreeNames(std::shared_ptr<const ContentTree> tree)
    : m_tree(std::move(tree))
{
}

bool UdfTreeNames::ruledName(NodeIndex node, UdfCompressedText *name) const
{
    const ContentNode &content = m_tree->nodes[node];
    if (name->assignPlain(content.nameView()))
        return false;
    const std::u16string text = udfName(content.nameView(), content.isFolder());
    name->assign(text);
    return QStringView(text).toUtf8() != QByteArrayView(content.name, content.nameLength);
}

void UdfTreeNames::makeNames(std::span<UdfSibling> siblings, const std::stop_token &cancellation)
{
    UdfCompressedText name;
    bool hasRenamed = false;
    for (UdfSibling &sibling : siblings) {
        sibling.isRenamed = ruledName(sibling.node, &name);
        sibling.nameSize = static_cast<std::uint8_t>(name.size());
        hasRenamed |= sibling.isRenamed;
    }
    // The names that siblings have on the disc differ: where all of them stay, nothing is to be told apart.
    if (hasRenamed)
        tellApart(siblings, cancellation);
}

void UdfTreeNames::tellApart(std::span<UdfSibling> siblings, const std::stop_token &cancellation)
{
    std::vector<SiblingName<char16_t>> names;
    names.reserve(siblings.size());
    UdfCompressedText name;
    for (const UdfSibling &sibling : siblings) {
        (void)ruledName(sibling.node, &name);
        names.push_back({name.text(), m_tree->nodes[sibling.node].isFolder()});
    }
    const std::vector<SiblingName<char16_t>> before = names;
    makeNamesUnique<char16_t>(names, udfLimits, {}, cancellation);
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (names[index].name == before[index].name)
            continue;
        name.assign(names[index].name);
        siblings[index].isTaken = true;
        siblings[index].nameSize = static_cast<std::uint8_t>(name.size());
        m_changedNames.push_back({siblings[index].node, m_texts.store(name.view())});
    }
}

void UdfTreeNames::nameOf(NodeIndex node, UdfCompressedText *name) const
{
    if (!m_changedNames.empty()) {
        const auto changed =
            std::lower_bound(m_changedNames.begin(), m_changedNames.end(), node,
                             [](const ChangedName &entry, NodeIndex wanted) { return entry.node < wanted; });
        if (changed != m_changedNames.end() && changed->node == node) {
            name->assignRecorded(changed->name);
            return;
        }
    }
    (void)ruledName(node, name);
}

QString UdfTreeNames::displayName(NodeIndex node) const
{
    if (node == 0)
        return QStringView(volumeName()).toString();
    UdfCompressedText name;
    nameOf(node, &name);
    return QStringView(name.text()).toString();
}

std::u16string UdfTreeNames::volumeName() const
{
    return udfVolumeName(m_tree->baseName(0));
}

} // namespace Tessaron
