#include "platform/disctracks/CueSheetErrors.h"

#include "platform/disctracks/TableOfContents.h"

namespace Tessaron
{

namespace
{

NSError descriptionError(const QString &what, std::uint32_t line, const QString &reason, const QString &remedy)
{
    const QString place = line > 0 ? QStringLiteral("Line %1 of %2: ").arg(line).arg(what) : QString();
    return NSError(
        DiscTracksErrorDomain, int(DiscTracksErrorCode::CueSheet),
        {{NSLocalizedFailureReasonErrorKey, place + reason}, {NSLocalizedRecoverySuggestionErrorKey, remedy}});
}

} // namespace

NSError cueSheetError(std::uint32_t line, const QString &reason, const QString &remedy)
{
    return descriptionError(QStringLiteral("the cue sheet"), line, reason, remedy);
}

NSError cloneCDError(std::uint32_t line, const QString &reason, const QString &remedy)
{
    return descriptionError(QStringLiteral("the .ccd file"), line, reason, remedy);
}

NSError cdrdaoError(std::uint32_t line, const QString &reason, const QString &remedy)
{
    return descriptionError(QStringLiteral("the .toc file"), line, reason, remedy);
}

NSError cdrdaoError(std::uint32_t line, const QString &reason)
{
    return cdrdaoError(line, reason, QStringLiteral("Correct the line, as the manual of cdrdao says."));
}

} // namespace Tessaron
