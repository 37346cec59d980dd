#include <TessaronClasses/KRProducerOfferings.h>

namespace Tessaron
{

KRTrackOffering::~KRTrackOffering() = default;

KRDataSizeOffering::~KRDataSizeOffering() = default;

} // namespace Tessaron
