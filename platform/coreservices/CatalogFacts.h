#pragma once

#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/VolumeFacts.h"

#include <QByteArrayView>

#include <sys/stat.h>

namespace Tessaron
{

/// The fields of statx(2) that the wanted facts come from.
[[nodiscard]] unsigned int catalogFields(std::uint32_t whichInfo);

/// Fills what statx(2) knows; forks and Finder information become zero.
void fillCatalogInfo(const struct statx &facts, std::uint32_t whichInfo, FSCatalogInfo *info);

/// Only regular files have a resource fork; only they and folders have Finder information.
[[nodiscard]] bool mayHaveResourceFork(const struct statx &facts);
[[nodiscard]] bool mayHaveFinderInfo(const struct statx &facts);

/// Where the extended attributes of a file are read from; the members are the arguments of attributeLength().
struct AttributeSource {
    int folder;
    const char *name;
    QByteArrayView folderPath;
    std::uint64_t device;
    bool isSupported = true; ///< false once the volume said that it keeps none
    int vainLists = 0; ///< how often lately a file had attributes, but none of ours
};

/// Fills what extended attributes know: resource fork sizes and Finder information.
void fillFromAttributes(AttributeSource &source, const struct statx &facts, std::uint32_t whichInfo,
                        FSCatalogInfo *info);

} // namespace Tessaron
