#pragma once

#include "platform/foundation/Export.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <memory>

namespace Tessaron
{

/// Loads the interface file "audioConverter": a window with a progress bar and a button whose action, like that of the
/// Escape key, is the owner's abort(). It becomes a sheet on a window of the program, which takes no input meanwhile;
/// the program's other windows do. Null, with a line in the log, when the file cannot be loaded. On the main thread.
///
///     converter->setInterfaceLoader(loadAudioConverterInterface);
///     converter->setSheetModal(window);
///     converter->setUseStandardUI(true);
[[nodiscard]] TESSARON_EXPORT std::unique_ptr<KRAudioConverterInterface>
loadAudioConverterInterface(KRAudioConverter &owner);

} // namespace Tessaron
