#include "imaging/jobs/OneStepWork.h"
#include <TessaronClasses/DVDInspectJob.h>
#include <TessaronClasses/DiscJobErrors.h>

namespace Tessaron
{

class DVDInspectJob::Work final : public OneStepWork<DVDInspectResult>
{
public:
    explicit Work(QByteArray discPath)
        : path(std::move(discPath))
    {
    }

private:
    NSError run(const std::stop_token &stop) override
    {
        Result<DVDDescription> disc = describeDVD(path, stop);
        if (!disc)
            return discJobError(DiscJobErrorCode::Source, disc.error().localizedDescription(),
                                disc.error().localizedRecoverySuggestion(), path, disc.error().code());
        result.disc = *std::move(disc);
        return {};
    }

    const QByteArray path;
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
