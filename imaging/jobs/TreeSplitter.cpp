#include "imaging/jobs/TreeSplitter.h"

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t blockSize = 2048;
/// Of an image with all filesystems and nothing in it.
constexpr std::uint64_t emptyDisc = 640'000;

/// Measured with names of twenty characters: 2,738 bytes for a file in all four filesystems. What is asked for here is
/// checked against the exact plan afterwards.
std::uint64_t bytesPerObject(DiscFilesystems filesystems)
{
    std::uint64_t bytes = 0;
    if (filesystems.testFlag(DiscFilesystem::ISO9660))
        bytes += 160;
    if (filesystems.testFlag(DiscFilesystem::Joliet))
        bytes += 90;
    if (filesystems.testFlag(DiscFilesystem::UDF))
        bytes += blockSize + 70;
    if (filesystems.testFlag(DiscFilesystem::HFSPlus))
        bytes += 420;
    return bytes;
}

/// Each tree but that of HFS+ lists a folder in blocks of its own.
std::uint64_t bytesPerFolder(DiscFilesystems filesystems)
{
    std::uint64_t bytes = 0;
    for (const DiscFilesystem filesystem : {DiscFilesystem::ISO9660, DiscFilesystem::Joliet, DiscFilesystem::UDF})
        bytes += filesystems.testFlag(filesystem) ? blockSize : 0;
    return bytes;
}

