#include "platform/discrecording/image/CalendarTime.h"

namespace Tessaron
{

CalendarTime calendarTime(std::int64_t seconds)
{
    using namespace std::chrono;
    std::int64_t dayNumber = seconds / secondsPerDay;
    std::int64_t rest = seconds % secondsPerDay;
    if (rest < 0) {
        rest += secondsPerDay;
        --dayNumber;
    }
    const year_month_day date{sys_days(days(dayNumber))};
    const auto second = static_cast<unsigned int>(rest);
    return {static_cast<int>(date.year()),
            static_cast<unsigned int>(date.month()),
            static_cast<unsigned int>(date.day()),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

} // namespace Tessaron
