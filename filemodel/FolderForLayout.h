#pragma once

#include <memory>

namespace Tessaron
{

class DRFolder;
class KRFileReference;

/// What virtualFolderWithFileReference() makes, never null; `*errnoValue` is 0, or says why the folder's icon or Finder
/// flags could not be read and are missing.
[[nodiscard]] std::shared_ptr<DRFolder> folderForLayout(KRFileReference &reference, int *errnoValue);

} // namespace Tessaron