std::uint64_t contentBytes(const KRFileHierarchyItem &item)
{
    const std::shared_ptr<KRFileReference> &reference = item.fileReference();
    struct stat status;
    const bool isFile = reference && !reference->isVirtual()
        && ::lstat(lastKnownPath(*reference->fileRef()).constData(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? (std::uint64_t(status.st_size) + blockSize - 1) / blockSize * blockSize : 0;
}

QString nameOf(const KRFileHierarchyItem &item)
{
    const std::shared_ptr<KRFileReference> &reference = item.fileReference();
    if (!reference)
        return {};
    const QString desired = reference->desiredNameWithExtensionEvenIfHidden(true);
    return desired.isEmpty() ? reference->name() : desired;
}

bool isFolder(const KRFileHierarchyItem &item)
{
    return item.numberOfItems() > 0 || !item.fileReference() || item.fileReference()->isContainer();
}

} // namespace

TreeSplitter::TreeSplitter(std::shared_ptr<KRFileHierarchyItem> root, DiscFilesystems filesystems)
    : m_root(std::move(root))
    , m_bytesPerObject(bytesPerObject(filesystems))
    , m_bytesPerFolder(bytesPerFolder(filesystems))
{
}

std::uint64_t TreeSplitter::bytesOf(const KRFileHierarchyItem &item) const
{
    const auto known = m_bytes.find(&item);
    return known == m_bytes.end() ? 0 : known->second;
}

bool TreeSplitter::measure(const std::stop_token &stop)
{
    // Each folder stands in front of all that is below it; added up from behind.
    std::vector<std::pair<const KRFileHierarchyItem *, const KRFileHierarchyItem *>> objects = {
        {m_root.get(), nullptr}};
    for (std::size_t next = 0; next < objects.size(); ++next) {
        if (stop.stop_requested())
            return false;
        const KRFileHierarchyItem &item = *objects[next].first;
        m_bytes[&item] = m_bytesPerObject + contentBytes(item) + (isFolder(item) ? m_bytesPerFolder : 0);
        for (const std::shared_ptr<KRFileHierarchyItem> &child : item.items())
            objects.emplace_back(child.get(), &item);
    }
    for (auto object = objects.rbegin(); object != objects.rend(); ++object) {
        if (object->second)
            m_bytes[object->second] += m_bytes[object->first];
    }
    return true;
}

/// The largest objects of the tree that a disc holds, folder by folder in the order of their names.
std::vector<TreeSplitter::Unit> TreeSplitter::unitsWithin(std::uint64_t capacity,
                                                          std::vector<DiscSplitResult::TooLargeFile> *tooLarge) const
{
    std::vector<Unit> units;
    std::vector<Unit> waiting; // the next one at the end
    // By name: a scan finds files in whatever order their disk has them.
    const auto open = [&](const KRFileHierarchyItem &folder, const QString &path) {
        const std::size_t first = waiting.size();
        for (const std::shared_ptr<KRFileHierarchyItem> &child : folder.items())
            waiting.push_back({child, &folder, path + u'/' + nameOf(*child), bytesOf(*child), 0});
        std::sort(waiting.begin() + std::ptrdiff_t(first), waiting.end(),
                  [](const Unit &one, const Unit &other) { return one.path > other.path; });
    };
    open(*m_root, {});
    while (!waiting.empty()) {
        Unit unit = std::move(waiting.back());
        waiting.pop_back();
        if (unit.bytes <= capacity) {
            units.push_back(std::move(unit));
        } else if (unit.item->numberOfItems() > 0) {
            open(*unit.item, unit.path);
        } else {
            tooLarge->push_back({unit.path, contentBytes(*unit.item)});
        }
    }
    return units;
}

/// The largest first, each onto a disc that has something of the same folder, else onto the first with room. How many
/// discs there are.
std::size_t TreeSplitter::place(std::vector<Unit> &units, std::uint64_t capacity)
{
    std::vector<std::size_t> order(units.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(),
                     [&units](std::size_t one, std::size_t other) { return units[one].bytes > units[other].bytes; });
    std::vector<std::uint64_t> used;
    std::vector<std::set<const KRFileHierarchyItem *>> parents;
    for (const std::size_t index : order) {
        Unit &unit = units[index];
        std::size_t chosen = used.size();
        for (std::size_t disc = 0; disc < used.size(); ++disc) {
            if (capacity - used[disc] < unit.bytes)
                continue;
            const bool isBeside = parents[disc].contains(unit.parent);
            if (isBeside || chosen == used.size())
                chosen = disc;
            if (isBeside)
                break;
        }
        if (chosen == used.size()) {
            used.push_back(0);
            parents.emplace_back();
        }
        used[chosen] += unit.bytes;
        parents[chosen].insert(unit.parent);
        unit.disc = chosen;
    }
    // Numbered by what comes first.
    std::vector<std::size_t> numbers(used.size(), used.size());
    std::size_t next = 0;
    for (Unit &unit : units) {
        if (numbers[unit.disc] == used.size())
            numbers[unit.disc] = next++;
        unit.disc = numbers[unit.disc];
    }
    return used.size();
}

/// Folders that are on several discs are copied for each, those that are whole are moved there.
std::vector<DiscShare> TreeSplitter::sharesOf(const std::vector<Unit> &units, std::size_t count) const
{
    std::vector<Disc> discs(count);
    std::vector<DiscShare> shares(count);
    std::unordered_map<const KRFileHierarchyItem *, const KRFileHierarchyItem *> above; // of the folders that are split
    std::vector<const KRFileHierarchyItem *> waiting = {m_root.get()};
    std::set<const KRFileHierarchyItem *> split;
    for (const Unit &unit : units)
        split.insert(unit.parent);
    while (!waiting.empty()) {
        const KRFileHierarchyItem *const folder = waiting.back();
        waiting.pop_back();
        for (const std::shared_ptr<KRFileHierarchyItem> &child : folder->items()) {
            if (child->numberOfItems() > 0) {
                above[child.get()] = folder;
                waiting.push_back(child.get());
            }
        }
    }
    for (std::size_t disc = 0; disc < count; ++disc) {
        shares[disc].tree = KRFileHierarchyItem::initWithFileReference(m_root->fileReference());
        discs[disc].folders[m_root.get()] = shares[disc].tree;
    }
    for (const Unit &unit : units) {
        auto &folders = discs[unit.disc].folders;
        std::vector<const KRFileHierarchyItem *> missing;
        for (const KRFileHierarchyItem *folder = unit.parent; !folders.contains(folder); folder = above.at(folder))
            missing.push_back(folder);
        for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder) {
            const std::shared_ptr<KRFileHierarchyItem> copy =
                KRFileHierarchyItem::initWithFileReference((*folder)->fileReference());
            folders.at(above.at(*folder))->addItem(copy);
            folders[*folder] = copy;
        }
        folders.at(unit.parent)->addItem(unit.item);
        shares[unit.disc].paths << unit.path;
    }
    return shares;
}

std::vector<DiscShare> TreeSplitter::discsOf(std::uint64_t capacity,
                                             std::vector<DiscSplitResult::TooLargeFile> *tooLarge)
{
    const std::uint64_t room = capacity > emptyDisc ? capacity - emptyDisc : 0;
    std::vector<Unit> units = unitsWithin(room, tooLarge);
    const std::size_t count = place(units, room);
    return sharesOf(units, count);
}

} // namespace Tessaron
