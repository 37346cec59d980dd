// A media module that does not fit: each test of it defines another fault.

#include "platform/foundation/Export.h"
#include "platform/quicktime/MediaService.h"

using namespace Tessaron;

#if defined(OTHER_VERSION)
static constexpr std::uint32_t interfaceNumber = mediaInterfaceNumber;
#else
static constexpr std::uint32_t interfaceNumber = mediaInterfaceNumber + 1;
#endif

#if defined(WITHOUT_ENTRY)
extern "C" TESSARON_EXPORT const MediaModuleDescription *anotherName()
#else
extern "C" TESSARON_EXPORT const MediaModuleDescription *tessaronMediaModule()
#endif
{
    static const MediaModuleDescription description{interfaceNumber, sizeof(MediaService), "0.0.9", nullptr};
    return &description;
}
