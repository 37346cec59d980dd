#include "imaging/jobs/DiscJobWork.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/TracksJob.h>

namespace Tessaron
{

class TracksJob::Work final : public DiscJobWork
{
public:
    explicit Work(QByteArray imagePath)
        : path(std::move(imagePath))
    {
    }

    void begin() override
    {
        runInBackground(
            [this](const std::stop_token &stop) {
                Result<DescribedDisc> disc = describedDisc(path, stop);
                if (stop.stop_requested())
                    return discJobCancellation();
                if (!disc)
                    return disc.error();
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
    TracksResult result; ///< the worker's until the job has ended
};

TracksJob::TracksJob(QByteArray path, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(path)), parent)
{
}

TracksJob::~TracksJob() = default;

const TracksResult &TracksJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void TracksJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
