#pragma once

#include "platform/discimage/hfsplus/HfsPlusBTreeWalker.h"
#include "platform/discimage/volume/VolumeCheck.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace Tessaron
{

/// Takes the records of a catalog in their order and holds them against one another.
class HfsPlusCatalogCheck
{
public:
    /// Told each fork of a file: ID, whether it is the resource fork, the 80 bytes of fork data, the record's place.
    using ForkVisitor = std::function<void(std::uint32_t fileId, bool isResource, HfsPlusBytes fork, std::uint64_t at)>;

    /// `isOfThisSystem`: what the volumes of others may have, too, is damage in it.
    HfsPlusCatalogCheck(const VolumeProblems &problems, bool isOfThisSystem, ForkVisitor fork)
        : m_problems(problems)
        , m_isOfThisSystem(isOfThisSystem)
        , m_fork(std::move(fork))
    {
    }

    void take(HfsPlusBytes key, HfsPlusBytes data, std::uint64_t offset);
    /// To be called behind the last record.
    void finish();

    [[nodiscard]] std::uint32_t fileCount() const { return m_fileCount; }
    [[nodiscard]] std::uint32_t folderCount() const { return m_folderCount; } ///< without the root
    [[nodiscard]] std::uint32_t greatestId() const { return m_greatestId; }

private:
    /// What a thread and the record of its object both say, and where.
    struct Mark {
        std::uint32_t id = 0;
        std::uint64_t hash = 0; ///< of parent, name and kind
        std::uint64_t offset = 0;
    };
    struct Valence {
        std::uint32_t count = 0;
        std::uint64_t offset = 0;
    };
    /// A hard link; its date of creation says that it is one.
    struct Link {
        std::uint32_t created = 0;
        std::uint64_t offset = 0;
    };

    void takeThread(std::uint32_t id, HfsPlusBytes data, std::uint64_t offset);
    void takeObject(std::uint32_t parentId, HfsPlusBytes name, HfsPlusBytes data, std::uint64_t offset);
    void takeFile(std::uint32_t parentId, HfsPlusBytes name, HfsPlusBytes data, std::uint64_t offset);
    void checkKind(const struct HfsPlusItem &item, HfsPlusBytes data, std::uint64_t offset) const;
    void checkAttributes(bool isFolder, HfsPlusBytes data, std::uint64_t offset) const;
    void endFolder();
    void compareThreads();
    void compareLinks() const;
    void damaged(std::uint64_t offset, const QString &message) const;

    const VolumeProblems &m_problems;
    const bool m_isOfThisSystem;
    const ForkVisitor m_fork;
    std::vector<Mark> m_threads;
    std::vector<Mark> m_objects;
    std::unordered_map<std::uint32_t, Valence> m_valences; ///< of the folders, by ID
    std::unordered_map<std::uint32_t, std::uint32_t> m_found; ///< children of the folders, by ID
    std::unordered_map<std::uint32_t, Valence>
        m_linkedFiles; ///< files with several names, by the number in theirs; count: links stated
    std::unordered_map<std::uint32_t, std::uint32_t> m_links; ///< hard links, by the number that they lead to
    std::vector<Link> m_linkDates;
    std::uint32_t m_rootCreated = 0;
    std::optional<std::uint32_t> m_privateFolderCreated; ///< of the folder with what hard links lead to
    std::uint32_t m_parent = 0; ///< whose children are told
    bool m_hasThread = false; ///< the parent's was the first
    bool m_parentIsFolder = false;
    std::uint32_t m_childCount = 0;
    std::uint32_t m_fileCount = 0;
    std::uint32_t m_folderCount = 0;
    std::uint32_t m_greatestId = 0;
};

} // namespace Tessaron
