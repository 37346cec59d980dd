#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QMetaType>
#include <QObject>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace Tessaron
{

class DiscJobWork;

/// What a job is doing.
enum class DiscJobPhase : std::uint8_t {
    Preparing, ///< looking at the sources and the destination
    Scanning, ///< finding out what the sources hold
    Planning, ///< laying out the disc
    Measuring, ///< how loud sound is
    Writing,
    Comparing, ///< an image with its sources
    Finishing, ///< making sure that the image is on the disk, and giving it its name
    Done,
};

/// How far a job has come. Copied freely; every count only ever grows.
struct DiscJobProgress {
    DiscJobPhase phase = DiscJobPhase::Preparing;
    std::uint64_t files = 0; ///< found so far
    std::uint64_t folders = 0; ///< found so far, sources not counted
    std::uint64_t bytesDone = 0; ///< measured, written or compared
    std::uint64_t bytesTotal = 0; ///< 0 until it is known, then exact
    /// From what the last five seconds have shown; absent until a quarter of a second of bytes has been seen.
    std::optional<double> bytesPerSecond;
    /// How long the rest will take at that rate.
    std::optional<std::chrono::seconds> remaining;

    /// 0 to 100, by bytes, in tenths, rounded down; 100 only when all is done.
    [[nodiscard]] TESSARON_EXPORT double percent() const;
};

/// Work on discs and images in the background, the base of ScanJob, DiscImageJob and others. A job is an object of the
/// main thread, serves one run, and never makes that thread wait: files are touched by workers only. Signals come
/// through the event loop.
///
/// A job that is destroyed while it runs is cancelled: the destructor waits until the workers have noticed (they look
/// at least once for every megabyte), nothing half-made is left, and no signal follows. It may be destroyed in a slot
/// that hears one of its signals by deleteLater() only.
///
/// A worker that waits inside a call of the system (a dead network mount, a drive that tries a bad sector again and
/// again) notices when that call returns, and not before; the system may take minutes. Threads are never abandoned, so
/// the destructor waits as long. A program that must go on meanwhile calls cancel(), keeps the job, and destroys it
/// when finished() has come: until then its window can close, and its event loop runs.
class TESSARON_EXPORT DiscJob : public QObject
{
    Q_OBJECT

public:
    ~DiscJob() override;

    /// Starts; returns at once. Every job has a signal `finished(result)`, which comes exactly once, after this has
    /// returned. Does nothing when the job was started before.
    void start();
    /// Asks the job to stop; returns at once. finished() comes then with an error of code Cancelled, unless the job was
    /// past the point of no return: with an image that has got its name, a cancel comes too late. A job that is not
    /// started yet ends so once it is started, without having done anything.
    void cancel();

    /// True from start() until finished() is sent.
    [[nodiscard]] bool isRunning() const;
    /// True once cancel() was called.
    [[nodiscard]] bool isCancelled() const;
    /// As it is now.
    [[nodiscard]] DiscJobProgress progress() const;

Q_SIGNALS:
    /// The job has come to another phase.
    void phaseChanged(Tessaron::DiscJobPhase phase);
    /// About ten times a second while the job runs, and with every new phase.
    void progressed(const Tessaron::DiscJobProgress &progress);

protected:
    DiscJob(std::unique_ptr<DiscJobWork> work, QObject *parent);

    /// What the constructor was given.
    [[nodiscard]] const DiscJobWork &work() const;

private:
    friend class DiscJobWork;

    /// Sends the signal finished() of the derived class.
    virtual void announceResult() = 0;
    void tell();

    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::DiscJobPhase)
Q_DECLARE_METATYPE(Tessaron::DiscJobProgress)
