#pragma once

#include "app/DiscTreeModel.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron::Desktop
{

class DiscRowLook;

/// The order in which the children of each folder are shown: folders first, then by a column, then by name.
class DiscTreeOrder
{
public:
    DiscTreeOrder(int column, Qt::SortOrder direction, const DiscRowLook &look)
        : m_column(column)
        , m_direction(direction)
        , m_look(look)
    {
    }

    /// The rows of these nodes in the order that is shown.
    [[nodiscard]] std::vector<std::uint32_t> of(const std::vector<std::unique_ptr<DiscNode>> &nodes) const;

private:
    const int m_column;
    const Qt::SortOrder m_direction;
    const DiscRowLook &m_look;
};

} // namespace Tessaron::Desktop
