#include "platform/discrecording/objects/DRMSF.h"

namespace Tessaron
{

QString DRMSF::description() const
{
    constexpr QChar zero = u'0';
    return QStringLiteral("%1:%2:%3")
        .arg(minutes(), 2, 10, zero)
        .arg(seconds(), 2, 10, zero)
        .arg(frames(), 2, 10, zero);
}

} // namespace Tessaron
