#include "platform/disctracks/CueSheetErrors.h"

#include "platform/disctracks/TableOfContents.h"

namespace Tessaron
{

NSError cueSheetError(std::uint32_t line, const QString &reason, const QString &remedy)
{
    const QString place = line > 0 ? QStringLiteral("Line %1 of the cue sheet: ").arg(line) : QString();
    return NSError(
        DiscTracksErrorDomain, int(DiscTracksErrorCode::CueSheet),
        {{NSLocalizedFailureReasonErrorKey, place + reason}, {NSLocalizedRecoverySuggestionErrorKey, remedy}});
}

} // namespace Tessaron
