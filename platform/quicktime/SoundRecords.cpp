#include "platform/quicktime/SoundRecords.h"

#include "platform/quicktime/MediaErrors.h"

#include <QDataStream>
#include <QIODevice>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace Tessaron::SoundProtocol
{

namespace
{

constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_4;

template <typename... Values>
QByteArray recordOf(const Values &...values)
{
    QByteArray record;
    QDataStream stream(&record, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    static_cast<void>((stream << ... << values));
    return record;
}

template <typename... Values>
bool readRecord(const QByteArray &record, Values &...values)
{
    QDataStream stream(record);
    stream.setVersion(streamVersion);
    static_cast<void>((stream >> ... >> values));
    return stream.status() == QDataStream::Ok;
}

} // namespace

QByteArray recordOfRequest(const OpenRequest &request)
{
    return recordOf(request.path, quint8(request.form), request.gain, request.needsExactLength);
}

bool readRequest(const QByteArray &record, OpenRequest *request)
{
    quint8 form = 0;
    const bool isRead = readRecord(record, request->path, form, request->gain, request->needsExactLength);
    request->form = form == quint8(CDSampleForm::Float32) ? CDSampleForm::Float32 : CDSampleForm::Int16;
    return isRead && std::isfinite(request->gain);
}

QByteArray recordOfOpened(const OpenedSound &opened)
{
    constexpr qsizetype longestText = 8192;
    constexpr qsizetype mostCharacters = 100'000; // two bytes each
    QMap<QString, QString> tags;
    qsizetype characters = 0;
    for (auto tag = opened.tags.begin(); tag != opened.tags.end(); ++tag) {
        const qsizetype length = tag.key().size() + tag.value().size();
        if (length > longestText || characters + length > mostCharacters)
            continue;
        characters += length;
        tags.insert(tag.key(), tag.value());
    }
    return recordOf(quint64(opened.length.samples), opened.length.isExact, tags);
}

bool readOpened(const QByteArray &record, OpenedSound *opened)
{
    quint64 samples = 0;
    const bool isRead = readRecord(record, samples, opened->length.isExact, opened->tags);
    opened->length.samples = samples;
    return isRead;
}

QByteArray recordOfError(const NSError &error)
{
    constexpr qsizetype longestText = 4096;
    QString reason = error.localizedFailureReason();
    if (reason.isEmpty())
        reason = error.localizedDescription();
    return recordOf(error.code(), reason.left(longestText), error.localizedRecoverySuggestion().left(longestText));
}

NSError errorOfRecord(const QByteArray &record, const QByteArray &path)
{
    qint64 code = 0;
    QString reason;
    QString suggestion;
    if (readRecord(record, code, reason, suggestion))
        return mediaError(OSErr(code), path, reason, suggestion);
    return mediaError(decoderHasEnded, path,
                      QStringLiteral("the program that decodes it, DummyRedbook, does not say why it cannot"),
                      QStringLiteral("Convert the file with another program, or leave it out."));
}

QByteArray recordOfDamage(const AudioDamageReport &damage)
{
    constexpr qsizetype longestText = 500; // of a hundred places
    QByteArray record = recordOf(quint64(damage.count), quint32(damage.places.size()));
    for (const AudioDamage &place : damage.places)
        record += recordOf(place.seconds, place.what.left(longestText));
    return record;
}

bool readDamage(const QByteArray &record, AudioDamageReport *damage)
{
    QDataStream stream(record);
    stream.setVersion(streamVersion);
    quint64 count = 0;
    quint32 described = 0;
    stream >> count >> described;
    // Not as a QList, which makes room for whatever number a broken helper sends.
    if (stream.status() != QDataStream::Ok || described > AudioDamageReport::mostDescribed)
        return false;
    std::vector<AudioDamage> places(described);
    for (AudioDamage &place : places)
        stream >> place.seconds >> place.what;
    if (stream.status() != QDataStream::Ok)
        return false;
    damage->count = std::max(count, quint64(described));
    damage->places = std::move(places);
    return true;
}

} // namespace Tessaron::SoundProtocol
