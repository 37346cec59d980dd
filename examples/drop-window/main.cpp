// A window that makes a disc image of what is dropped on it, or given as arguments, beside the first of it.
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/PathHelpers.h>

#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QUrl>
#include <QVBoxLayout>

#include <platform/discrecording/objects/DRStorageReport.h>
#include <platform/foundation/FileSystemRepresentation.h>

using namespace Tessaron;

class DropWindow final : public QWidget
{
public:
    DropWindow()
    {
        auto *const layout = new QVBoxLayout(this);
        layout->addWidget(m_text, 1);
        layout->addWidget(m_bar);
        m_text->setAlignment(Qt::AlignCenter);
        m_text->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        m_text->setWordWrap(true);
        setWindowTitle(QStringLiteral("Disc image"));
        setAcceptDrops(true);
        resize(420, 220);
    }

    void makeImage(const QStringList &paths)
    {
        DiscImageOrder order;
        for (const QString &path : paths)
            order.sources.append(fileSystemRepresentation(path));
        // Beside the first source, under a name that nothing has yet.
        order.output = fileSystemRepresentation(unusedName(paths.first() + QStringLiteral(".iso")));
        m_job = std::make_unique<DiscImageJob>(order);
        connect(m_job.get(), &DiscJob::progressed, this, &DropWindow::showProgress);
        connect(m_job.get(), &DiscImageJob::finished, this, &DropWindow::showResult);
        m_job->start();
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        if (event->mimeData()->hasUrls() && (!m_job || !m_job->isRunning()))
            event->acceptProposedAction();
    }

    void dropEvent(QDropEvent *event) override
    {
        QStringList paths;
        for (const QUrl &url : event->mimeData()->urls()) {
            if (url.isLocalFile())
                paths.append(url.toLocalFile());
        }
        if (paths.isEmpty())
            m_text->setText(QStringLiteral("Only files and folders of this computer can be put on a disc."));
        else
            makeImage(paths);
    }

private:
    void showProgress(const DiscJobProgress &progress)
    {
        m_bar->setValue(int(progress.percent()));
        QString text = QStringLiteral("%L1 files, %L2 folders").arg(progress.files).arg(progress.folders);
        if (progress.remaining)
            text += QStringLiteral("\n%1 s left").arg(progress.remaining->count());
        m_text->setText(text);
    }

    void showResult(const DiscImageResult &result)
    {
        QString text =
            QStringLiteral("%1 is ready.").arg(displayableText(stringWithFileSystemRepresentation(result.imagePath)));
        if (result.error)
            text = result.error.localizedDescription() + u'\n' + result.error.localizedRecoverySuggestion();
        else if (!result.isComplete()) // what the image lacks must be said
            text += QStringLiteral("\nNot everything is in it: %L1 folders could not be read, %L2 items not stored.")
                        .arg(result.unreadable.size())
                        .arg(result.report->lostCount());
        m_text->setText(text);
    }

    QLabel *const m_text = new QLabel(QStringLiteral("Drop files and folders here"));
    QProgressBar *const m_bar = new QProgressBar;
    std::unique_ptr<DiscImageJob> m_job; // goes first: a window that is closed cancels it
};

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    DropWindow window;
    window.show();
    if (const QStringList paths = QCoreApplication::arguments().mid(1); !paths.isEmpty())
        window.makeImage(paths);
    return QApplication::exec();
}
