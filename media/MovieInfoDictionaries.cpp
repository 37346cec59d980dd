#include "media/MovieInfoDictionaries.h"

#include "platform/foundation/ByteOrder.h"
#include <TessaronClasses/KRMovieInfo.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace Tessaron
{

const QString fZelTracksInfoKey = QStringLiteral("fZelTracksInfoKey");
const QString kZelMovieInfoKey = QStringLiteral("kZelMovieInfoKey");
const QString kZelMovieMetadataKey = QStringLiteral("kZelMovieMetadataKey");
const QString kZelMovieTimeScale = QStringLiteral("kZelMovieTimeScale");
const QString kZelMovieDuration = QStringLiteral("kZelMovieDuration");
const QString kZelAudioInfoAlbum = QStringLiteral("kZelAudioInfoAlbum");
const QString kZelAudioInfoTitle = QStringLiteral("kZelAudioInfoTitle");
const QString kZelAudioInfoArtist = QStringLiteral("kZelAudioInfoArtist");
const QString kZelAudioInfoAuthors = QStringLiteral("kZelAudioInfoAuthors");
const QString kZelAudioInfoYear = QStringLiteral("kZelAudioInfoYear");
const QString kZelAudioInfoArtworks = QStringLiteral("kZelAudioInfoArtworks");
const QString kZelTrackInfoSize = QStringLiteral("kZelTrackInfoSize");
const QString kZelTrackInfoType = QStringLiteral("kZelTrackInfoType");
const QString kZelTrackTypeAudio = QStringLiteral("kZelTrackTypeAudio");
const QString kZelTrackTypeVideo = QStringLiteral("kZelTrackTypeVideo");
const QString kZelTrackInfoDuration = QStringLiteral("kZelTrackInfoDuration");
const QString kZelTrackInfoTimeScale = QStringLiteral("kZelTrackInfoTimeScale");
const QString kZelTrackInfoFourCC = QStringLiteral("kZelTrackInfoFourCC");
const QString kZelAudioInfoSampleRate = QStringLiteral("kZelAudioInfoSampleRate");
const QString kZelAudioInfoSampleSize = QStringLiteral("kZelAudioInfoSampleSize");
const QString kZelAudioInfoChannelCount = QStringLiteral("kZelAudioInfoChannelCount");
const QString fZelVideoInfoWidth = QStringLiteral("fZelVideoInfoWidth");
const QString fZelVideoInfoHeight = QStringLiteral("fZelVideoInfoHeight");
const QString kZelVideoInfoFrameCount = QStringLiteral("kZelVideoInfoFrameCount");
const QString kZelVideoInfoDepth = QStringLiteral("kZelVideoInfoDepth");
const QString kZelVideoInfoName = QStringLiteral("kZelVideoInfoName");
const QString kZelTrackInfoFourCCNum = QStringLiteral("kZelTrackInfoFourCCNum");

namespace
{

constexpr qsizetype longestKey = 255, longestValue = 255; ///< bytes that there is room for

/// Four characters, the highest byte first; a blank stands for a zero byte.
QString codeOfSound(std::uint32_t format)
{
    if (format == 0)
        return QStringLiteral("raw ");
    std::array<std::uint8_t, 4> bytes = {};
    storeBigEndian<std::uint32_t>(bytes.data(), format);
    std::replace(bytes.begin(), bytes.end(), std::uint8_t(0), std::uint8_t(' '));
    return QString::fromLatin1(reinterpret_cast<const char *>(bytes.data()), qsizetype(bytes.size()));
}

/// The number's bytes as this machine keeps them: callers have always got them so.
QString codeOfPictures(std::uint32_t codec)
{
    std::array<char, 4> bytes = {};
    std::memcpy(bytes.data(), &codec, bytes.size());
    return QString::fromLatin1(bytes.data(), qsizetype(bytes.size()));
}

QVariantMap commonMembers(const MovieDescription &movie, const QTTrack &track, const QString &type)
{
    QVariantMap members;
    if (track.dataSize)
        members.insert(kZelTrackInfoSize, qint64(*track.dataSize));
    members.insert(kZelTrackInfoType, type);
    members.insert(kZelTrackInfoDuration, qint64(track.duration));
    members.insert(kZelTrackInfoTimeScale, qint64(movie.duration.timeScale));
    return members;
}

QVariantMap audioTrack(const MovieDescription &movie, const QTTrack &track)
{
    QVariantMap members = commonMembers(movie, track, kZelTrackTypeAudio);
    members.insert(kZelTrackInfoFourCC, codeOfSound(track.sound->dataFormat));
    members.insert(kZelAudioInfoSampleRate, quint64(track.sound->sampleRate));
    members.insert(kZelAudioInfoSampleSize, QVariant::fromValue<short>(track.sound->sampleSize));
    members.insert(kZelAudioInfoChannelCount, QVariant::fromValue<short>(track.sound->numChannels));
    members.insert(QStringLiteral("desc size"), qint64(track.sound->descSize));
    return members;
}

QVariantMap videoTrack(const MovieDescription &movie, const QTTrack &track)
{
    QVariantMap members = commonMembers(movie, track, kZelTrackTypeVideo);
    members.insert(kZelTrackInfoFourCC, codeOfPictures(track.image->codecType));
    members.insert(kZelTrackInfoFourCCNum, quint64(track.image->codecType));
    members.insert(fZelVideoInfoWidth, QVariant::fromValue<short>(track.image->width));
    members.insert(fZelVideoInfoHeight, QVariant::fromValue<short>(track.image->height));
    members.insert(kZelVideoInfoFrameCount, QVariant::fromValue<short>(track.image->frameCount));
    members.insert(kZelVideoInfoDepth, QVariant::fromValue<short>(track.image->depth));
    members.insert(kZelVideoInfoName, track.image->name);
    return members;
}

/// The key of the result for that of an item; null for one that is not wanted. A zero byte ends the item's.
const QString *nameOfItem(const QByteArray &key)
{
    struct Name {
        const char *code;
        const QString *name;
    };
    const std::array names = {Name{"\251alb", &kZelAudioInfoAlbum}, Name{"\251aut", &kZelAudioInfoAuthors},
                              Name{"\251ART", &kZelAudioInfoArtist}, Name{"\251nam", &kZelAudioInfoTitle},
                              Name{"\251day", &kZelAudioInfoYear}};
    for (const Name &name : names) {
        QByteArray reversed = name.code;
        std::reverse(reversed.begin(), reversed.end());
        if (qstrcmp(key.constData(), name.code) == 0 || qstrcmp(key.constData(), reversed.constData()) == 0)
            return name.name;
    }
    return nullptr;
}

} // namespace

QVariantList trackDictionaries(const MovieDescription &movie)
{
    QVariantList tracks;
    for (const QTTrack &track : movie.tracks) {
        if (track.mediaType == "soun" && track.sound)
            tracks << audioTrack(movie, track);
        else if (track.mediaType == "vide" && track.image)
            tracks << videoTrack(movie, track);
    }
    return tracks;
}

QVariantMap movieDictionary(const MovieDescription &movie)
{
    return {{kZelMovieTimeScale, quint32(movie.duration.timeScale)},
            {kZelMovieDuration, quint32(movie.duration.timeValue & 0xffffffff)}};
}

QVariantMap metadataDictionary(const std::vector<MovieMetadataItem> &items)
{
    QVariantMap metadata;
    for (const MovieMetadataItem &item : items) {
        const QString *const name = item.key.size() <= longestKey ? nameOfItem(item.key) : nullptr;
        QByteArray value = item.value.left(longestValue);
        if (const qsizetype end = value.indexOf('\0'); end >= 0)
            value.truncate(end);
        if (name && value.isValidUtf8())
            metadata.insert(*name, QString::fromUtf8(value));
    }
    return metadata;
}

} // namespace Tessaron
