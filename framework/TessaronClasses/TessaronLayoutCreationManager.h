#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"

namespace Tessaron
{

class NSError;
class TessaronPanel;

/// Receives the reports of a panel's layout creation; a KRLayoutWriter is one. A panel whose creation has started sends
/// any number of progress values, then exactly one of the three others, all on the main thread.
class TESSARON_EXPORT TessaronLayoutCreationManager
{
public:
    virtual ~TessaronLayoutCreationManager();

    virtual void TessaronPanelLayoutCreationDidFailWithError(TessaronPanel &panel, const NSError &error) = 0;
    virtual void TessaronPanelLayoutIsCreated(TessaronPanel &panel, const DRLayout &layout) = 0;
    /// The creation was cancelled.
    virtual void TessaronPanelLayoutCreationCancel(TessaronPanel &panel) = 0;
    /// From 0 to 1.
    virtual void TessaronPanelLayoutCreationProgress(TessaronPanel &panel, float progress) = 0;
};

} // namespace Tessaron
