#include "tests/disctracks/ReadDescriptions.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

std::string errorOf(const Result<CueSheet> &sheet)
{
    if (sheet)
        return "none";
    EXPECT_EQ(sheet.error().domain(), DiscTracksErrorDomain);
    EXPECT_FALSE(sheet.error().localizedRecoverySuggestion().isEmpty());
    return sheet.error().localizedFailureReason().toStdString();
}

const DiscTrack &track(const CueSheet &sheet, std::uint32_t number)
{
    static const DiscTrack none;
    const DiscTrack *const found = sheet.contents.track(number);
    EXPECT_TRUE(found) << number;
    return found ? *found : none;
}

std::vector<CueRun> runs(std::initializer_list<CueRun> list)
{
    return list;
}

} // namespace Tessaron::Testing
