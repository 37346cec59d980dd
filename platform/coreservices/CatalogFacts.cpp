#include "platform/coreservices/CatalogFacts.h"

#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/PathAccess.h"

#include <algorithm>
#include <sys/sysmacros.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t statBlockBytes = 512; ///< unit of `stx_blocks`, whatever the volume's block size

constexpr int mostVainLists = 8;

std::uint64_t roundedUp(std::uint64_t size, std::uint64_t unit)
{
    return (size + unit - 1) / unit * unit;
}

} // namespace

unsigned int catalogFields(std::uint32_t whichInfo)
{
    unsigned int fields = identityFields;
    if (whichInfo & kFSCatInfoDataSizes)
        fields |= STATX_SIZE | STATX_BLOCKS;
    if (whichInfo & kFSCatInfoDates)
        fields |= STATX_ATIME | STATX_MTIME | STATX_CTIME;
    if (whichInfo & kFSCatInfoPermissions)
        fields |= STATX_UID | STATX_GID | STATX_NLINK;
    return fields;
}

void fillCatalogInfo(const struct statx &facts, std::uint32_t whichInfo, FSCatalogInfo *info)
{
    if (whichInfo & kFSCatInfoNodeFlags)
        info->nodeFlags = S_ISDIR(facts.stx_mode) ? kFSNodeIsDirectoryMask : 0;
    if (whichInfo & kFSCatInfoFinderInfo)
        std::fill(std::begin(info->finderInfo), std::end(info->finderInfo), std::uint8_t(0));
    if (whichInfo & kFSCatInfoFinderXInfo)
        std::fill(std::begin(info->extFinderInfo), std::end(info->extFinderInfo), std::uint8_t(0));
    if (whichInfo & kFSCatInfoDataSizes) {
        info->dataLogicalSize = facts.stx_size;
        info->dataPhysicalSize = facts.stx_blocks * statBlockBytes;
    }
    if (whichInfo & kFSCatInfoRsrcSizes)
        info->rsrcLogicalSize = info->rsrcPhysicalSize = 0;
    if (whichInfo & kFSCatInfoDates) {
        info->createDate = facts.stx_mask & STATX_BTIME ? FileTime::from(facts.stx_btime) : FileTime();
        info->contentModDate = FileTime::from(facts.stx_mtime);
        info->attributeModDate = FileTime::from(facts.stx_ctime);
        info->accessDate = FileTime::from(facts.stx_atime);
    }
    if (whichInfo & kFSCatInfoPermissions) {
        info->mode = facts.stx_mode;
        info->userId = facts.stx_uid;
        info->groupId = facts.stx_gid;
        info->linkCount = facts.stx_nlink;
        info->deviceNumber = gnu_dev_makedev(facts.stx_rdev_major, facts.stx_rdev_minor);
    }
}

bool mayHaveResourceFork(const struct statx &facts)
{
    return S_ISREG(facts.stx_mode);
}

bool mayHaveFinderInfo(const struct statx &facts)
{
    return S_ISREG(facts.stx_mode) || S_ISDIR(facts.stx_mode);
}

void fillFromAttributes(AttributeSource &source, const struct statx &facts, std::uint32_t whichInfo,
                        FSCatalogInfo *info)
{
    // Where every file carries a label of the system, a list tells nothing: it is not asked for again.
    const bool mayAskForList = source.vainLists < mostVainLists;
    if (mayAskForList && !hasAnyAttribute(source.folder, source.name, source.folderPath))
        return;
    ++source.vainLists;
    if ((whichInfo & kFSCatInfoRsrcSizes) && mayHaveResourceFork(facts)) {
        info->rsrcLogicalSize =
            attributeLength(source.folder, source.name, source.folderPath, resourceForkAttribute, &source.isSupported);
        if (info->rsrcLogicalSize > 0) {
            const VolumeFacts volume = volumeFactsOf(source.device, source.folder, source.name);
            info->rsrcPhysicalSize = roundedUp(info->rsrcLogicalSize, volume.blockSize);
        }
    }
    if ((whichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo)) && mayHaveFinderInfo(facts)
        && source.isSupported) {
        const FinderInfoBytes bytes =
            readFinderInfo(source.folder, source.name, source.folderPath, &source.isSupported);
        if (whichInfo & kFSCatInfoFinderInfo)
            std::copy_n(bytes.begin(), sizeof info->finderInfo, info->finderInfo);
        if (whichInfo & kFSCatInfoFinderXInfo)
            std::copy_n(bytes.begin() + sizeof info->finderInfo, sizeof info->extFinderInfo, info->extFinderInfo);
    }
    if (!source.isSupported)
        noteVolumeKeepsNoAttributes(source.device);
}

} // namespace Tessaron
