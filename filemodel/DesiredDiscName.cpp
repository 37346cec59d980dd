#include "filemodel/DesiredDiscName.h"

#include <TessaronClasses/KRFileReference.h>

namespace Tessaron
{

QString desiredDiscNameOrNull(KRFileReference &reference)
{
    // The question itself would first look up what the file manager shows for a real file, only to drop it.
    if (!reference.isVirtual() && !reference.hasDesiredName())
        return {};
    return reference.desiredNameWithExtensionEvenIfHidden(true);
}

} // namespace Tessaron
