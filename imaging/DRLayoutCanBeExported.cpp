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
        if (!properties.contains(DRBlockSizeKey) || !properties.contains(DRBlockTypeKey))
            return false;
        const qulonglong blockSize = properties.value(DRBlockSizeKey).toULongLong();
        const int blockType = properties.value(DRBlockTypeKey).toInt();
        blockSizes.insert(blockSize);
        hasFormTrack |= blockSize == formBlockSize && (blockType == 8 || blockType == 9);
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
