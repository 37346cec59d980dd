#pragma once

#include "app/DesktopPanel.h"

namespace Tessaron
{
struct AudioConvertResult;
struct AudioImageResult;
struct BurnDiscResult;
struct DiscImageResult;
struct ExtractFilesResult;
struct ExtractResult;
struct VerificationResult;
} // namespace Tessaron

namespace Tessaron::Desktop
{

// What the results of jobs mean for people: never a loss or a change less than the result has.

/// `missing`: paths on the disc of files that were to be on it and cannot be found.
[[nodiscard]] JobOutcome outcomeOf(const DiscImageResult &result, const QStringList &missing);
[[nodiscard]] JobOutcome outcomeOf(const VerificationResult &result);
[[nodiscard]] JobOutcome outcomeOf(const AudioImageResult &result);
[[nodiscard]] JobOutcome outcomeOf(const AudioConvertResult &result);
[[nodiscard]] JobOutcome outcomeOf(const ExtractResult &result);
[[nodiscard]] JobOutcome outcomeOf(const ExtractFilesResult &result);
[[nodiscard]] JobOutcome outcomeOf(const BurnDiscResult &result, bool isSimulated, const QStringList &missing);

} // namespace Tessaron::Desktop
