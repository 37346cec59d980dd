#include "platform/discrecording/objects/DRMSF.h"

namespace Tessaron
{

QString DRMSF::description() const
{
    return msf().text();
}

} // namespace Tessaron
