#include "app/AudioProject.h"

#include "app/ProjectFile.h"

#include <TessaronClasses/FileReferenceFunctions.h>

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/OSStatus.h>

namespace Tessaron::Desktop
{

namespace
{

/// Numbers of frames beyond this are those of no disc: JSON has floating point only.
constexpr double mostFrames = 1e9;
constexpr double longestSeconds = 1e7;
constexpr int mostLanguage = 255;

struct NamedKind {
    CDTextKind kind;
    const char *name;
};
constexpr std::array namedKinds = {
    NamedKind{CDTextKind::Title, "title"},
    NamedKind{CDTextKind::Performer, "performer"},
    NamedKind{CDTextKind::Songwriter, "songwriter"},
    NamedKind{CDTextKind::Composer, "composer"},
    NamedKind{CDTextKind::Arranger, "arranger"},
    NamedKind{CDTextKind::Message, "message"},
    NamedKind{CDTextKind::DiscIdentification, "identification"},
    NamedKind{CDTextKind::Genre, "genre"},
    NamedKind{CDTextKind::ClosedInformation, "closed"},
};

constexpr std::array copyStates = {"unstated", "free", "original", "copy"};

std::uint64_t framesIn(const QJsonObject &object, const char *key)
{
    const double value = object.value(QLatin1String(key)).toDouble();
    return value > 0 && value <= mostFrames ? std::uint64_t(std::llround(value)) : 0;
}

std::uint32_t pauseIn(const QJsonObject &object)
{
    constexpr double longest = AudioTrackModel::longestPause * soundFramesPerSecond;
    return std::uint32_t(std::min(double(framesIn(object, "pause")), longest));
}

/// The texts by the number of their language, which is that of EBU Tech 3264.
QJsonObject jsonOf(const SpokenTexts &texts)
{
    QJsonObject result;
    for (const auto &[language, ofLanguage] : texts) {
        QJsonObject object;
        for (const NamedKind &each : namedKinds) {
            if (const auto found = ofLanguage.find(each.kind); found != ofLanguage.end())
                object.insert(QLatin1String(each.name), found->second);
        }
        result.insert(QString::number(language), object);
    }
    return result;
}

SpokenTexts textsIn(const QJsonObject &object)
{
    SpokenTexts texts;
    for (auto language = object.begin(); language != object.end(); ++language) {
        const int number = language.key().toInt();
        const QJsonObject ofLanguage = language.value().toObject();
        for (const NamedKind &each : namedKinds) {
            const QString text = ofLanguage.value(QLatin1String(each.name)).toString();
            if (!text.isEmpty() && number > 0 && number <= mostLanguage)
                texts[std::uint8_t(number)][each.kind] = text;
        }
    }
    return texts;
}

/// Names files; each is asked for its alias once.
class SourceNamer
{
public:
    SourceNamer(const QByteArray &folder, bool hasAliases)
        : m_folder(folder)
        , m_hasAliases(hasAliases)
    {
    }

    [[nodiscard]] QJsonArray jsonOf(const std::vector<AudioPart> &parts, const AudioTrackRow &track)
    {
        QJsonArray result;
        for (const AudioPart &part : parts) {
            QJsonObject object;
            setSource(object, {part.path, aliasOf(part.path, track)}, m_folder);
            object.insert(QStringLiteral("first"), double(part.first));
            object.insert(QStringLiteral("frames"), double(part.frames));
            result.append(object);
        }
        return result;
    }

private:
    [[nodiscard]] QByteArray aliasOf(const QByteArray &path, const AudioTrackRow &track)
    {
        if (const auto lost = track.lostAliases.constFind(path); lost != track.lostAliases.cend())
            return *lost;
        if (!m_hasAliases)
            return {};
        auto known = m_aliases.constFind(path);
        if (known == m_aliases.cend()) {
            FSRef ref;
            const bool isThere =
                FSPathMakeRefWithOptions(path, kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr) == noErr;
            known = m_aliases.insert(path, isThere ? AliasDataFromFSRef(&ref) : QByteArray());
        }
        return *known;
    }

