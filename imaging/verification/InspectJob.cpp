#include "imaging/jobs/OneStepWork.h"
#include <TessaronClasses/InspectJob.h>

#include <atomic>

namespace Tessaron
{

class InspectJob::Work final : public OneStepWork<ImageInspection>
{
public:
    explicit Work(QByteArray imagePath)
        : path(std::move(imagePath))
    {
    }

    [[nodiscard]] DiscJobProgress progress() const override
    {
        DiscJobProgress progress;
        progress.phase = phase;
        return progress;
    }

private:
    NSError run(const std::stop_token &stop) override
    {
        Result<OpenedDiscImage> opened = openDiscImage(path);
        if (!opened)
            return opened.error();
        result.image = std::make_shared<const OpenedDiscImage>(std::move(*opened));
        phase = DiscJobPhase::Scanning;
        for (const FoundVolume &volume : result.image->volumes)
            result.censuses.push_back(volume.reader ? censusOf(*volume.reader, stop) : VolumeCensus());
        for (const DiscImagePart &part : result.image->parts) {
            std::vector<VolumeCensus> &censuses = result.partCensuses.emplace_back();
            for (const FoundVolume &volume : part.volumes)
                censuses.push_back(volume.reader ? censusOf(*volume.reader, stop) : VolumeCensus());
        }
        check(stop);
        return {};
    }

    void check(const std::stop_token &stop)
    {
        constexpr std::size_t keptProblems = 100;
        result.bootCatalog = readBootCatalog(*result.image->source);
        const auto keep = [this](const VolumeProblem &problem) {
            result.unsupportedCount += problem.kind == VolumeProblem::Kind::Unsupported ? 1 : 0;
            if (result.problems.size() < keptProblems)
                result.problems.push_back(problem);
            return true;
        };
        result.problemCount = checkDiscImage(result.image->source, keep, stop);
        for (const DiscImagePart &part : result.image->parts) {
            if (part.source)
                result.problemCount += checkDiscImagePart(part.source, part.name, keep, stop);
        }
    }

    const QByteArray path;
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
};

InspectJob::InspectJob(QByteArray path, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(path)), parent)
{
}

InspectJob::~InspectJob() = default;

const ImageInspection &InspectJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void InspectJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
