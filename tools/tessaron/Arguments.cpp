#include "tools/tessaron/Arguments.h"

#include "tools/tessaron/ArgumentRules.h"
#include "tools/tessaron/OptionParser.h"
#include "tools/tessaron/Text.h"

namespace Tessaron::Tool
{

namespace
{

/// Also for a command line that makes no sense: a program that asked for JSON gets JSON.
bool asksForJson(const QList<QByteArray> &words)
{
    return words.mid(0, words.indexOf("--")).contains("--json");
}

Arguments withUsageError(Arguments arguments, const QList<QByteArray> &words, const QString &message)
{
    arguments.json = asksForJson(words);
    arguments.action = Arguments::Action::ReportUsageError;
    arguments.usageError = message;
    return arguments;
}

/// The command's name and what stands before it.
bool isCommand(const QByteArray &word)
{
    return word == "scan" || word == "image" || word == "audio" || word == "inspect" || word == "verify"
        || word == "tracks" || word == "extract" || word == "convert" || word == "info" || word == "dvd"
        || word == "burn" || word == "blank" || word == "drives";
}

/// "help" and "help COMMAND".
Arguments helpAbout(const QList<QByteArray> &words)
{
    Arguments result;
    if (words.size() > 1)
        return withUsageError(result, words, QStringLiteral("help is about one command at a time"));
    const bool isAboutAll = words.isEmpty() || words.first() == "help";
    if (!isAboutAll && !isCommand(words.first()))
        return withUsageError(result, words, QStringLiteral("there is no command %1").arg(quoted(words.first())));
    result.action = Arguments::Action::ShowHelp;
    result.command = isAboutAll ? QByteArray() : words.first();
    return result;
}

} // namespace

Arguments parseArguments(const QList<QByteArray> &words)
{
    Arguments result;
    if (words.isEmpty())
        return withUsageError(result, words, QStringLiteral("no command was given"));
    QList<QByteArray> rest = words;
    if (words.first() == "help")
        return helpAbout(words.mid(1));
    if (isCommand(words.first()))
        result.command = rest.takeFirst();
    else if (!words.first().startsWith('-'))
        return withUsageError(result, words, QStringLiteral("there is no command %1").arg(quoted(words.first())));

    OptionParser parser(rest, result);
    if (!parser.parse())
        return withUsageError(result, words, result.usageError);
    if (parser.named().wantsHelp || parser.named().wantsVersion) {
        result.action = parser.named().wantsHelp ? Arguments::Action::ShowHelp : Arguments::Action::ShowVersion;
        return result;
    }
    if (result.command.isEmpty())
        return withUsageError(result, words, QStringLiteral("no command was given"));
    const QString error = checkCommand(result, parser.named());
    return error.isEmpty() ? result : withUsageError(result, words, error);
}

} // namespace Tessaron::Tool
