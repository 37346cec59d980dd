#pragma once

#include "app/BackgroundWork.h"
#include "app/DesktopPanel.h"
#include "app/ProjectSubject.h"

#include <TessaronClasses/DiscSplitJob.h>

#include <QObject>

#include <memory>
#include <vector>

namespace Tessaron::Desktop
{

/// Saves each of several discs as a project of its own, which is then opened and burnt like any other. Goes by itself
/// when that is done. On the main thread.
class ShareProjects final : public QObject
{
    Q_OBJECT

public:
    /// The projects come into `folder`, which is made, under the names of the discs. Paths of `missing` files are on
    /// none of them.
    ShareProjects(const std::vector<DiscShare> &discs, const QString &mediumKey, QByteArray folder, QStringList missing,
                  std::weak_ptr<TessaronPanelDelegate> host, QObject *parent);

    /// A folder that is there already may hold other projects: that is told, and nothing saved.
    void start();

private:
    struct Project {
        QByteArray path;
        ProjectSubject::Writer write;
    };
    struct Saved {
        int folderError = 0;
        NSError error;
        QList<QByteArray> paths;
    };

    void tell(const Saved &saved);

    std::vector<Project> m_projects;
    const QByteArray m_folder;
    const QStringList m_missing;
    const std::weak_ptr<TessaronPanelDelegate> m_host;
    BackgroundWork m_work;
};

} // namespace Tessaron::Desktop
