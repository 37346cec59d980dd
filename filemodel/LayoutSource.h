#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace Tessaron
{

/// The names in a folder, with the inodes that it gives for them. One listing is a third of the work of looking at each
/// of its files.
class FolderNames
{
public:
    /// Lists an open folder. Stays empty where that fails, and ends early in a folder of very many names: a file that
    /// is not found here has to be looked at itself.
    void read(int folder);
    /// True when the file lies in the folder under its own name: that name leads to its inode, on its device.
    [[nodiscard]] bool hold(const FSRef &ref) const;

private:
    std::uint64_t m_device = 0;
    std::vector<std::pair<std::uint64_t, std::uint32_t>> m_names; ///< inode and offset in m_text, sorted
    std::string m_text; ///< the names, each followed by a NUL
};

/// A folder on disk whose children are being laid out. It stays open, so that a child costs one look and no path, at
/// any depth.
struct LayoutSource {
    UniqueDescriptor
        descriptor; ///< O_PATH; invalid while a folder is closed for a time, and for one that could not be opened
    std::uint32_t node = 0; ///< the place by which its children's references name it; 0 for a virtual folder
    std::size_t filesToLookAt = 0; ///< how many are likely to be asked for
    FolderNames names; ///< read when many files are asked for
    bool isListed = false; ///< reading them was tried
};

/// Where a file lies at this moment.
struct LayoutPlace {
    int errnoValue = 0;
    bool isBelow = false; ///< in the open folder, under the name that its reference has
    QByteArray path; ///< set where it is not
    QByteArrayView name; ///< the last one known where it is gone; lives as long as the process
    struct statx facts = {};
};

[[nodiscard]] LayoutPlace findLayoutPlace(const FSRef &ref, const LayoutSource &folder);

/// The name alone, which costs less where many files of a folder are asked for.
[[nodiscard]] QByteArrayView findLayoutName(const FSRef &ref, LayoutSource &folder);

/// Makes `folder` the one in which the file was when its reference was made, unless it is that one already; counts the
/// file among those to look at. For files that come without their folder.
void enterFolderOf(const FSRef &ref, LayoutSource &folder);

/// Opens the folder that was found at the place; invalid with `*errnoValue` set when that fails.
[[nodiscard]] UniqueDescriptor openLayoutSource(const FSRef &ref, const LayoutPlace &place, const LayoutSource &folder,
                                                int *errnoValue);

/// Opens again the folder that holds an open one, without its path; invalid when another folder holds it by now.
[[nodiscard]] UniqueDescriptor openSourceAbove(const LayoutSource &below, const FSRef &above);

} // namespace Tessaron
