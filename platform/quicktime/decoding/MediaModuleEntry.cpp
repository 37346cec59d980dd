#include "platform/foundation/Export.h"
#include "platform/quicktime/MediaService.h"
#include "platform/quicktime/decoding/DecodingService.h"

// The one door of the module TessaronMedia.so; see MediaModule.h for the other side.
extern "C" TESSARON_EXPORT const Tessaron::MediaModuleDescription *tessaronMediaModule()
{
    static const Tessaron::MediaModuleDescription description{
        Tessaron::mediaInterfaceNumber, sizeof(Tessaron::MediaService), TESSARON_VERSION, &Tessaron::decodingService()};
    return &description;
}
