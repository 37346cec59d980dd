// A window that makes a disc image of what is dropped on it, or given as arguments, beside the first of it.
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/PathHelpers.h>

#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include <platform/discrecording/objects/DRStorageReport.h>
#include <platform/foundation/FileSystemRepresentation.h>

using namespace Tessaron;

class DropWindow final : public QLabel
{
public:
    void makeImage(const QStringList &paths)
    {
        DiscImageOrder order;
        for (const QString &path : paths)
            order.sources.append(fileSystemRepresentation(path));
        // Beside the first source, under a name that nothing has yet.
        order.output = fileSystemRepresentation(unusedName(paths.first() + QStringLiteral(".iso")));
        m_job = std::make_unique<DiscImageJob>(order);
        connect(m_job.get(), &DiscJob::progressed, this, [this](const DiscJobProgress &progress) {
            setText(QStringLiteral("%L1 files, %2 %").arg(progress.files).arg(progress.percent()));
        });
        connect(m_job.get(), &DiscImageJob::finished, this, &DropWindow::showResult);
        m_job->start();
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        const QList<QUrl> urls = event->mimeData()->urls();
        const bool areLocal = std::all_of(urls.begin(), urls.end(), [](const QUrl &url) { return url.isLocalFile(); });
        event->setAccepted(!urls.isEmpty() && areLocal && (!m_job || !m_job->isRunning()));
    }

    void dropEvent(QDropEvent *event) override
    {
        QStringList paths;
        for (const QUrl &url : event->mimeData()->urls())
            paths.append(url.toLocalFile());
        makeImage(paths);
    }

private:
    void showResult(const DiscImageResult &result)
    {
        QString text = displayableText(stringWithFileSystemRepresentation(result.imagePath));
        if (result.error)
            text = result.error.localizedDescription() + u'\n' + result.error.localizedRecoverySuggestion();
        else if (!result.isComplete()) // what the image lacks must be said
            text += QStringLiteral("\nNot everything is in it: %L1 folders could not be read, %L2 items not stored.")
                        .arg(result.unreadable.size())
                        .arg(result.report->lostCount());
        setText(text);
    }

    std::unique_ptr<DiscImageJob> m_job; // a window that is closed cancels it
};

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    DropWindow window;
    window.setText(QStringLiteral("Drop files and folders here"));
    window.setAcceptDrops(true);
    window.resize(420, 220);
    window.show();
    if (const QStringList paths = QCoreApplication::arguments().mid(1); !paths.isEmpty())
        window.makeImage(paths);
    return QApplication::exec();
}
