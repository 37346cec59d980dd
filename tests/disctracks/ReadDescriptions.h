#pragma once

#include "platform/disctracks/CueSheet.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// What is wrong with a description of tracks that was read, as its readers say it; "none" where nothing is.
std::string errorOf(const Result<CueSheet> &sheet);

/// A track that has to be there.
const DiscTrack &track(const CueSheet &sheet, std::uint32_t number);

/// A list to compare with.
std::vector<CueRun> runs(std::initializer_list<CueRun> list);

} // namespace Tessaron::Testing
