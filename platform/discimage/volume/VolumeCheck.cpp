#include "platform/discimage/volume/VolumeCheck.h"

#include "platform/discimage/source/DiscImageErrors.h"

namespace Tessaron
{

namespace
{

VolumeProblem::Kind kindOf(const NSError &error)
{
    if (error.domain() != DiscImageErrorDomain)
        return VolumeProblem::Kind::Damaged;
    switch (DiscImageErrorCode(error.code())) {
    case DiscImageErrorCode::Truncated:
        return VolumeProblem::Kind::Truncated;
    case DiscImageErrorCode::Unsupported:
        return VolumeProblem::Kind::Unsupported;
    case DiscImageErrorCode::Damaged:
    case DiscImageErrorCode::Loop:
        break;
    }
    return VolumeProblem::Kind::Damaged;
}

} // namespace

void VolumeProblemReport::add(const VolumeProblem &problem)
{
    if (isStopped())
        return;
    ++m_count;
    m_isStopped = !m_visitor(problem);
}

void VolumeProblemReport::addError(VolumeKind volume, const QString &structure, const NSError &error)
{
    VolumeProblem problem;
    problem.kind = kindOf(error);
    problem.volume = volume;
    problem.offset = error.userInfo().value(DiscImageErrorOffsetKey).toULongLong();
    problem.structure = structure;
    problem.message = error.userInfo().value(DiscImageErrorReasonKey).toString();
    if (problem.message.isEmpty())
        problem.message = error.localizedFailureReason();
    add(problem);
}

} // namespace Tessaron
