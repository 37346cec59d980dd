#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <memory>

namespace Tessaron
{

class BurnDevice;
class DRStorageReport;
struct TableOfContents;

// Keys of a burn's status, and the values' types.
TESSARON_EXPORT extern const QString DRStatusStateKey; ///< QString, one of the states below
TESSARON_EXPORT extern const QString DRStatusPercentCompleteKey; ///< double, 0 to 1, of the current state
TESSARON_EXPORT extern const QString DRErrorStatusKey; ///< QVariantMap with the three keys below, in state failed
TESSARON_EXPORT extern const QString DRErrorStatusErrorKey; ///< qint32, the status code
TESSARON_EXPORT extern const QString DRErrorStatusErrorStringKey; ///< QString, the code's general meaning
TESSARON_EXPORT extern const QString DRErrorStatusErrorInfoStringKey; ///< QString, what happened, with the file's path

// The states, in this order; Done and Failed are final.
TESSARON_EXPORT extern const QString DRStatusStatePreparing;
TESSARON_EXPORT extern const QString DRStatusStateTrackWrite;
TESSARON_EXPORT extern const QString DRStatusStateDone;
TESSARON_EXPORT extern const QString DRStatusStateFailed;

/// Posted for a burn whenever its status has changed; its object is the burn.
TESSARON_EXPORT extern const QString DRBurnStatusChangedNotification;

/// Status code of a burn that was aborted.
inline constexpr std::int32_t kDRUserCanceledErr = -2147352474; // 0x80020066

/// How far a burn has come, for an honest progress display.
struct DRBurnAmounts {
    std::uint64_t bytesWritten = 0; ///< consumed by the device so far
    std::uint64_t bytesTotal = 0; ///< exact size of all that will be written; 0 while preparing
    std::uint32_t filesTotal = 0; ///< files on the disc; 0 while preparing
    std::uint32_t foldersTotal = 0; ///< folders on the disc, the root not counted
};

/// Makes a disc: turns a layout into blocks on a thread of its own and hands them to the device. Serves one layout.
/// Destroying a running burn aborts it and waits for its thread; no notification follows then.
///
/// All operations may be called from the thread that made the burn; abort(), status() and amounts() from any.
class TESSARON_EXPORT DRBurn
{
public:
    /// Null for a null device.
    [[nodiscard]] static std::shared_ptr<DRBurn> burnForDevice(const std::shared_ptr<BurnDevice> &device);
    ~DRBurn();

    /// Starts; the status is posted to the notification centre of the calling thread's run loop. Does nothing when the
    /// burn was started before. A null or empty layout fails with a status that says so.
    void writeLayout(const DRLayout &layout);

    /// Asks the burn to stop; it ends in state failed with code kDRUserCanceledErr unless it was already over.
    void abort();

    /// Returns when the burn's thread has ended; at once when it was never started. Not to be called by the burn's own
    /// thread.
    void waitUntilFinished();

    /// The status as it is now; while the observers of a notification are called, as it was when that was posted, so
    /// that they see every state in its order. Empty before the start.
    [[nodiscard]] QVariantMap status() const;
    [[nodiscard]] DRBurnAmounts amounts() const;
    /// Why the burn has failed, with all that DRErrorStatusKey tells in one text; the null error before it has.
    [[nodiscard]] NSError error() const;

    /// What the disc's filesystems cannot hold as it stands; null until the burn has been prepared. Stays valid on its
    /// own.
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const;

    /// What the disc consists of, as it will be written; null until the burn has been prepared. Stays valid on its own.
    [[nodiscard]] std::shared_ptr<const TableOfContents> tableOfContents() const;

private:
    class Private;
    DRBurn();
    const std::unique_ptr<Private> d;
};

} // namespace Tessaron
