#include "tools/tessaron/InfoCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <QList>

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

constexpr qsizetype longestText = 100; ///< characters of a text in the table

double secondsOf(std::int64_t duration, const QTTime &movie)
{
    return movie.timeScale > 0 ? double(duration) / double(movie.timeScale) : 0;
}

/// "3:25.40", "1:02:03.45".
QString timeOf(std::int64_t duration, const QTTime &movie)
{
    const auto hundredths = std::uint64_t(std::max(secondsOf(duration, movie) * 100 + 0.5, 0.0));
    const std::uint64_t minutes = hundredths / 6000;
    const QString rest = QStringLiteral("%1.%2")
                             .arg(hundredths / 100 % 60, 2, 10, QLatin1Char('0'))
                             .arg(hundredths % 100, 2, 10, QLatin1Char('0'));
    if (minutes < 60)
        return QStringLiteral("%1:%2").arg(minutes).arg(rest);
    return QStringLiteral("%1:%2:%3").arg(minutes / 60).arg(minutes % 60, 2, 10, QLatin1Char('0')).arg(rest);
}

/// The four characters; "-" where there are none.
QString codeText(std::uint32_t code)
{
    if (code == 0)
        return QStringLiteral("-");
    QString text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += QChar(char16_t(code >> shift & 0xff));
    return text;
}

std::uint32_t codeOf(const QTTrack &track)
{
    if (track.sound)
        return track.sound->dataFormat;
    return track.image ? track.image->codecType : 0;
}

QString kindOf(const QTTrack &track)
{
    if (track.mediaType == "soun")
        return QStringLiteral("sound");
    if (track.mediaType == "vide")
        return QStringLiteral("video");
    return track.mediaType.isEmpty() ? QStringLiteral("other") : QString::fromLatin1(track.mediaType);
}

QString nameOf(const QTTrack &track)
{
    if (track.sound)
        return track.sound->name;
    return track.image ? track.image->name : QString();
}

QString formOf(const QTTrack &track)
{
    if (track.sound)
        return QStringLiteral("%1 Hz, %2, %3 bits")
            .arg(track.sound->sampleRate)
            .arg(counted(std::uint64_t(std::max<int>(track.sound->numChannels, 0)), "channel", "channels"))
            .arg(track.sound->sampleSize);
    if (track.image)
        return QStringLiteral("%1 × %2, depth %3")
            .arg(track.image->width)
            .arg(track.image->height)
            .arg(track.image->depth);
    return {};
}

QStringList rowOf(const QTTrack &track, std::size_t number, const QTTime &movie)
{
    return {QString::number(number),
            kindOf(track),
            codeText(codeOf(track)),
            formOf(track),
            timeOf(track.duration, movie),
            track.dataSize ? sizeText(*track.dataSize) : QStringLiteral("size not told"),
            nameOf(track)};
}

/// Columns as wide as their widest cell, two blanks apart.
QByteArray tableOf(const QList<QStringList> &rows)
{
    QList<qsizetype> widths;
    QList<QStringList> cells;
    for (const QStringList &row : rows) {
        QStringList line;
        for (qsizetype column = 0; column < row.size(); ++column) {
            line << QString::fromUtf8(printable(row[column]));
            if (column == widths.size())
                widths << 0;
            widths[column] = std::max(widths[column], line.last().size());
        }
        cells << line;
    }
    QByteArray text;
    for (const QStringList &line : std::as_const(cells)) {
        QString one;
        for (qsizetype column = 0; column < line.size(); ++column)
            one += QStringLiteral("  ") + line[column].leftJustified(widths[column]);
        while (one.endsWith(u' '))
            one.chop(1);
        text += one.toUtf8() + '\n';
    }
    return text;
}

/// What the four characters of texts mean to people.
QString labelOf(const QByteArray &key)
{
    struct Label {
        const char *key;
        const char *label;
    };
    static constexpr std::array labels = {
        Label{"\251nam", "title"},     Label{"\251ART", "artist"},   Label{"\251alb", "album"},
        Label{"\251aut", "author"},    Label{"\251day", "date"},     Label{"\251wrt", "composer"},
        Label{"\251gen", "genre"},     Label{"\251cmt", "comment"},  Label{"\251too", "encoder"},
        Label{"\251swr", "software"},  Label{"\251lyr", "lyrics"},   Label{"\251cpy", "copyright"},
        Label{"titl", "title"},        Label{"perf", "artist"},      Label{"albm", "album"},
        Label{"auth", "author"},       Label{"yrrc", "date"},        Label{"cprt", "copyright"},
        Label{"aART", "album artist"}, Label{"\251grp", "grouping"},
    };
    for (const Label &label : labels) {
        if (key == label.key)
            return QString::fromUtf8(label.label);
    }
    return QString::fromLatin1(key);
}

QString valueText(const QByteArray &value)
{
    const QString text = stringWithFileSystemRepresentation(value);
    return text.size() <= longestText ? text : text.first(longestText) + QStringLiteral("…");
}

QByteArray textOf(const MovieFileInfo &file)
{
    const MovieDescription &movie = file.movie;
    QByteArray text = printable(QStringLiteral("%1: %2, %3")
                                    .arg(stringWithFileSystemRepresentation(file.path), movie.container,
                                         timeOf(movie.duration.timeValue, movie.duration)))
        + '\n';
    QList<QStringList> rows;
    for (const QTTrack &track : movie.tracks)
        rows << rowOf(track, std::size_t(rows.size()) + 1, movie.duration);
    text += tableOf(rows);
    QList<QStringList> texts;
    for (const MovieMetadataItem &item : movie.metadata)
        texts << QStringList{labelOf(item.key), valueText(item.value)};
    if (movie.cover) {
        QString cover = QStringLiteral("%1, %2").arg(QString::fromUtf8(movie.cover->extension),
                                                     sizeText(std::uint64_t(movie.cover->length)));
        if (!file.artwork.isEmpty())
            cover += QStringLiteral(", written to ") + stringWithFileSystemRepresentation(file.artwork);
        texts << QStringList{QStringLiteral("cover"), cover};
    }
    return text + tableOf(texts);
}

