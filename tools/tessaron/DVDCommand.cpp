#include "tools/tessaron/DVDCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <array>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

constexpr int regionCount = 8;

QString timeText(std::chrono::milliseconds time)
{
    const auto milliseconds = std::uint64_t(time.count());
    return QStringLiteral("%1:%2:%3.%4")
        .arg(milliseconds / 3'600'000)
        .arg(milliseconds / 60'000 % 60, 2, 10, QLatin1Char('0'))
        .arg(milliseconds / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(milliseconds % 1000, 3, 10, QLatin1Char('0'));
}

QString formatName(DVDAudioFormat format)
{
    constexpr std::array names = {"ac3", "mpeg1", "mpeg2", "lpcm", "dts", "sdds", "unknown"};
    return QLatin1String(names[std::size_t(format)]);
}

QString purposeName(DVDStreamPurpose purpose)
{
    constexpr std::array names = {"",      "normal",   "visually-impaired", "comments", "other-comments",
                                  "large", "children", "hard-of-hearing",   "forced"};
    return QLatin1String(names[std::size_t(purpose)]);
}

QString menuName(DVDMenuKind kind)
{
    constexpr std::array names = {"title", "root", "subtitle", "audio", "angle", "chapter"};
    return QLatin1String(names[std::size_t(kind)]);
}

QString languageName(const QByteArray &language)
{
    return language.isEmpty() ? QStringLiteral("any language") : QString::fromLatin1(language);
}

std::vector<int> allowedRegions(std::uint8_t prohibited)
{
    std::vector<int> regions;
    for (int region = 1; region <= regionCount; ++region) {
        if ((prohibited >> (region - 1) & 1) == 0)
            regions.push_back(region);
    }
    return regions;
}

QString regionsText(std::uint8_t prohibited)
{
    const std::vector<int> regions = allowedRegions(prohibited);
    if (regions.size() == std::size_t(regionCount))
        return QStringLiteral("all regions");
    QStringList numbers;
    for (const int region : regions)
        numbers.append(QString::number(region));
    if (numbers.isEmpty())
        return QStringLiteral("no region");
    return (numbers.size() == 1 ? QStringLiteral("region ") : QStringLiteral("regions ")) + numbers.join(u' ');
}

QString headText(const QByteArray &path, const DVDDescription &disc)
{
    QString text = stringWithFileSystemRepresentation(path) + QStringLiteral(": ")
        + counted(disc.titles.size(), "title", "titles") + QStringLiteral(", ") + regionsText(disc.prohibitedRegions);
    if (!disc.volumeName.isEmpty())
        text += QStringLiteral(", volume ") + disc.volumeName;
    if (!disc.provider.isEmpty())
        text += QStringLiteral(", by ") + disc.provider;
    if (disc.drive)
        text += QStringLiteral(", drive set to ") + regionsText(disc.drive->prohibited);
    return text + QStringLiteral(", disc ") + QString::fromLatin1(disc.identity.toHex());
}

QString titleText(const DVDTitle &title)
{
    QString text =
        QStringLiteral("%1  %2, %3, %4, %5 %6x%7 %8")
            .arg(title.number, 2)
            .arg(timeText(title.length), counted(title.chapters.size(), "chapter", "chapters"),
                 counted(title.angles, "angle", "angles"),
                 title.video.standard == DVDVideoStandard::PAL ? QStringLiteral("PAL") : QStringLiteral("NTSC"))
            .arg(title.video.width)
            .arg(title.video.height)
            .arg(title.video.isWide ? QStringLiteral("16:9") : QStringLiteral("4:3"));
    for (const DVDAudioStream &stream : title.audio) {
        text += QStringLiteral("\n    sound %1, %2, %3 kHz, %4")
                    .arg(formatName(stream.format), counted(stream.channels, "channel", "channels"))
                    .arg(stream.sampleRate / 1000)
                    .arg(languageName(stream.language));
        if (const QString purpose = purposeName(stream.purpose); !purpose.isEmpty())
            text += QStringLiteral(", ") + purpose;
    }
    for (const DVDSubtitleStream &stream : title.subtitles) {
        text += QStringLiteral("\n    subtitles %1").arg(languageName(stream.language));
        if (const QString purpose = purposeName(stream.purpose); !purpose.isEmpty())
            text += QStringLiteral(", ") + purpose;
    }
    int number = 0;
    for (const DVDChapter &chapter : title.chapters)
        text += QStringLiteral("\n    chapter %1 at %2, %3 long")
                    .arg(++number, 2)
                    .arg(timeText(chapter.start), timeText(chapter.length));
    return text;
}

QString menuText(const DVDMenu &menu)
{
    return QStringLiteral("%1 menu of %2, %3")
        .arg(menuName(menu.kind),
             menu.titleSet == 0 ? QStringLiteral("the disc") : QStringLiteral("title set %1").arg(int(menu.titleSet)),
             languageName(menu.language));
}

/// Printed line by line, so that what a disc holds cannot begin a line of its own.
QByteArray printableLines(const QString &text)
{
    QByteArray lines;
    for (const QString &line : text.split(u'\n'))
        lines += printable(line) + '\n';
    return lines;
}

} // namespace

DVDCommand::DVDCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

ExitStatus DVDCommand::run()
{
    {
        DVDInspectJob job(m_arguments.paths.first());
        m_result = m_run.resultOf(job);
    }
    m_problem = problemOf(m_result.error);
    for (const QString &damage : damages())
        printDiagnostic(damage);
    if (m_result.disc.isEncrypted)
        printDiagnostic(QStringLiteral("the disc is copy-protected: its contents are scrambled and cannot be played"));
    if (m_problem)
        printProblem(m_problem);
    const bool isWritten = m_arguments.json ? writeJson() : (m_problem || writeText());
    return exitStatusAfterReport(isWritten, status());
}

QStringList DVDCommand::damages() const
{
    QStringList texts = m_result.disc.notes;
    for (const DVDTitle &title : m_result.disc.titles) {
        if (!title.damage.isEmpty())
            texts.append(QStringLiteral("title %1: %2").arg(title.number).arg(title.damage));
    }
    for (const DVDFileProblem &problem : m_result.problems)
        texts.append(QStringLiteral("%1 %2").arg(quoted(problem.name), problem.message));
    return texts;
}

ExitStatus DVDCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return damages().isEmpty() ? ExitStatus::Done : ExitStatus::Incomplete;
}

