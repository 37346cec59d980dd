#pragma once

#include "app/BackgroundWork.h"
#include "app/DesktopPanel.h"
#include "app/PrivateFolder.h"

#include <TessaronClasses/ExtractFilesJob.h>

#include <QByteArray>
#include <QList>
#include <QMimeData>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

namespace Tessaron::Desktop
{

/// Takes files of an image out into a private folder, from which other programs copy them when they are pasted or
/// dropped there. The folder stays until the next files take its place, or the program ends. On the main thread.
class FileLending final : public QObject
{
    Q_OBJECT

public:
    explicit FileLending(QObject *parent = nullptr);
    /// Removes the folder.
    ~FileLending() override;

    /// Called when the files are there: with their paths, and with what is to be told, to which it may add. Not called
    /// where nothing was taken out, which is told.
    using WhenReady = std::function<void(const QList<QByteArray> &paths, JobOutcome &outcome)>;
    /// Takes files out, as a job of the window; `name` is that of the image. What was lent before stays until then, and
    /// longer where nothing can be taken out. Does nothing while files are being taken out.
    void lend(const ExtractFilesOrder &order, const QString &name, const std::shared_ptr<TessaronPanelDelegate> &host,
              WhenReady whenReady);
    [[nodiscard]] bool isWorking() const { return m_next != nullptr; }
    /// The files that are lent; empty for none.
    [[nodiscard]] const QList<QByteArray> &paths() const { return m_paths; }
    /// Puts them onto the clipboard, until they go.
    void putOnClipboard();

private:
    struct Loan;

    void start(const std::shared_ptr<Loan> &loan);
    void taken(const std::shared_ptr<Loan> &loan, const ExtractFilesResult &result);
    void listed(const std::shared_ptr<Loan> &loan);
    void giveUp(const std::shared_ptr<Loan> &loan, const JobOutcome *outcome);
    void clearClipboard();
    void removeLater(std::shared_ptr<PrivateFolder> folder);

    std::shared_ptr<PrivateFolder> m_folder; ///< null while nothing is lent
    QList<QByteArray> m_paths;
    QPointer<QMimeData> m_copied; ///< the clipboard's, while that has the files
    std::shared_ptr<Loan> m_next; ///< null when nothing is being taken out
    BackgroundWork m_work;
    BackgroundWork m_removal;
};

} // namespace Tessaron::Desktop
