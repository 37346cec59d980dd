#include "app/AbandonedJob.h"

#include <QSet>

namespace Tessaron::Desktop
{

void rememberUntilGone(QObject *object)
{
    // Never destroyed: at the end of the program a job may still wait for the system.
    static auto *const objects = new QSet<QObject *>;
    objects->insert(object);
    QObject::connect(object, &QObject::destroyed, [object] { objects->remove(object); });
}

} // namespace Tessaron::Desktop
