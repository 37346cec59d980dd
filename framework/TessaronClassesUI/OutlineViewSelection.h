#pragma once

#include "platform/foundation/Export.h"

#include <QModelIndexList>

#include <optional>

class QTreeView;

namespace Tessaron
{

/// The selected items of an outline view: the index in the first column of each selected row, in the order in which the
/// rows are shown; rows that show no item are left out. No value when nothing is selected. On the main thread.
[[nodiscard]] TESSARON_EXPORT std::optional<QModelIndexList> selectedItems(const QTreeView &view);

} // namespace Tessaron
