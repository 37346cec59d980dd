#pragma once

#include "app/DiscNode.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron::Desktop
{

// How nodes come into a tree, leave it, and change places. Each keeps the children of the folder and those of its item
// in agreement, their rows numbered, and what all folders above take added up. Views are told by DiscTreeModel.

/// Runs of rows that follow each other, taken from nodes in the order of their rows.
struct RowRun {
    std::uint32_t first;
    std::uint32_t last;
};

/// The runs that nodes of one folder make, which stand in the order of their rows.
[[nodiscard]] std::vector<RowRun> runsOf(const std::vector<DiscNode *> &nodesInOrder);

/// Puts nodes behind the last child of a folder.
void appendNodes(DiscNode &parent, std::vector<std::unique_ptr<DiscNode>> nodes);
/// Takes rows out of a folder, to the end of `taken`.
void takeRun(DiscNode &parent, const RowRun &run, std::vector<std::unique_ptr<DiscNode>> *taken);
/// Takes children out of a folder, to the end of `taken`, in one go wherever they lie in it.
void takeScattered(DiscNode &parent, const std::vector<DiscNode *> &nodes,
                   std::vector<std::unique_ptr<DiscNode>> *taken);
/// Puts the children of a folder into another order: that of their present rows.
void applyOrder(DiscNode &parent, const std::vector<std::uint32_t> &order);

} // namespace Tessaron::Desktop