    const QByteArray &m_folder;
    const bool m_hasAliases;
    QHash<QByteArray, QByteArray> m_aliases;
};

QJsonObject jsonOf(const AudioTrackRow &track, SourceNamer &sources)
{
    const AudioTrackOrder &order = track.order;
    QJsonArray points;
    for (const std::uint64_t point : order.indexPoints)
        points.append(double(point));
    return {{QStringLiteral("pause"), double(order.gap)},
            {QStringLiteral("pregap"), sources.jsonOf(order.pregap, track)},
            {QStringLiteral("sound"), sources.jsonOf(order.sound, track)},
            {QStringLiteral("indexPoints"), points},
            {QStringLiteral("postgap"), double(order.postgap)},
            {QStringLiteral("isrc"), QString::fromUtf8(order.isrc)},
            {QStringLiteral("copying"), QLatin1String(copyStates[std::size_t(order.copyState)])},
            {QStringLiteral("preEmphasis"), order.hasPreEmphasis},
            {QStringLiteral("fourChannels"), order.hasFourChannels},
            {QStringLiteral("ownFile"), order.hasOwnFile},
            {QStringLiteral("texts"), jsonOf(order.texts)},
            {QStringLiteral("seconds"), track.seconds},
            {QStringLiteral("format"), track.format}};
}

/// The parts of a track, their files found again where they were moved.
std::vector<AudioPart> partsIn(const QJsonArray &array, const QByteArray &folder, AudioTrackRow *track)
{
    std::vector<AudioPart> parts;
    for (const QJsonValue value : array) {
        const QJsonObject object = value.toObject();
        AudioPart part;
        FSRef ref;
        if (findSource(object, folder, false, &ref)) {
            part.path = lastKnownPath(ref);
        } else {
            const ProjectSource source = sourceIn(object);
            part.path = source.path;
            track->isMissing = true;
            track->lostAliases.insert(source.path, source.alias);
        }
        part.first = framesIn(object, "first");
        part.frames = framesIn(object, "frames");
        parts.push_back(part);
    }
    return parts;
}

AudioTrackRow trackIn(const QJsonObject &object, const QByteArray &folder)
{
    AudioTrackRow track;
    AudioTrackOrder &order = track.order;
    order.gap = pauseIn(object);
    order.pregap = partsIn(object.value(QStringLiteral("pregap")).toArray(), folder, &track);
    order.sound = partsIn(object.value(QStringLiteral("sound")).toArray(), folder, &track);
    for (const QJsonValue point : object.value(QStringLiteral("indexPoints")).toArray())
        order.indexPoints.push_back(std::uint64_t(std::clamp(point.toDouble(), 0.0, mostFrames)));
    order.postgap = framesIn(object, "postgap");
    order.isrc = validIsrc(object.value(QStringLiteral("isrc")).toString());
    const QString copying = object.value(QStringLiteral("copying")).toString();
    for (std::size_t state = 0; state < copyStates.size(); ++state) {
        if (copying == QLatin1String(copyStates[state]))
            order.copyState = CopyState(state);
    }
    order.hasPreEmphasis = object.value(QStringLiteral("preEmphasis")).toBool();
    order.hasFourChannels = object.value(QStringLiteral("fourChannels")).toBool();
    order.hasOwnFile = object.value(QStringLiteral("ownFile")).toBool();
    order.texts = textsIn(object.value(QStringLiteral("texts")).toObject());
    track.seconds = std::clamp(object.value(QStringLiteral("seconds")).toDouble(), 0.0, longestSeconds);
    track.format = object.value(QStringLiteral("format")).toString();
    return track;
}

NSError badProject(const QString &why)
{
    return NSError(NSCocoaErrorDomain, 1, {{NSLocalizedDescriptionKey, why}});
}

struct AudioProjectWords {
    Q_DECLARE_TR_FUNCTIONS(Project)
};

} // namespace

ProjectSubject::Writer AudioProject::writer() const
{
    return [disc = m_tracks.disc()](const QByteArray &folder, bool hasAliases, const std::stop_token &stop) {
        SourceNamer sources(folder, hasAliases);
        QJsonArray tracks;
        for (const AudioTrackRow &track : disc.tracks) {
            if (stop.stop_requested())
                return QJsonObject();
            tracks.append(jsonOf(track, sources));
        }
        return QJsonObject{{QStringLiteral("tracks"), tracks},
                           {QStringLiteral("texts"), jsonOf(disc.texts)},
                           {QStringLiteral("catalogNumber"), QString::fromLatin1(disc.mediaCatalogNumber)},
                           {QStringLiteral("pause"), double(disc.gap)},
                           {QStringLiteral("gapless"), disc.isGapless},
                           {QStringLiteral("normalized"), disc.isNormalized},
                           {QStringLiteral("cdText"), disc.hasCDText},
                           {QStringLiteral("minutes"), disc.minutes}};
    };
}

ProjectSubject::Reader AudioProject::reader()
{
    return [this](const QJsonObject &project, const QByteArray &folder,
                  const std::stop_token &stop) -> Result<Replacement> {
        AudioDisc disc;
        const QJsonArray tracks = project.value(QStringLiteral("tracks")).toArray();
        if (tracks.size() > AudioTrackModel::mostTracks)
            return badProject(AudioProjectWords::tr("it has more than 99 tracks"));
        for (const QJsonValue value : tracks) {
            if (stop.stop_requested())
                break;
            const AudioTrackRow track = trackIn(value.toObject(), folder);
            const bool isNamed = std::none_of(track.order.sound.begin(), track.order.sound.end(),
                                              [](const AudioPart &part) { return part.path.isEmpty(); });
            if (track.order.sound.empty() || !isNamed)
                return badProject(AudioProjectWords::tr("it has a track without a file"));
            disc.tracks << track;
        }
        disc.texts = textsIn(project.value(QStringLiteral("texts")).toObject());
        disc.mediaCatalogNumber = project.value(QStringLiteral("catalogNumber")).toString().toLatin1();
        disc.gap = pauseIn(project);
        disc.isGapless = project.value(QStringLiteral("gapless")).toBool(disc.isGapless);
        disc.isNormalized = project.value(QStringLiteral("normalized")).toBool(disc.isNormalized);
        disc.hasCDText = project.value(QStringLiteral("cdText")).toBool(disc.hasCDText);
        disc.minutes = project.value(QStringLiteral("minutes")).toInt(disc.minutes);
        return Replacement([this, disc] {
            QStringList missing;
            for (const AudioTrackRow &track : disc.tracks) {
                if (track.isMissing)
                    missing << displayableText(stringWithFileSystemRepresentation(track.path()));
            }
            m_tracks.replace(disc);
            return missing;
        });
    };
}

void AudioProject::clear()
{
    m_tracks.replace({});
}

} // namespace Tessaron::Desktop
