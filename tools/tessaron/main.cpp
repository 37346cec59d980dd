#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/AudioCommand.h"
#include "tools/tessaron/BlankCommand.h"
#include "tools/tessaron/BurnCommand.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/ConvertCommand.h"
#include "tools/tessaron/DVDCommand.h"
#include "tools/tessaron/DrivesCommand.h"
#include "tools/tessaron/ExtractCommand.h"
#include "tools/tessaron/ExtractFilesCommand.h"
#include "tools/tessaron/ImageCommand.h"
#include "tools/tessaron/ImageReport.h"
#include "tools/tessaron/InfoCommand.h"
#include "tools/tessaron/InspectCommand.h"
#include "tools/tessaron/PlayCommand.h"
#include "tools/tessaron/ScanCommand.h"
#include "tools/tessaron/SplitCommand.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/TracksCommand.h"
#include "tools/tessaron/VerifyCommand.h"

#include <QCoreApplication>

#include <cerrno>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Tool;

namespace
{

ExitStatus printToStandardOutput(const QByteArray &text)
{
    if (writeAll(STDOUT_FILENO, text))
        return ExitStatus::Done;
    printDiagnostic(QStringLiteral("standard output cannot be written: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

ExitStatus reportUsageError(const Arguments &arguments)
{
    printDiagnostic(arguments.usageError);
    const QString help = arguments.command.isEmpty()
        ? QStringLiteral("tessaron --help")
        : QStringLiteral("tessaron %1 --help").arg(QString::fromLatin1(arguments.command));
    printDiagnostic(QStringLiteral("Try '%1'.").arg(help));
    if (arguments.json && !writeUsageErrorJson(arguments))
        return ExitStatus::Failed;
    return ExitStatus::WrongUsage;
}

ExitStatus run(const Arguments &arguments)
{
    switch (arguments.action) {
    case Arguments::Action::ShowHelp:
        return printToStandardOutput(helpText(arguments.command));
    case Arguments::Action::ShowVersion:
        return printToStandardOutput("tessaron " TESSARON_VERSION "\n");
    case Arguments::Action::Scan:
        return ScanCommand(arguments).run();
    case Arguments::Action::MakeImage:
        return ImageCommand(arguments).run();
    case Arguments::Action::SplitImage:
        return SplitCommand(arguments).run();
    case Arguments::Action::MakeAudioImage:
        return AudioCommand(arguments).run();
    case Arguments::Action::Inspect:
        return InspectCommand(arguments).run();
    case Arguments::Action::Verify:
        return VerifyCommand(arguments).run();
    case Arguments::Action::Tracks:
        return TracksCommand(arguments).run();
    case Arguments::Action::Extract:
        return ExtractCommand(arguments).run();
    case Arguments::Action::ExtractFiles:
        return ExtractFilesCommand(arguments).run();
    case Arguments::Action::Convert:
        return ConvertCommand(arguments).run();
    case Arguments::Action::Info:
        return InfoCommand(arguments).run();
    case Arguments::Action::DescribeDVD:
        return DVDCommand(arguments).run();
    case Arguments::Action::PlayDVD:
        return PlayCommand(arguments).run();
    case Arguments::Action::BurnDisc:
        return BurnCommand(arguments).run();
    case Arguments::Action::BlankDisc:
        return BlankCommand(arguments).run();
    case Arguments::Action::ListDrives:
        return DrivesCommand(arguments).run();
    case Arguments::Action::ReportUsageError:
        break;
    }
    return reportUsageError(arguments);
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    // Taken before Qt sees them, which would make text of them: a path is bytes.
    QList<QByteArray> words;
    for (int index = 1; index < argc; ++index)
        words.append(QByteArray(argv[index]));
    const Arguments arguments = parseArguments(words);
    int onlyName = argc > 0 ? 1 : 0; // Qt has options of its own, which are not ours
    const QCoreApplication application(onlyName, argv);
    return int(run(arguments));
}
