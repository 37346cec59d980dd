#include "app/ShareProjects.h"

#include "app/AtomicFile.h"
#include "app/DataProject.h"
#include "app/ProjectFile.h"
#include "app/ShareFolder.h"
#include "app/Words.h"

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

ShareProjects::ShareProjects(const std::vector<DiscShare> &discs, const QString &mediumKey, QByteArray folder,
                             QStringList missing, std::weak_ptr<TessaronPanelDelegate> host, QObject *parent)
    : QObject(parent)
    , m_folder(std::move(folder))
    , m_missing(std::move(missing))
    , m_host(std::move(host))
{
    for (const DiscShare &disc : discs)
        m_projects.push_back({pathOfShare(m_folder, disc.volumeName, ".tessaron"), writerOfShare(disc, mediumKey)});
}

void ShareProjects::start()
{
    const auto saved = std::make_shared<Saved>();
    m_work.start(
        [projects = std::move(m_projects), folder = m_folder, saved](const std::stop_token &stop) {
            saved->folderError = makeNewFolder(folder);
            if (saved->folderError != 0)
                return;
            for (const Project &project : projects) {
                const QJsonObject contents = project.write(folder, true, stop);
                if (contents.isEmpty())
                    return; // the program ends
                saved->error = writeAtomically(project.path, bytesOfProject(contents, DataProject::kindOfAll()));
                if (saved->error)
                    return;
                saved->paths << project.path;
            }
        },
        [this, saved] { tell(*saved); });
}

void ShareProjects::tell(const Saved &saved)
{
    deleteLater();
    const std::shared_ptr<TessaronPanelDelegate> host = m_host.lock();
    if (!host)
        return;
    if (saved.folderError != 0) {
        host->panelTells(newFolderProblem(saved.folderError), {});
        return;
    }
    QStringList details;
    for (const QByteArray &path : saved.paths)
        details << displayableText(stringWithFileSystemRepresentation(path));
    QString text = tr("%n project(s) were saved.", nullptr, int(saved.paths.size())) + u' '
        + (saved.error ? errorText(saved.error) : tr("Open one after the other to burn it."));
    if (!m_missing.isEmpty())
        text += u' ' + missingFromAllDiscs(m_missing.size());
    host->panelTells(text, details + m_missing);
}

} // namespace Tessaron::Desktop