void writeTrack(JsonWriter &writer, const QTTrack &track, const QTTime &movie)
{
    writer.beginObject();
    writer.member("kind", kindOf(track));
    writer.member("mediaType", QString::fromLatin1(track.mediaType));
    writer.member("duration", track.duration);
    writer.key("seconds");
    writer.value(secondsOf(track.duration, movie), 6);
    writer.key("bytes");
    if (track.dataSize)
        writer.value(*track.dataSize);
    else
        writer.null();
    if (track.sound || track.image) {
        writer.member("code", codeText(codeOf(track)));
        writer.member("codeNumber", codeOf(track));
        writer.member("codec", nameOf(track));
    }
    if (track.sound) {
        writer.member("sampleRate", track.sound->sampleRate);
        writer.member("sampleSize", track.sound->sampleSize);
        writer.member("channels", track.sound->numChannels);
        writer.member("descriptionSize", track.sound->descSize);
    } else if (track.image) {
        writer.member("width", track.image->width);
        writer.member("height", track.image->height);
        writer.member("framesPerSample", track.image->frameCount);
        writer.member("depth", track.image->depth);
    }
    writer.endObject();
}

void writeMovie(JsonWriter &writer, const MovieDescription &movie)
{
    writer.member("container", movie.container);
    writer.member("duration", movie.duration.timeValue);
    writer.member("timeScale", movie.duration.timeScale);
    writer.key("seconds");
    writer.value(secondsOf(movie.duration.timeValue, movie.duration), 6);
    writer.key("tracks");
    writer.beginArray();
    for (const QTTrack &track : movie.tracks)
        writeTrack(writer, track, movie.duration);
    writer.endArray();
    writer.key("metadata");
    writer.beginArray();
    for (const MovieMetadataItem &item : movie.metadata) {
        writer.beginObject();
        writer.member("key", QString::fromLatin1(item.key));
        writer.member("name", labelOf(item.key));
        writer.pathMember("value", item.value);
        writer.endObject();
    }
    writer.endArray();
}

void writeCover(JsonWriter &writer, const MovieFileInfo &file)
{
    writer.key("cover");
    if (!file.movie.cover) {
        writer.null();
        return;
    }
    writer.beginObject();
    writer.member("format", QString::fromUtf8(file.movie.cover->extension));
    writer.member("bytes", file.movie.cover->length);
    if (!file.artwork.isEmpty())
        writer.pathMember("path", file.artwork);
    writer.endObject();
}

/// The problem of one file; none where all is well.
Problem problemOfFile(const MovieFileInfo &file)
{
    Problem problem = problemOf(file.error ? file.error : file.artworkError);
    if (file.error) {
        problem.kind = Problem::Kind::Source;
        problem.code = file.error.code();
    }
    return problem;
}

} // namespace

InfoCommand::InfoCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

ExitStatus InfoCommand::run()
{
    InfoJob job({m_arguments.paths, m_arguments.artworkFolder});
    m_result = m_run.resultOf(job);
    m_problem = problemOfResult();
    const bool isWritten = m_arguments.json ? writeJson() : writeText();
    printFailures();
    if (isWritten)
        return exitStatusFor(m_problem);
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

Problem InfoCommand::problemOfResult() const
{
    if (m_result.error || m_result.failures() == 0)
        return problemOf(m_result.error);
    for (const MovieFileInfo &file : m_result.files) {
        Problem problem = problemOfFile(file);
        if (!problem)
            continue;
        if (m_result.files.size() > 1)
            problem.message = QStringLiteral("%1 of %2 could not be dealt with; the first one: %3")
                                  .arg(m_result.failures())
                                  .arg(counted(m_result.files.size(), "file", "files"), problem.message);
        return problem;
    }
    return {};
}

void InfoCommand::printFailures() const
{
    for (const MovieFileInfo &file : m_result.files) {
        if (const Problem problem = problemOfFile(file))
            printProblem(problem);
    }
    if (m_result.error)
        printProblem(m_problem);
}

bool InfoCommand::writeText() const
{
    QByteArray text;
    for (const MovieFileInfo &file : m_result.files) {
        if (!file.error)
            text += (text.isEmpty() ? "" : "\n") + textOf(file);
    }
    return writeAll(STDOUT_FILENO, text);
}

bool InfoCommand::writeJson() const
{
    JsonWriter writer(STDOUT_FILENO);
    writer.beginObject();
    writer.member("version", jsonVersion);
    writer.member("command", QStringLiteral("info"));
    writer.member("result", resultName(exitStatusFor(m_problem)));
    writer.key("files");
    writer.beginArray();
    for (const MovieFileInfo &file : m_result.files) {
        writer.beginObject();
        writer.pathMember("path", file.path);
        if (!file.error) {
            writeMovie(writer, file.movie);
            writeCover(writer, file);
        }
        writeErrorMember(writer, problemOfFile(file));
        writer.endObject();
    }
    writer.endArray();
    writeErrorMember(writer, m_problem);
    writer.endObject();
    return writer.finish();
}

} // namespace Tessaron::Tool
