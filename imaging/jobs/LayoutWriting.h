#pragma once

#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>

#include <functional>
#include <memory>

namespace Tessaron
{

class BurnDevice;
class DRStorageReport;
struct TableOfContents;

/// The writing of one layout, wherever it goes, for a job. On the main thread, with an event loop. Destroying one that
/// runs cancels it and waits.
class LayoutWriting
{
public:
    LayoutWriting() = default;
    LayoutWriting(const LayoutWriting &) = delete;
    LayoutWriting &operator=(const LayoutWriting &) = delete;
    virtual ~LayoutWriting() = default;

    /// What becomes known while it runs.
    struct Listener {
        std::function<void()> progressed;
        /// Called once, with an error of DiscJobErrorDomain or the null error.
        std::function<void(const NSError &)> ended;
    };

    /// The error says why it cannot begin; nothing is heard then.
    [[nodiscard]] virtual NSError start(const Listener &listener) = 0;
    virtual void cancel() = 0;
    /// The plan, whose amounts and report are there, is as wanted: only from now on may anything be written that cannot
    /// be taken back. Once is enough.
    virtual void approvePlan() { }

    [[nodiscard]] virtual DRBurnAmounts amounts() const = 0;
    [[nodiscard]] virtual std::shared_ptr<const DRStorageReport> storageReport() const = 0;
    [[nodiscard]] virtual std::shared_ptr<const TableOfContents> tableOfContents() const = 0;
};

/// Into an existing empty file, which is removed after a failure. Errors call it `finalPath`.
[[nodiscard]] std::unique_ptr<LayoutWriting> writingIntoFile(const DRLayout &layout, const QByteArray &path,
                                                             const QByteArray &finalPath, bool waitsForDisk);

/// To a device, once the plan is approved.
[[nodiscard]] std::unique_ptr<LayoutWriting> writingToDevice(const DRLayout &layout,
                                                             std::shared_ptr<BurnDevice> device);

/// The job's error for a burn that ended with this one: Cancelled for an aborted one, Space for a full disc, else
/// Write. Its user information is kept.
[[nodiscard]] NSError jobErrorOfBurn(const NSError &error);

} // namespace Tessaron
