#pragma once

#include "app/DesktopPanel.h"

#include <TessaronClasses/DiscSplitJob.h>

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

namespace Tessaron::Desktop
{

/// Has a drive write several discs, one after the other: asks for each as for any other disc, and again for one that
/// could not be written or was only simulated. Goes by itself when all are written, or the user wants no more. On the
/// main thread.
class ShareBurning final : public QObject
{
    Q_OBJECT

public:
    /// Paths of `missing` files are on none of the discs.
    ShareBurning(std::vector<DiscShare> discs, QStringList missing, std::weak_ptr<TessaronPanelDelegate> host,
                 QObject *parent);

    void start() { askForNext(); }

private:
    void askForNext();
    void take(BurnEnd end, const JobOutcome &outcome);
    void tell();

    const std::vector<DiscShare> m_discs;
    const QStringList m_missing;
    const std::weak_ptr<TessaronPanelDelegate> m_host;
    std::size_t m_written = 0;
    QStringList m_told; ///< of each burn so far
};

} // namespace Tessaron::Desktop
