#pragma once

#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QList>

#include <optional>
#include <vector>

namespace Tessaron
{

/// Which drives are to be told about.
struct DrivesOrder {
    /// Drives to open and to ask about their discs; empty for a list of all that there are.
    QList<QByteArray> drives = {};
    bool opensAll = false; ///< opens each drive of that list, too; without it none is touched
};

/// What is known of one drive.
struct DriveFacts {
    DriveDescription drive;
    std::optional<DiscDescription> disc; ///< where the drive was opened
    NSError error; ///< why it could not be opened
};

struct DrivesResult {
    NSError error; ///< of code Cancelled; else that of the first drive that could not be opened
    std::vector<DriveFacts> drives;
};

/// Lists optical drives and tells what is in them. See DiscJob for threads and lifetime. Opening a drive takes its tray
/// in and may take a minute; the drive is let go at once.
class TESSARON_EXPORT DrivesJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit DrivesJob(DrivesOrder order, QObject *parent = nullptr);
    ~DrivesJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const DrivesResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::DrivesResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::DrivesResult)
