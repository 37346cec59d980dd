#pragma once

#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace Tessaron
{

/// How a disc is made empty.
enum class DiscBlanking : std::uint8_t {
    Quick, ///< what says where things are; a minute
    Full, ///< everything; as long as writing it
    Format, ///< for overwriting: DVD-RW, and DVD+RW, DVD-RAM and BD-RE anew
};

struct BlankDiscOrder {
    QByteArray drive = {}; ///< as in BurnDiscOrder
    DiscBlanking blanking = DiscBlanking::Quick;
    bool ejects = false;
};

struct BlankDiscResult {
    NSError error; ///< null when the disc is empty, or formatted
    DiscDescription before; ///< as the disc was found
    DiscDescription after;
    QString driveName; ///< for people
    QString fault; ///< as that of BurnDiscResult
    QString condition; ///< as that of BurnDiscResult, after an error; empty where nothing was begun
    QStringList notes; ///< that the disc could not be put out
};

/// Makes a disc empty: what was on it is lost. See DiscJob for threads and lifetime. A drive cannot be stopped at that:
/// a cancel comes too late once it has begun.
class TESSARON_EXPORT BlankDiscJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit BlankDiscJob(BlankDiscOrder order, QObject *parent = nullptr);
    ~BlankDiscJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const BlankDiscResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::BlankDiscResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::BlankDiscResult)
