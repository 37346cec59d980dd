#include "tests/quicktime/OtherReaders.h"

#include "tests/quicktime/Sounds.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace Tessaron::Testing
{

namespace
{

QJsonObject parsed(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

std::int64_t numberIn(const QString &value)
{
    return value.section(u' ', 0, 0).toLongLong();
}

/// Reads a list of atoms line by line: "17B22         Name:                           mp4v".
class AtomListReader
{
public:
    void read(const QString &line);

    ListedMovie movie;

private:
    enum class Place : std::uint8_t { Elsewhere, MovieHeader, TrackHeader, DescriptionTable, Description };

    void readNameOfAtom(const QString &name);

    Place m_place = Place::Elsewhere;
    std::int64_t m_size = 0;
};

void AtomListReader::read(const QString &line)
{
    const qsizetype colon = line.indexOf(u':');
    if (colon < 0)
        return;
    const QString name = line.first(colon).section(u' ', 1).trimmed(), value = line.sliced(colon + 1).trimmed();
    if (name == QStringLiteral("Name"))
        return readNameOfAtom(value);
    if (name == QStringLiteral("Size"))
        m_size = numberIn(value);
    else if (m_place == Place::MovieHeader && name == QStringLiteral("Time scale"))
        movie.timeScale = numberIn(value);
    else if (m_place == Place::MovieHeader && name == QStringLiteral("Duration"))
        movie.duration = numberIn(value);
    else if (m_place == Place::TrackHeader && name == QStringLiteral("Duration"))
        movie.tracks.back().duration = numberIn(value);
    else if (m_place == Place::Description && !movie.tracks.back().fields.contains(name))
        movie.tracks.back().fields.insert(name, value);
}

void AtomListReader::readNameOfAtom(const QString &name)
{
    const bool isDescription = m_place == Place::DescriptionTable;
    m_place = Place::Elsewhere;
    if (name == QStringLiteral("mvhd"))
        m_place = Place::MovieHeader;
    else if (name == QStringLiteral("tkhd"))
        m_place = Place::TrackHeader;
    else if (name == QStringLiteral("stsd"))
        m_place = Place::DescriptionTable;
    else if (isDescription)
        m_place = Place::Description;
    if (m_place == Place::TrackHeader)
        movie.tracks.emplace_back();
    if (!isDescription || movie.tracks.empty())
        return;
    movie.tracks.back().code = name.leftJustified(4);
    movie.tracks.back().descriptionSize = m_size;
}

} // namespace

QString member(const QJsonValue &object, const char *name)
{
    return object.toObject().value(QString::fromUtf8(name)).toVariant().toString();
}

QJsonArray probedStreams(const QByteArray &path, const char *kind)
{
    const QJsonObject all = parsed(outputOfProgram("ffprobe", {"-v", "error", "-of", "json", "-show_streams", path}));
    QJsonArray streams;
    for (const QJsonValue stream : all[QStringLiteral("streams")].toArray()) {
        const bool isCover = stream[QStringLiteral("disposition")][QStringLiteral("attached_pic")].toInt() == 1;
        if (member(stream, "codec_type") == QString::fromUtf8(kind) && !isCover)
            streams.append(stream);
    }
    return streams;
}

std::uint64_t probedSize(const QByteArray &path, const QByteArray &index)
{
    const QByteArray sizes = outputOfProgram("ffprobe",
                                             {"-v", "error", "-ignore_editlist", "1", "-select_streams", index,
                                              "-show_entries", "packet=size", "-of", "csv=p=0", path});
    std::uint64_t sum = 0;
    for (const QByteArray &line : sizes.split('\n'))
        sum += line.trimmed().split(',').first().toULongLong();
    return sum;
}

QJsonArray mediaInfo(const QByteArray &path, const char *kind)
{
    const QJsonObject all = parsed(outputOfProgram("mediainfo", {"--Output=JSON", path}));
    QJsonArray parts;
    for (const QJsonValue part : all[QStringLiteral("media")][QStringLiteral("track")].toArray()) {
        if (member(part, "@type") == QString::fromUtf8(kind))
            parts.append(part);
    }
    return parts;
}

int ListedTrack::number(const char *field, const char *otherName) const
{
    return int(numberIn(fields.value(QString::fromUtf8(field), fields.value(QString::fromUtf8(otherName)))));
}

ListedMovie listedMovie(const QByteArray &path)
{
    AtomListReader reader;
    for (const QByteArray &line : outputOfProgram("mediainfo", {"--Details=1", path}).split('\n'))
        reader.read(QString::fromUtf8(line));
    return reader.movie;
}

} // namespace Tessaron::Testing
