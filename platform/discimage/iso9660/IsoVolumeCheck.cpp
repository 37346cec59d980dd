#include "platform/discimage/iso9660/IsoVolumeCheck.h"

#include "platform/discimage/iso9660/ElTorito.h"
#include "platform/discimage/iso9660/IsoDescriptorCheck.h"
#include "platform/discimage/iso9660/IsoTreeCheck.h"

namespace Tessaron
{

void checkIsoVolumes(const DiscImageSource &source, VolumeProblemReport &report)
{
    const CheckedIsoDescriptors descriptors = checkIsoDescriptors(source, report);
    for (const CheckedIsoDescriptor &descriptor : descriptors.trees) {
        if (!report.isStopped())
            checkIsoTree(source, descriptor, report);
    }
    if (descriptors.bootRecordOffset)
        checkBootCatalog(source, *descriptors.bootRecordOffset, report);
}

} // namespace Tessaron
