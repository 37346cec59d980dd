#pragma once

#include "TessaronClasses/ImageVerification.h"

#include "platform/foundation/Export.h"

#include <QObject>

#include <memory>

namespace Tessaron
{

/// Compares an image with its sources on a thread of its own: verifyImage() for programs with an event loop. Lives on
/// the thread that made it; all signals come on that thread, through its event loop. One comparison at a time.
class TESSARON_EXPORT VerifyJob : public QObject
{
    Q_OBJECT

public:
    explicit VerifyJob(QObject *parent = nullptr);
    /// Cancels, waits until the thread has noticed (a tenth of a second at most on an idle machine), and tells nothing
    /// any more.
    ~VerifyJob() override;

    /// Begins. Must not be called while a comparison runs.
    void start(VerificationRequest request);
    /// Asks the comparison to end soon; finished() comes all the same, with `isCancelled`. Does not wait.
    void cancel();
    [[nodiscard]] bool isRunning() const;

Q_SIGNALS:
    void phaseChanged(Tessaron::VerificationProgress::Phase phase);
    /// At most ten times a second; the last state of a phase may be left out.
    void progressed(const Tessaron::VerificationProgress &progress);
    void finished(const Tessaron::VerificationResult &result);

private:
    class Worker;
    std::unique_ptr<Worker> m_worker;
};

} // namespace Tessaron
