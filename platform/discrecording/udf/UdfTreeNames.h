#pragma once

#include "platform/discrecording/content/TextArena.h"
#include "platform/discrecording/image/TreeDisplayNames.h"
#include "platform/discrecording/udf/UdfCompressedText.h"

#include <cstdint>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// A child of a folder while the names of all are made.
struct UdfSibling {
    NodeIndex node = 0;
    std::uint8_t nameSize = 0; ///< bytes of its recorded name
    bool isRenamed = false; ///< the rules do not give the name that it has on the disc
    bool isTaken = false; ///< a sibling had the name that they give
};

/// The names in a UDF tree. They follow from the objects' own names and are made anew whenever they are needed; only
/// those that had to give way to a sibling's are kept.
class UdfTreeNames final : public TreeDisplayNames
{
public:
    explicit UdfTreeNames(std::shared_ptr<const ContentTree> tree);

    /// Makes the names of one folder's children, different from each other. To be called for each folder once, in the
    /// order of the tree.
    void makeNames(std::span<UdfSibling> siblings, const std::stop_token &cancellation);

    /// The name of an object other than the root, once makeNames() was called for its folder. Thread-safe once it was
    /// called for all folders.
    void nameOf(NodeIndex node, UdfCompressedText *name) const;
    [[nodiscard]] QString displayName(NodeIndex node) const override;
    /// The volume's name; empty when the root has none.
    [[nodiscard]] std::u16string volumeName() const;

private:
    /// A name that the rules do not give: a sibling had it.
    struct ChangedName {
        NodeIndex node = 0;
        std::string_view name; ///< as recorded
    };

    /// The name by the rules alone. True when it is not the one that the object has on the disc.
    bool ruledName(NodeIndex node, UdfCompressedText *name) const;
    void tellApart(std::span<UdfSibling> siblings, const std::stop_token &cancellation);

    const std::shared_ptr<const ContentTree> m_tree;
    TextArena m_texts;
    std::vector<ChangedName> m_changedNames; ///< ordered by node
};

} // namespace Tessaron
