#include "platform/discrecording/objects/DRTrackDescription.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include <TessaronClasses/VANTHeader.h>

namespace Tessaron
{

QByteArray VANTHeaderForDRLayout(const DRLayout &layout)
{
    return VANTHeaderForDRLayout(layout, {});
}

QByteArray VANTHeaderForDRLayout(const DRLayout &layout, const QList<QByteArray> &arrayOfCDTextBlocks)
{
    // An image is written already when it is described: even a filesystem track has its length now.
    const Result<TableOfContents> contents = tableOfContentsOfLayout(layout, TrackLengthIs::Stated);
    if (!contents)
        return {};
    const Result<QByteArray> trailer = vantTrailer(*contents, arrayOfCDTextBlocks);
    return trailer ? *trailer : QByteArray();
}

} // namespace Tessaron
