#include "app/DiscRows.h"

namespace Tessaron::Desktop
{

const QString discRowsMimeType = QStringLiteral("application/x-tessaron-disc-rows");

DiscRows::DiscRows(const DiscTreeModel &model, std::vector<DiscNode *> nodes)
    : m_model(model)
    , m_nodes(std::move(nodes))
{
    setData(discRowsMimeType, {});
}

const std::vector<DiscNode *> *DiscRows::of(const DiscTreeModel &model, const QMimeData &data)
{
    const auto *const rows = dynamic_cast<const DiscRows *>(&data);
    return rows && &rows->m_model == &model ? &rows->m_nodes : nullptr;
}

} // namespace Tessaron::Desktop
