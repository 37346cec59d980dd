#include "imaging/jobs/DiscJobWork.h"
#include <TessaronClasses/DVDInspectJob.h>
#include <TessaronClasses/DiscJobErrors.h>

namespace Tessaron
{

class DVDInspectJob::Work final : public DiscJobWork
{
public:
    explicit Work(QByteArray discPath)
        : path(std::move(discPath))
    {
    }

    void begin() override
    {
        runInBackground(
            [this](const std::stop_token &stop) {
                Result<DVDDescription> disc = describeDVD(path, stop);
                if (stop.stop_requested())
                    return discJobCancellation();
                if (!disc)
                    return discJobError(DiscJobErrorCode::Source, disc.error().localizedDescription(),
                                        disc.error().localizedRecoverySuggestion(), path, disc.error().code());
                result.disc = *std::move(disc);
                return NSError();
            },
            [this](const NSError &error) {
                result.error = error;
                end(error);
            });
    }

    [[nodiscard]] DiscJobProgress progress() const override { return {}; }

    const QByteArray path;
    DVDInspectResult result; ///< the worker's until the job has ended
};

DVDInspectJob::DVDInspectJob(QByteArray path, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(path)), parent)
{
}

DVDInspectJob::~DVDInspectJob() = default;

const DVDInspectResult &DVDInspectJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void DVDInspectJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
