#pragma once

#include "platform/foundation/Export.h"

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// One event of the DVD session on its way from the session's thread to the main thread. Never changes; on any thread.
class TESSARON_EXPORT DVDEvent
{
public:
    /// The event's code, a DVDEventCode, and its two values. Never null.
    [[nodiscard]] static std::shared_ptr<const DVDEvent> initWithData(std::uint32_t data, std::uint32_t data1,
                                                                      std::uint32_t data2);

    [[nodiscard]] std::uint32_t eventCode() const { return m_eventCode; }
    [[nodiscard]] std::uint32_t eventData1() const { return m_eventData1; }
    [[nodiscard]] std::uint32_t eventData2() const { return m_eventData2; }

private:
    DVDEvent(std::uint32_t data, std::uint32_t data1, std::uint32_t data2);

    const std::uint32_t m_eventCode;
    const std::uint32_t m_eventData1;
    const std::uint32_t m_eventData2;
};

} // namespace Tessaron
