#include "platform/dvdplayback/player/LibraryLog.h"

#include <array>
#include <cstdio>

namespace Tessaron
{

void LibraryLog::add(const char *format, std::va_list arguments)
{
    std::array<char, 512> line;
    if (std::vsnprintf(line.data(), line.size(), format, arguments) > 0)
        m_lastLine = QString::fromUtf8(line.data()).trimmed();
}

} // namespace Tessaron
