#pragma once

#include "app/BackgroundWork.h"
#include "app/DesktopPanel.h"

#include <TessaronClasses/DiscSplitJob.h>

#include <QObject>

#include <deque>
#include <memory>

namespace Tessaron::Desktop
{

/// Makes an image of each of several discs, one after the other, as jobs of a window. Goes by itself when the last one
/// is made, or one has failed. On the main thread.
class ShareSaving final : public QObject
{
    Q_OBJECT

public:
    /// The images come into `folder`, which is made, under the names of the discs.
    ShareSaving(std::vector<DiscShare> discs, QByteArray folder, QStringList missing,
                std::weak_ptr<TessaronPanelDelegate> host, QObject *parent);

    /// A folder that is there already may hold other images: that is told, and nothing made.
    void start();

private:
    void saveNext();
    void take(const JobOutcome &saved);

    std::deque<DiscShare> m_waiting;
    const QByteArray m_folder;
    const QStringList m_missing; ///< see outcomeOf()
    const std::weak_ptr<TessaronPanelDelegate> m_host;
    const std::size_t m_count;
    JobOutcome m_outcome; ///< of all so far
    BackgroundWork m_work; ///< makes the folder
};

} // namespace Tessaron::Desktop
