#pragma once

#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscSplitJob.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <unordered_map>
#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

/// Shares a tree out among discs by what its objects are likely to take. Looks at each file once; afterwards it can be
/// asked for discs of several sizes. Not thread-safe.
class TreeSplitter
{
public:
    TreeSplitter(std::shared_ptr<KRFileHierarchyItem> root, DiscFilesystems filesystems);

    /// Finds out how much room each object takes. Touches the disk. False after a stop.
    [[nodiscard]] bool measure(const std::stop_token &stop);
    /// Discs with trees and paths, each of at most `capacity` bytes by what was measured. Files that are larger than a
    /// disc are added to `tooLarge`. Earlier discs must not be used any more.
    [[nodiscard]] std::vector<DiscShare> discsOf(std::uint64_t capacity,
                                                 std::vector<DiscSplitResult::TooLargeFile> *tooLarge);

private:
    /// What stays together on one disc: a file, or a folder with all that is in it.
    struct Unit {
        std::shared_ptr<KRFileHierarchyItem> item;
        const KRFileHierarchyItem *parent = nullptr;
        QString path;
        std::uint64_t bytes = 0;
        std::size_t disc = 0;
    };
    struct Disc {
        std::uint64_t bytes = 0;
        std::unordered_map<const KRFileHierarchyItem *, std::shared_ptr<KRFileHierarchyItem>> folders; ///< its copies
    };

    [[nodiscard]] std::uint64_t bytesOf(const KRFileHierarchyItem &item) const;
    [[nodiscard]] std::vector<Unit> unitsWithin(std::uint64_t capacity,
                                                std::vector<DiscSplitResult::TooLargeFile> *tooLarge) const;
    [[nodiscard]] static std::size_t place(std::vector<Unit> &units, std::uint64_t capacity);
    [[nodiscard]] std::vector<DiscShare> sharesOf(const std::vector<Unit> &units, std::size_t count) const;

    const std::shared_ptr<KRFileHierarchyItem> m_root;
    const std::uint64_t m_bytesPerObject;
    const std::uint64_t m_bytesPerFolder;
    std::unordered_map<const KRFileHierarchyItem *, std::uint64_t> m_bytes; ///< of each object and all in it
};

} // namespace Tessaron
