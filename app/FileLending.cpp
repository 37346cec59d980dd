#include "app/FileLending.h"

#include "app/FileDrops.h"
#include "app/JobOutcomes.h"
#include "app/Words.h"

#include <TessaronClasses/DiscJobErrors.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QStandardPaths>

#include <algorithm>
#include <filesystem>
#include <platform/foundation/FileSystemRepresentation.h>
#include <system_error>
#include <utility>

namespace Tessaron::Desktop
{

/// Files on their way out of the image. Shared with threads, one at a time.
struct FileLending::Loan {
    ExtractFilesOrder order;
    QString name;
    std::weak_ptr<TessaronPanelDelegate> host;
    WhenReady whenReady;
    std::shared_ptr<PrivateFolder> folder; ///< null until it is made
    NSError error; ///< why it could not be
    JobOutcome outcome;
    QList<QByteArray> paths;
};

namespace
{

QByteArray folderOfLoans()
{
    // Not the folder for temporary files, which is in memory on many systems: a DVD would not fit.
    return fileSystemRepresentation(QStandardPaths::writableLocation(QStandardPaths::CacheLocation)) + "/lent";
}

/// Names are those that the disk has: some may be others than in the image.
QList<QByteArray> pathsIn(const QByteArray &folder)
{
    QList<QByteArray> paths;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder.toStdString(), error), end; !error && entry != end;
         entry.increment(error))
        paths << QByteArray::fromStdString(entry->path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace

FileLending::FileLending(QObject *parent)
    : QObject(parent)
{
}

FileLending::~FileLending()
{
    clearClipboard();
}

void FileLending::putOnClipboard()
{
    m_copied = offerOfLentFiles(m_paths).release();
    QGuiApplication::clipboard()->setMimeData(m_copied);
}

/// The files are about to go: pasting them would fail.
void FileLending::clearClipboard()
{
    if (m_copied && QGuiApplication::clipboard()->mimeData() == m_copied)
        QGuiApplication::clipboard()->clear();
}

void FileLending::lend(const ExtractFilesOrder &order, const QString &name,
                       const std::shared_ptr<TessaronPanelDelegate> &host, WhenReady whenReady)
{
    if (m_next)
        return;
    m_next = std::make_shared<Loan>(Loan{order, name, host, std::move(whenReady), nullptr, {}, {}, {}});
    m_work.start(
        [loan = m_next](const std::stop_token &) {
            Result<PrivateFolder> made = PrivateFolder::makeBelow(folderOfLoans());
            if (made)
                loan->folder = std::make_shared<PrivateFolder>(*std::move(made));
            else
                loan->error = discJobError(
                    DiscJobErrorCode::Destination,
                    tr("the files cannot be taken out into %1: %2")
                        .arg(stringWithFileSystemRepresentation(folderOfLoans()), made.error().localizedDescription()));
        },
        [this, loan = m_next] { start(loan); });
}

void FileLending::start(const std::shared_ptr<Loan> &loan)
{
    const std::shared_ptr<TessaronPanelDelegate> host = loan->host.lock();
    if (!loan->folder || !host) {
        if (host)
            host->panelTells(errorText(loan->error), {});
        giveUp(loan, nullptr);
        return;
    }
    loan->order.folder = loan->folder->path();
    loan->order.isSynchronized = false; // it goes with the program
    auto job = std::make_unique<ExtractFilesJob>(loan->order);
    connect(job.get(), &ExtractFilesJob::finished, this,
            [this, loan](const ExtractFilesResult &result) { taken(loan, result); });
    if (!host->runPanelJob(std::move(job), loan->name))
        giveUp(loan, nullptr);
}

void FileLending::taken(const std::shared_ptr<Loan> &loan, const ExtractFilesResult &result)
{
    if (result.error) {
        // Nothing of it stays, other than where a user has chosen the folder.
        ExtractFilesResult nothing = result;
        nothing.files = 0;
        const JobOutcome outcome = outcomeOf(nothing);
        giveUp(loan, &outcome);
        return;
    }
    loan->outcome = outcomeOf(result);
    m_work.start([loan](const std::stop_token &) { loan->paths = pathsIn(loan->folder->path()); },
                 [this, loan] { listed(loan); });
}

void FileLending::listed(const std::shared_ptr<Loan> &loan)
{
    if (loan->paths.isEmpty()) {
        loan->outcome.summary += u' ' + tr("There is nothing to paste or drop.");
        loan->outcome.isComplete = false;
        giveUp(loan, &loan->outcome);
        return;
    }
    m_next.reset();
    clearClipboard();
    removeLater(std::exchange(m_folder, std::move(loan->folder)));
    m_paths = loan->paths;
    loan->whenReady(m_paths, loan->outcome);
    if (const std::shared_ptr<TessaronPanelDelegate> host = loan->host.lock())
        host->panelJobHasEnded(loan->outcome);
}

void FileLending::giveUp(const std::shared_ptr<Loan> &loan, const JobOutcome *outcome)
{
    removeLater(std::move(loan->folder));
    m_next.reset();
    const std::shared_ptr<TessaronPanelDelegate> host = loan->host.lock();
    if (host && outcome)
        host->panelJobHasEnded(*outcome);
}

/// A thread lets go of the folder last, and so removes it.
void FileLending::removeLater(std::shared_ptr<PrivateFolder> folder)
{
    if (folder)
        m_removal.start([folder = std::move(folder)](const std::stop_token &) mutable { folder.reset(); }, [] {});
}

} // namespace Tessaron::Desktop
