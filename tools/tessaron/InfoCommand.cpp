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
#include <utility>

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
        if (file.error.domain() == NSOSStatusErrorDomain)
            problem.code = file.error.code();
    }
    return problem;
}

void writeFile(JsonWriter &writer, const MovieFileInfo &file)
{
    writer.beginObject();
    writer.pathMember("path", file.path);
    if (!file.error) {
        writeMovie(writer, file.movie);
        writeCover(writer, file);
    }
    if (file.isNoMovie)
        writer.member("noMovie", true);
    writeErrorMember(writer, problemOfFile(file));
    writer.endObject();
}

} // namespace

InfoCommand::InfoCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

InfoCommand::~InfoCommand() = default;

/// What is found is told at once, so that any number of files takes the memory of one.
ExitStatus InfoCommand::run()
{
    if (m_arguments.json)
        beginJson();
    {
        InfoJob job({m_arguments.paths, m_arguments.artworkFolder, false});
        QObject::connect(&job, &InfoJob::described, &job, [&](const MovieFileInfo &file) {
            tell(file);
            if (m_outputErrno != 0)
                job.cancel();
        });
        m_result = m_run.resultOf(job);
    }
    m_problem = problemOfResult();
    if (m_outputErrno == 0)
        printRest();
    const bool isWritten = endOutput();
    return exitStatusAfterReport(isWritten, status());
}

void InfoCommand::tell(const MovieFileInfo &file)
{
    const Problem problem = problemOfFile(file);
    if (m_json) {
        writeFile(*m_json, file);
        m_outputErrno = m_json->failure();
    } else if (!file.error) {
        const QByteArray text = (std::exchange(m_isFirst, false) ? QByteArray() : QByteArray("\n")) + textOf(file);
        m_outputErrno = writeAll(STDOUT_FILENO, text) ? 0 : errno;
    }
    if (!problem)
        return;
    if (file.isNoMovie) {
        printDiagnostic(problem.message);
        return;
    }
    if (!m_firstProblem)
        m_firstProblem = problem;
    printProblem(problem);
}

Problem InfoCommand::problemOfResult() const
{
    if (m_result.error || m_result.failureCount == 0)
        return problemOf(m_result.error);
    Problem problem = m_firstProblem;
    if (m_result.fileCount > 1)
        problem.message = QStringLiteral("%1 of %2 could not be dealt with; the first one: %3")
                              .arg(m_result.failureCount)
                              .arg(counted(m_result.fileCount, "file", "files"), problem.message);
    return problem;
}

ExitStatus InfoCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

/// What belongs to no file. Folders alone have something left out, or hold nothing.
void InfoCommand::printRest() const
{
    printUnreadable(m_result.unreadable);
    if (m_result.error) {
        printProblem(m_problem);
        return;
    }
    QStringList leftOut;
    if (m_result.leftOut > 0)
        leftOut << QStringLiteral("%1 that by their names are neither sound nor movies")
                       .arg(counted(m_result.leftOut, "file", "files"));
    if (m_result.leftOutSpecial > 0)
        leftOut << counted(m_result.leftOutSpecial, "link or special file", "links and special files");
    if (leftOut.isEmpty() && m_result.fileCount > 0)
        return;
    QString line = QStringLiteral("looked at %1").arg(counted(m_result.fileCount, "file", "files"));
    if (!leftOut.isEmpty())
        line += QStringLiteral("; left out ") + leftOut.join(QStringLiteral(" and "));
    printDiagnostic(line);
}

void InfoCommand::beginJson()
{
    m_json = std::make_unique<JsonWriter>(STDOUT_FILENO);
    beginReport(*m_json, QStringLiteral("info"));
    m_json->key("files");
    m_json->beginArray();
}

/// False, with `errno` set, when anything could not be written.
bool InfoCommand::endOutput()
{
    if (!m_json) {
        errno = m_outputErrno;
        return m_outputErrno == 0;
    }
    m_json->endArray();
    m_json->member("failures", m_result.failureCount);
    m_json->member("noMovies", m_result.noMovieCount);
    m_json->member("leftOut", m_result.leftOut);
    m_json->member("leftOutSpecial", m_result.leftOutSpecial);
    writeUnreadableMember(*m_json, m_result.unreadable);
    m_json->key("seconds");
    m_json->value(m_run.seconds(), 3);
    m_json->member("result", resultName(status()));
    return endReport(*m_json, m_problem);
}

} // namespace Tessaron::Tool