bool DVDCommand::writeText() const
{
    QByteArray text = printable(headText(m_arguments.paths.first(), m_result.disc)) + '\n';
    for (const DVDTitle &title : m_result.disc.titles)
        text += printableLines(titleText(title));
    for (const DVDMenu &menu : m_result.disc.menus)
        text += printableLines(menuText(menu));
    return writeAll(STDOUT_FILENO, text);
}

void DVDCommand::writeTitle(JsonWriter &writer, const DVDTitle &title)
{
    writer.beginObject();
    writer.member("title", title.number);
    writer.member("titleSet", title.titleSet);
    writer.member("milliseconds", title.length.count());
    writer.member("angles", title.angles);
    writer.member("standard",
                  title.video.standard == DVDVideoStandard::PAL ? QStringLiteral("pal") : QStringLiteral("ntsc"));
    writer.member("aspect", title.video.isWide ? QStringLiteral("16:9") : QStringLiteral("4:3"));
    writer.member("width", title.video.width);
    writer.member("height", title.video.height);
    writer.member("letterbox", title.video.mayLetterbox);
    writer.member("panAndScan", title.video.mayPanAndScan);
    writer.key("chapters");
    writer.beginArray();
    for (const DVDChapter &chapter : title.chapters) {
        writer.beginObject();
        writer.member("start", chapter.start.count());
        writer.member("milliseconds", chapter.length.count());
        writer.endObject();
    }
    writer.endArray();
    writer.key("audio");
    writer.beginArray();
    for (const DVDAudioStream &stream : title.audio) {
        writer.beginObject();
        writer.member("format", formatName(stream.format));
        writer.member("channels", stream.channels);
        writer.member("sampleRate", stream.sampleRate);
        writer.member("bits", stream.bitsPerSample);
        writer.member("language", QString::fromLatin1(stream.language));
        writer.member("purpose", purposeName(stream.purpose));
        writer.endObject();
    }
    writer.endArray();
    writer.key("subtitles");
    writer.beginArray();
    for (const DVDSubtitleStream &stream : title.subtitles) {
        writer.beginObject();
        writer.member("language", QString::fromLatin1(stream.language));
        writer.member("purpose", purposeName(stream.purpose));
        writer.endObject();
    }
    writer.endArray();
    if (!title.damage.isEmpty())
        writer.member("damage", title.damage);
    writer.endObject();
}

bool DVDCommand::writeJson() const
{
    const DVDDescription &disc = m_result.disc;
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("dvd"), status());
    writer.pathMember("disc", m_arguments.paths.first());
    writer.member("identity", QString::fromLatin1(disc.identity.toHex()));
    writer.member("volume", disc.volumeName);
    writer.member("provider", disc.provider);
    writer.member("encrypted", disc.isEncrypted);
    writer.key("regions");
    writer.beginArray();
    for (const int region : m_problem ? std::vector<int>() : allowedRegions(disc.prohibitedRegions))
        writer.value(std::int64_t(region));
    writer.endArray();
    if (disc.drive) {
        writer.key("driveRegions");
        writer.beginArray();
        for (const int region : allowedRegions(disc.drive->prohibited))
            writer.value(std::int64_t(region));
        writer.endArray();
        writer.member("driveChangesLeft", disc.drive->changesLeft);
    }
    writer.key("titles");
    writer.beginArray();
    for (const DVDTitle &title : disc.titles)
        writeTitle(writer, title);
    writer.endArray();
    writer.key("menus");
    writer.beginArray();
    for (const DVDMenu &menu : disc.menus) {
        writer.beginObject();
        writer.member("kind", menuName(menu.kind));
        writer.member("titleSet", menu.titleSet);
        writer.member("language", QString::fromLatin1(menu.language));
        writer.endObject();
    }
    writer.endArray();
    writer.key("problems");
    writer.beginArray();
    for (const DVDFileProblem &problem : m_result.problems) {
        writer.beginObject();
        writer.pathMember("file", problem.name);
        writer.member("message", problem.message);
        writer.endObject();
    }
    writer.endArray();
    writer.textsMember("notes", disc.notes);
    writer.key("seconds");
    writer.value(m_run.seconds(), 3);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
