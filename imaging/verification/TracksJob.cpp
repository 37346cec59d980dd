#include "imaging/jobs/OneStepWork.h"
#include <TessaronClasses/TracksJob.h>

namespace Tessaron
{

class TracksJob::Work final : public OneStepWork<TracksResult>
{
public:
    explicit Work(QByteArray imagePath)
        : path(std::move(imagePath))
    {
    }

private:
    NSError run(const std::stop_token &stop) override
    {
        Result<DescribedDisc> disc = describedDisc(path, stop);
        if (!disc)
            return disc.error();
        result.disc = *std::move(disc);
        return {};
    }

    const QByteArray path;
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
