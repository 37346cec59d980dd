#pragma once

#include "filemodel/LayoutSource.h"

#include <memory>

namespace Tessaron
{

class DRFolder;
class KRFileReference;

/// What virtualFolderWithFileReference() makes, never null. A real folder is looked for in the open folder `above` and
/// left open in `source`. `*errnoValue` is 0, or says why its icon or Finder flags could not be read and are missing.
[[nodiscard]] std::shared_ptr<DRFolder> folderForLayout(KRFileReference &reference, const LayoutSource &above,
                                                        LayoutSource *source, int *errnoValue);

} // namespace Tessaron
