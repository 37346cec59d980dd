#pragma once

#include <TessaronClasses/DiscJob.h>

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

class QMessageBox;

namespace Tessaron::Desktop
{

class JobBar;

/// The job that runs in the window, one at a time: what is shown of it, and how it is stopped. On the main thread.
class JobRunner final : public QObject
{
    Q_OBJECT

public:
    /// Shows progress in `bar`, and asks in front of `window`.
    JobRunner(JobBar &bar, QWidget &window);
    ~JobRunner() override;

    [[nodiscard]] bool isWorking() const { return m_job != nullptr; }
    /// Begins a job while no other one runs.
    void start(std::unique_ptr<DiscJob> job, const QString &name);
    /// Begins a job that belongs to the one that has just ended, under the name of that one.
    void startNext(std::unique_ptr<DiscJob> job);
    /// The job writes into a drive; `spoiling` says what is lost when it is stopped, and is empty for nothing.
    void setForDrive(const QString &spoiling);
    /// Forgets the job, whose signal finished() may be running; also one that was let go of.
    void end();

    /// True while a drive writes what stopping would spoil.
    [[nodiscard]] bool isWritingDisc() const;
    /// Asks first where that spoils a disc.
    void cancel();
    /// Asks whether to quit, though the job runs.
    void askBeforeQuitting(const std::function<void()> &whenWanted);
    void stop();
    /// Ends what runs, without waiting for what hangs in the system.
    void letGo();

Q_SIGNALS:
    /// A job has begun.
    void started();

private:
    /// `text` is a sentence, and what is lost behind a line break.
    void askBeforeStopping(const QString &text, const QString &stopText, const std::function<void()> &whenWanted);

    std::unique_ptr<DiscJob> m_job;
    QPointer<DiscJob> m_letGo; ///< was let go of, and ends when the system lets it
    JobBar &m_bar;
    QWidget &m_window;
    QString m_name;
    QString m_spoiling; ///< what stopping the job spoils; empty for nothing
    QPointer<QMessageBox> m_stopQuestion;
};

} // namespace Tessaron::Desktop
