#pragma once

#include <QString>

namespace Tessaron
{

class KRFileReference;

/// The name that the reference is given on the disc, with the extension appended where it is hidden; null for a real
/// file or folder without a desired name, which keeps the name it has. Costs nothing then.
[[nodiscard]] QString desiredDiscNameOrNull(KRFileReference &reference);

} // namespace Tessaron
