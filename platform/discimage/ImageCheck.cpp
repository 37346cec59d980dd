#include "platform/discimage/ImageCheck.h"

#include "platform/discimage/ContentsCheck.h"
#include "platform/discimage/SectorCheck.h"
#include "platform/discimage/hfsplus/HfsPlusVolumeCheck.h"
#include "platform/discimage/iso9660/IsoVolumeCheck.h"
#include "platform/discimage/udf/UdfVolumeCheck.h"

namespace Tessaron
{

namespace
{

void checkTrailer(const DiscImageSource &source, VolumeProblemReport &report)
{
    const NSError &error = source.vantError();
    if (!error)
        return;
    VolumeProblem problem;
    // An image of a later version may be sound.
    if (error.domain() == VANTErrorDomain && error.code() == qint64(VANTErrorCode::UnknownVersion))
        problem.kind = VolumeProblem::Kind::Unsupported;
    problem.offset = error.userInfo().value(VANTErrorOffsetKey).toULongLong();
    problem.structure = QStringLiteral("description of a VANT image");
    problem.message = error.userInfo().value(VANTErrorReasonKey).toString();
    if (problem.message.isEmpty())
        problem.message = error.localizedFailureReason();
    report.add(problem);
}

void checkPartitionTables(const DiscImageSource &source, VolumeProblemReport &report)
{
    (void)readPartitionTables(source, [&report](const PartitionTableProblem &found) {
        VolumeProblem problem;
        problem.kind = found.isRemains ? VolumeProblem::Kind::Remains : VolumeProblem::Kind::Damaged;
        problem.offset = found.offset;
        problem.structure = found.structure;
        problem.message = found.message;
        report.add(problem);
    });
}

} // namespace

std::uint64_t checkDiscImage(const std::shared_ptr<const DiscImageSource> &source, const VolumeProblemVisitor &visitor,
                             const std::stop_token &stop)
{
    VolumeProblemReport report(visitor, stop);
    checkTrailer(*source, report);
    checkPartitionTables(*source, report);
    if (!report.isStopped())
        checkSectors(*source, report);
    if (!report.isStopped())
        checkIsoVolumes(*source, report);
    if (!report.isStopped())
        checkUdfVolume(source, report);
    if (!report.isStopped())
        checkHfsPlusVolume(*source, report);
    if (!report.isStopped())
        checkContentsRecords(source, report);
    return report.count();
}

std::uint64_t checkDiscImagePart(const std::shared_ptr<const DiscImageSource> &source, const QString &name,
                                 const VolumeProblemVisitor &visitor, const std::stop_token &stop)
{
    const auto withName = [&](VolumeProblem problem) {
        problem.part = name;
        return visitor(problem);
    };
    return checkDiscImage(source, withName, stop);
}

QString volumeProblemText(const VolumeProblem &problem)
{
    QString place = problem.part.isEmpty() ? QString() : problem.part + QStringLiteral(", ");
    if (problem.volume)
        place += volumeKindName(*problem.volume) + QStringLiteral(", ");
    place += problem.structure;
    return QStringLiteral("%1: %2 (at byte %3)").arg(place, problem.message).arg(problem.offset);
}

} // namespace Tessaron
