#pragma once

#include <QMimeData>

#include <vector>

namespace Tessaron::Desktop
{

struct DiscNode;
class DiscTreeModel;

/// Type of the data by which rows travel inside the program.
extern const QString discRowsMimeType;

/// Rows travel as an object of this process. The type alone says nothing: another window of the program, in a process
/// of its own, sends it, too.
class DiscRows final : public QMimeData
{
public:
    DiscRows(const DiscTreeModel &model, std::vector<DiscNode *> nodes);

    /// The rows of this model that the data are; null for any other data.
    [[nodiscard]] static const std::vector<DiscNode *> *of(const DiscTreeModel &model, const QMimeData &data);

private:
    const DiscTreeModel &m_model;
    const std::vector<DiscNode *> m_nodes;
};

} // namespace Tessaron::Desktop
