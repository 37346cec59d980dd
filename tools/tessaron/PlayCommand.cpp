#include "tools/tessaron/PlayCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/NSBundle.h"
#include "tools/tessaron/StandardStreams.h"

#include <cerrno>
#include <unistd.h>
#include <vector>

namespace Tessaron::Tool
{

PlayCommand::PlayCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

ExitStatus PlayCommand::run()
{
    const QByteArray program =
        fileSystemRepresentation(NSBundle::frameworkBundle()->pathForResource(QStringLiteral("TessaronDVDWindow")));
    if (program.isEmpty()) {
        printDiagnostic(
            QStringLiteral("the player is not installed; it comes with the library for programs with windows"));
        return ExitStatus::Failed;
    }
    QList<QByteArray> words = {program};
    if (m_arguments.title != 0 || m_arguments.chapter != 0)
        words << "--title" << QByteArray::number(m_arguments.title != 0 ? m_arguments.title : 1);
    if (m_arguments.chapter != 0)
        words << "--chapter" << QByteArray::number(m_arguments.chapter);
    words << "--" << m_arguments.paths.first();
    std::vector<char *> arguments;
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ::execv(program.constData(), arguments.data());
    printDiagnostic(QStringLiteral("the player %1 cannot be started: %2").arg(quoted(program), systemText(errno)));
    return ExitStatus::Failed;
}

} // namespace Tessaron::Tool
