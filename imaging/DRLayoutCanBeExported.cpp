#include "platform/discrecording/objects/DRTrackDescription.h"
#include <TessaronClasses/DRLayoutCanBeExported.h>

#include <algorithm>
#include <set>

namespace Tessaron
{

namespace
{

constexpr qulonglong dataBlockSize = 2048;
constexpr qulonglong formBlockSize = 2336;
constexpr qulonglong rawBlockSize = 2352;

} // namespace

bool DRLayoutCanBeExported(const DRLayout &layout, TessaronDiscImageFormat format)
{
    if (isNullLayout(layout))
        return false;
    if (format == TessaronDiscImageFormatVANT)
        return true;

    std::set<qulonglong> blockSizes;
    bool hasFormTrack = false;
    for (const std::shared_ptr<DRTrack> &track : tracksOfLayout(layout)) {
        const QVariantMap properties = track ? track->properties() : QVariantMap();
        const StatedBlocks blocks = statedBlocks(properties);
        if (!blocks.size || !blocks.type)
            return false;
        blockSizes.insert(*blocks.size);
        hasFormTrack |= *blocks.size == formBlockSize && (*blocks.type == 8 || *blocks.type == 9);
    }
    if (blockSizes.size() != 1)
        return false;
    const qulonglong blockSize = *blockSizes.begin();
    if (format == TessaronDiscImageFormatISO)
        return blockSize == dataBlockSize;
    if (format == TessaronDiscImageFormatBIN)
        return !hasFormTrack && (blockSize == dataBlockSize || blockSize == formBlockSize || blockSize == rawBlockSize);
    return false;
}

} // namespace Tessaron
