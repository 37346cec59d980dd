#include "platform/quicktime/redbook/ToolMessages.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <QByteArray>

#include <cstdio>
#include <unistd.h>

namespace Tessaron
{

void ToolMessages::say(const QString &text) const
{
    const QByteArray line = QByteArray(m_program) + ": " + text.toUtf8() + '\n';
    std::fputs(line.constData(), stderr);
}

int ToolMessages::statusAfter(const NSError &error) const
{
    say(displayableText(error.localizedDescription()));
    return ToolStatus::failed;
}

int ToolMessages::statusAfter(const AudioDamageReport &damage) const
{
    for (const AudioDamage &place : damage.places)
        say(QStringLiteral("at %1 s: %2").arg(place.seconds, 0, 'f', 3).arg(place.what));
    if (damage.count > damage.places.size())
        say(QStringLiteral("and %1 more places like these").arg(damage.count - damage.places.size()));
    return damage.isEmpty() ? ToolStatus::written : ToolStatus::writtenWithDamage;
}

void endTool(int status)
{
    std::fflush(nullptr);
    ::_exit(status);
}

} // namespace Tessaron
