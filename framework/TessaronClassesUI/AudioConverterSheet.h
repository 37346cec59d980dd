#pragma once

#include "platform/foundation/Export.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <functional>
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

/// The same window for what converts by other means, for example an AudioConvertJob: `whenCancelled` is called once,
/// when the user wants it to end, and the window is gone then.
[[nodiscard]] TESSARON_EXPORT std::unique_ptr<KRAudioConverterInterface>
loadAudioConverterSheet(const std::function<void()> &whenCancelled);

} // namespace Tessaron
