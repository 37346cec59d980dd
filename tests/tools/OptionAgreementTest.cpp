#include "tests/support/RunProgram.h"
#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/OptionTable.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace Tessaron::Tool
{

namespace
{

using Options = std::set<std::string>;

QString projectFile(const char *path)
{
    QFile file(QStringLiteral(TESSARON_SOURCE_FOLDER "/") + QString::fromUtf8(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return QString::fromUtf8(file.readAll());
}

Options knownOptions(const QByteArray &command)
{
    Options result;
    for (const OptionDescription &option : allOptions()) {
        if (!knows(command, option))
            continue;
        result.insert(std::string("--") + option.longName);
        if (option.shortName != 0)
            result.insert(std::string("-") + option.shortName);
    }
    return result;
}

Options matchesIn(const QString &text, const char *pattern)
{
    Options result;
    QRegularExpressionMatchIterator matches =
        QRegularExpression(QString::fromUtf8(pattern), QRegularExpression::MultilineOption).globalMatch(text);
    while (matches.hasNext())
        result.insert(matches.next().captured(1).toStdString());
    return result;
}

TEST(OptionAgreement, helpText_namesExactlyTheOptionsOfTheCommand)
{
    for (const QByteArray command : {"", "image", "audio", "inspect", "verify", "scan", "tracks", "extract", "convert",
                                     "info", "dvd", "drives", "burn", "blank"}) {
        const QString help = QString::fromUtf8(helpText(command));
        Options inHelp = matchesIn(help, "^ {2,6}(?:-\\w, )?(--[a-z-]+)");
        inHelp.merge(matchesIn(help, "^ {2}(-\\w), "));
        EXPECT_EQ(inHelp, knownOptions(command)) << command.constData();
    }
}

TEST(OptionAgreement, helpText_fitsInEightyColumns)
{
    for (const QByteArray command : {"", "image", "audio", "inspect", "verify", "scan", "tracks", "extract", "convert",
                                     "info", "dvd", "drives", "burn", "blank"}) {
        for (const QByteArray &line : helpText(command).split('\n'))
            EXPECT_LE(QString::fromUtf8(line).size(), 80) << line.constData();
    }
}

TEST(OptionAgreement, manualPage_describesExactlyTheOptions)
{
    const QString page = projectFile("packaging/man/tessaron.1");
    Options described;
    for (const std::string &option : matchesIn(page, "^\\.It Fl -?([a-z-]+)"))
        described.insert((option.size() == 1 ? "-" : "--") + option);
    for (const std::string &option : matchesIn(page, "^\\.It Fl [a-z] , Fl -([a-z-]+)"))
        described.insert("--" + option);
    Options known = knownOptions("");
    for (const char *const command : {"image", "audio", "inspect", "verify"})
        known.merge(knownOptions(command));
    known.merge(knownOptions("scan"));
    known.merge(knownOptions("tracks"));
    known.merge(knownOptions("extract"));
    known.merge(knownOptions("info"));
    known.merge(knownOptions("dvd"));
    for (const char *const command : {"drives", "burn", "blank"})
        known.merge(knownOptions(command));
    known.merge(knownOptions("convert"));
    EXPECT_EQ(described, known);
}

TEST(OptionAgreement, synopsisOfTheManualPage_hasEachOptionOfTheCommand)
{
    const QString page = projectFile("packaging/man/tessaron.1");
    const QString synopsis = page.mid(0, page.indexOf(QStringLiteral(".Sh DESCRIPTION")));
    for (const QByteArray command :
         {"image", "audio", "inspect", "verify", "scan", "tracks", "extract", "convert", "info", "dvd"}) {
        const qsizetype from = synopsis.indexOf(QStringLiteral(".Nm\n.Cm %1\n").arg(QString::fromLatin1(command)));
        ASSERT_GE(from, 0) << command.constData();
        const QString part = synopsis.mid(from, synopsis.indexOf(QStringLiteral(".Nm\n"), from + 1) - from);
        Options named;
        for (const std::string &option : matchesIn(part, "Fl (-?[a-z-]+)"))
            named.insert('-' + option);
        if (part.contains(QStringLiteral("Fl q | v")))
            named.insert("-v");
        Options wanted;
        for (const OptionDescription &option : allOptions()) {
            const bool isShown = option.option != Option::Help && option.option != Option::Version;
            if (isShown && knows(command, option))
                wanted.insert(option.shortName != 0 ? std::string("-") + option.shortName
                                                    : std::string("--") + option.longName);
        }
        EXPECT_EQ(named, wanted) << command.constData();
    }
}

TEST(OptionAgreement, completion_offersValuesThatTheCommandTakes)
{
    const QByteArray script = TESSARON_SOURCE_FOLDER "/packaging/completions/tessaron.bash";
    const auto offered = [&script](const char *option, const char *command) {
        const Testing::ProgramRun shell = Testing::runProgram(
            "bash", {"-c", "source \"$0\" && _tessaron_values \"$1\" \"$2\"", script, option, command});
        EXPECT_EQ(shell.status, 0) << shell.errors.constData();
        return shell.output.trimmed().split(' ');
    };
    for (const char *const command : {"image", "audio", "extract"}) {
        for (const QByteArray &value : offered("--format", command)) {
            QList<QByteArray> words = {command, "--format", value, "-o", "out", "x"};
            if (QByteArray(command) == "extract")
                words += {"--track", "1"};
            EXPECT_NE(parseArguments(words).action, Arguments::Action::ReportUsageError)
                << command << ' ' << value.constData();
        }
    }
    EXPECT_EQ(offered("--format", "audio"), QList<QByteArray>({"bin", "vant"}));
}

TEST(OptionAgreement, completion_offersExactlyTheOptionsOfTheCommand)
{
    const QString script = projectFile("packaging/completions/tessaron.bash");
    const auto offered = [&script](const char *start) {
        const qsizetype from = script.indexOf(QString::fromUtf8(start));
        const qsizetype to = script.indexOf(QStringLiteral(";;"), from);
        EXPECT_GE(from, 0) << start;
        return matchesIn(script.mid(from, to - from), "(?<=[ \"])(--?[a-z-]+)(?=[ \"])");
    };
    EXPECT_EQ(offered("    image)\n"), knownOptions("image"));
    EXPECT_EQ(offered("    audio)\n"), knownOptions("audio"));
    EXPECT_EQ(offered("    inspect) "), knownOptions("inspect"));
    EXPECT_EQ(offered("    verify) "), knownOptions("verify"));
    EXPECT_EQ(offered("    scan) "), knownOptions("scan"));
    EXPECT_EQ(offered("    tracks) "), knownOptions("tracks"));
    EXPECT_EQ(offered("    extract)\n"), knownOptions("extract"));
    EXPECT_EQ(offered("    info) "), knownOptions("info"));
    EXPECT_EQ(offered("    dvd) "), knownOptions("dvd"));
    EXPECT_EQ(offered("    convert)\n"), knownOptions("convert"));
    EXPECT_EQ(offered("    drives) "), knownOptions("drives"));
    EXPECT_EQ(offered("    burn)\n"), knownOptions("burn"));
    EXPECT_EQ(offered("    blank) "), knownOptions("blank"));
    EXPECT_EQ(offered("    *) "), knownOptions(""));
}

} // namespace

} // namespace Tessaron::Tool
