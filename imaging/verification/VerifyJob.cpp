#include "imaging/jobs/OneStepWork.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/OpenedDiscImage.h>
#include <TessaronClasses/VerifyJob.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace Tessaron
{

class VerifyJob::Work final : public OneStepWork<VerificationResult>
{
public:
    explicit Work(VerifyOrder verifyOrder)
        : order(std::move(verifyOrder))
    {
    }

    [[nodiscard]] DiscJobProgress progress() const override
    {
        const std::lock_guard lock(mutex);
        return told;
    }

private:
    NSError run(const std::stop_token &stop) override;
    NSError prepare(VerificationRequest *request) const;
    NSError findSources(VerificationRequest *request) const;

    const VerifyOrder order;
    mutable std::mutex mutex;
    DiscJobProgress told; ///< guarded by `mutex`
};

NSError VerifyJob::Work::prepare(VerificationRequest *request) const
{
    Result<OpenedDiscImage> opened = openDiscImage(order.image);
    if (!opened)
        return opened.error();
    const auto hasVolumes = [](const DiscImagePart &part) { return !part.volumes.empty(); };
    const auto compared = opened->volumes.empty() ? std::find_if(opened->parts.begin(), opened->parts.end(), hasVolumes)
                                                  : opened->parts.end();
    if (compared != opened->parts.end()) {
        // The image itself has none: the first part that has some is what was made of the sources.
        DiscImagePart whole;
        whole.source = std::exchange(opened->source, compared->source);
        std::swap(opened->volumes, compared->volumes);
        request->part = compared->name;
        *compared = std::move(whole);
    }
    if (opened->volumes.empty() && !order.filesystems)
        return discJobError(DiscJobErrorCode::Source,
                            QStringLiteral("no filesystem was found in %1").arg(quoted(order.image)),
                            QStringLiteral("Known are ISO 9660, Rock Ridge, Joliet, UDF and HFS+."), order.image);
    if (NSError error = order.tree ? NSError() : findSources(request))
        return error;
    request->tree = order.tree;
    request->image = opened->source;
    request->volumes = std::move(opened->volumes);
    request->filesystems = order.filesystems;
    request->checkedOnly = std::move(opened->parts);
    return {};
}

NSError VerifyJob::Work::findSources(VerificationRequest *request) const
{
    Result<std::vector<DiscSource>> sources = discSourcesAtPaths(order.sources);
    if (!sources)
        return sources.error();
    if (NSError error = errorOfSourcesSideBySide(*sources))
        return error;
    request->sources = std::move(*sources);
    return {};
}

NSError VerifyJob::Work::run(const std::stop_token &stop)
{
    VerificationRequest request;
    if (NSError error = prepare(&request))
        return error;
    result = verifyImage(request, stop, [this](const DiscJobProgress &now) {
        const std::lock_guard lock(mutex);
        told = now;
    });
    return result.error;
}

VerifyJob::VerifyJob(VerifyOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

VerifyJob::~VerifyJob() = default;

const VerificationResult &VerifyJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void VerifyJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
