#include <TessaronClassesUI/DVDEvent.h>

namespace Tessaron
{

DVDEvent::DVDEvent(std::uint32_t data, std::uint32_t data1, std::uint32_t data2)
    : m_eventCode(data)
    , m_eventData1(data1)
    , m_eventData2(data2)
{
}

std::shared_ptr<const DVDEvent> DVDEvent::initWithData(std::uint32_t data, std::uint32_t data1, std::uint32_t data2)
{
    return std::shared_ptr<const DVDEvent>(new DVDEvent(data, data1, data2));
}

} // namespace Tessaron
