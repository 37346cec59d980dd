#pragma once

#include <TessaronClasses/DiscJob.h>

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace Tessaron::Desktop
{

/// What works in the background: how far it is, how fast, how long it has taken and will take, and a button that ends
/// it. The button works at every moment.
class JobBar final : public QWidget
{
    Q_OBJECT

public:
    explicit JobBar(QWidget *parent = nullptr);

    /// Shows the bar for a piece of work; `name` stays in front of what is said.
    void begin(const QString &name);
    void showProgress(const DiscJobProgress &progress);
    /// For work whose amounts are shares of the whole, and no bytes.
    void showShare(const DiscJobProgress &progress);
    /// For work that cannot say how much there is.
    void showText(const QString &text);
    /// False for work that cannot be stopped: begin() makes it so that it can.
    void setCancellable(bool canBeCancelled);
    /// The work goes to a drive, and not to a file; for what is said of it. begin() makes it a file's.
    void setForDrive(bool isForDrive) { m_isForDrive = isForDrive; }
    /// The work has been asked to end.
    void showCancelling();
    void end();
    [[nodiscard]] QString text() const;

Q_SIGNALS:
    void cancelWanted();

private:
    void showAmount(const DiscJobProgress &progress);

    QString m_name;
    bool m_isForDrive = false;
    QElapsedTimer m_clock;
    QLabel *const m_label;
    QProgressBar *const m_bar;
    QPushButton *const m_cancel;
};

} // namespace Tessaron::Desktop
