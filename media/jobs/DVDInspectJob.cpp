#include "imaging/jobs/OneStepWork.h"
#include "media/jobs/VideoFolderCheck.h"
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
        Result<std::vector<DVDFileProblem>> problems = problemsOfVideoFolder(path, stop);
        const NSError failure = problems.error();
        if (!failure)
            result.problems = *std::move(problems);
        Result<DVDDescription> disc = describeDVD(path, stop);
        if (!disc)
            return discJobError(DiscJobErrorCode::Source, disc.error().localizedDescription(),
                                disc.error().localizedRecoverySuggestion(), path, disc.error().code());
        result.disc = *std::move(disc);
        if (failure)
            result.problems = {
                {"VIDEO_TS", QStringLiteral("cannot be checked: %1").arg(failure.localizedFailureReason())}};
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
