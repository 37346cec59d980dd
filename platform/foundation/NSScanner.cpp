#include "platform/foundation/NSScanner.h"

#include <algorithm>
#include <limits>

namespace Tessaron
{

namespace
{

bool isWhiteSpaceOrLineEnd(QChar character)
{
    return character.isSpace();
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

} // namespace

NSScanner::NSScanner(const QString &string)
    : m_string(string)
    , m_skipped(isWhiteSpaceOrLineEnd)
{
}

void NSScanner::setScanLocation(qsizetype location)
{
    m_location = std::clamp<qsizetype>(location, 0, m_string.size());
}

qsizetype NSScanner::locationAfterSkipping() const
{
    qsizetype location = m_location;
    while (m_skipped && location < m_string.size() && m_skipped(m_string[location]))
        ++location;
    return location;
}

bool NSScanner::isAtEnd() const
{
    return locationAfterSkipping() >= m_string.size();
}

bool NSScanner::scanCharactersFromSet(const CharacterTest &set, QString *result)
{
    const qsizetype start = locationAfterSkipping();
    qsizetype end = start;
    while (end < m_string.size() && set(m_string[end]))
        ++end;
    if (end == start)
        return false;
    if (result)
        *result = m_string.mid(start, end - start);
    m_location = end;
    return true;
}

bool NSScanner::scanUpToCharactersFromSet(const CharacterTest &set, QString *result)
{
    return scanCharactersFromSet([&set](QChar character) { return !set(character); }, result);
}

bool NSScanner::scanLiteral(const QString &text)
{
    const qsizetype start = locationAfterSkipping();
    if (text.isEmpty() || !QStringView(m_string).mid(start).startsWith(text))
        return false;
    m_location = start + text.size();
    return true;
}

bool NSScanner::scanInt(int *result)
{
    qsizetype at = locationAfterSkipping();
    const bool isNegative = at < m_string.size() && m_string[at] == u'-';
    if (at < m_string.size() && (m_string[at] == u'-' || m_string[at] == u'+'))
        ++at;
    if (at >= m_string.size() || !isDigit(m_string[at]))
        return false;
    constexpr qint64 limit = qint64(std::numeric_limits<int>::max()) + 1;
    qint64 value = 0;
    for (; at < m_string.size() && isDigit(m_string[at]); ++at)
        value = std::min(limit, value * 10 + m_string[at].digitValue());
    if (result)
        *result = int(isNegative ? -value : std::min(value, limit - 1));
    m_location = at;
    return true;
}

} // namespace Tessaron
