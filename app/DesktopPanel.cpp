#include "app/DesktopPanel.h"

namespace Tessaron::Desktop
{

void DesktopPanel::changed()
{
    if (const std::shared_ptr<TessaronPanelDelegate> host = delegate())
        host->panelDidChange(*this);
}

void DesktopPanel::tell(const QString &text, const QStringList &details)
{
    if (const std::shared_ptr<TessaronPanelDelegate> host = delegate())
        host->panelTells(text, details);
}

} // namespace Tessaron::Desktop
