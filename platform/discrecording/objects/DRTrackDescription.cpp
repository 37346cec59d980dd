#include "platform/discrecording/objects/DRTrackDescription.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t largestBlockSize = 65536;

NSError propertyError(const QString &reason)
{
    return NSError(NSOSStatusErrorDomain, paramErr, {{NSLocalizedDescriptionKey, reason}});
}

NSError propertyError(const char *what, const QString &key)
{
    return propertyError(QStringLiteral("A track says no valid %1 (%2).").arg(QLatin1String(what), key));
}

/// The whole number under the key; no value when there is none or it is negative.
std::optional<std::uint64_t> wholeNumber(const QVariantMap &properties, const QString &key)
{
    const QVariant value = properties.value(key);
    bool isNumber = false;
    const std::uint64_t number = value.toULongLong(&isNumber);
    const bool isNegative = value.typeId() != QMetaType::ULongLong && value.toLongLong() < 0;
    return value.isValid() && isNumber && !isNegative ? std::optional(number) : std::nullopt;
}

struct NumberProperty {
    std::optional<std::int32_t> RecordingNumbers::*member;
    const QString *key;
};
const std::array<NumberProperty, 4> numberProperties = {{
    {&RecordingNumbers::trackMode, &DRTrackModeKey},
    {&RecordingNumbers::dataForm, &DRDataFormKey},
    {&RecordingNumbers::blockType, &DRBlockTypeKey},
    {&RecordingNumbers::sessionFormat, &DRSessionFormatKey},
}};

struct CopyStateName {
    CopyState state;
    const QString *name;
};
const std::array<CopyStateName, 3> copyStateNames = {{
    {CopyState::CopyrightFree, &DRSCMSCopyrightFree},
    {CopyState::ProtectedOriginal, &DRSCMSCopyrightProtectedOriginal},
    {CopyState::ProtectedCopy, &DRSCMSCopyrightProtectedCopy},
}};

CopyState copyStateNamed(const QString &name)
{
    for (const CopyStateName &known : copyStateNames) {
        if (name == *known.name)
            return known.state;
    }
    return CopyState::Unstated;
}

/// Reads the gap under the key, which may be missing.
NSError readGap(const QVariantMap &properties, const QString &key, const char *what, TrackGap *gap)
{
    if (!properties.contains(key))
        return {};
    const std::optional<std::uint64_t> length = wholeNumber(properties, key);
    if (!length || *length > std::numeric_limits<std::uint32_t>::max())
        return propertyError(what, key);
    gap->length = *length;
    return {};
}

NSError readIndexPoints(const QVariantMap &properties, std::vector<std::uint64_t> *points)
{
    const QVariantList values = properties.value(DRIndexPointsKey).toList();
    for (const QVariant &value : values) {
        bool isNumber = false;
        points->push_back(value.toUInt(&isNumber));
        if (!isNumber)
            return propertyError("index points", DRIndexPointsKey);
    }
    return {};
}

void setOrRemove(QVariantMap *properties, const QString &key, bool isSet, const QVariant &value)
{
    if (isSet)
        properties->insert(key, value);
    else
        properties->remove(key);
}

} // namespace

Result<DiscTrack> discTrackOfProperties(const QVariantMap &properties, TrackLengthIs length)
{
    DiscTrack track;
    const bool isPlain = length == TrackLengthIs::PlannedLater && !properties.contains(DRBlockSizeKey);
    const std::optional<std::uint64_t> blockSize =
        isPlain ? std::optional<std::uint64_t>(track.blockSize) : wholeNumber(properties, DRBlockSizeKey);
    if (!blockSize || *blockSize == 0 || *blockSize > largestBlockSize)
        return propertyError("block size", DRBlockSizeKey);
    track.blockSize = std::uint32_t(*blockSize);
    const std::optional<std::uint64_t> blocks = wholeNumber(properties, DRTrackLengthKey);
    if (!blocks && (length == TrackLengthIs::Stated || properties.contains(DRTrackLengthKey)))
        return propertyError("length", DRTrackLengthKey);
    track.length = blocks.value_or(0);
    NSError error = readGap(properties, DRPreGapLengthKey, "pregap", &track.pregap);
    if (!error)
        error = readGap(properties, DRPostGapLengthKey, "postgap", &track.postgap);
    if (!error && blocks && track.postgap.length > track.length)
        error = propertyError("postgap", DRPostGapLengthKey);
    if (!error)
        error = readIndexPoints(properties, &track.indexPoints);
    if (error)
        return error;
    track.postgap.isStored = true; // it is part of the length, which a producer delivers
    for (const NumberProperty &property : numberProperties) {
        const QVariant value = properties.value(*property.key);
        if (value.isValid())
            track.recording.*property.member = value.toInt();
    }
    track.kind = trackKindOfBlockType(track.recording.blockType, track.blockSize);
    track.copyState = copyStateNamed(properties.value(DRSerialCopyManagementStateKey).toString());
    track.hasPreEmphasis = properties.value(DRAudioPreEmphasisKey).toBool();
    track.hasFourChannels = properties.value(DRAudioFourChannelKey).toBool();
    return track;
}

StatedBlocks statedBlocks(const QVariantMap &properties)
{
    StatedBlocks stated;
    if (const auto size = properties.constFind(DRBlockSizeKey); size != properties.constEnd())
        stated.size = size->toULongLong();
    if (const auto type = properties.constFind(DRBlockTypeKey); type != properties.constEnd())
        stated.type = type->toInt();
    if (const auto length = properties.constFind(DRTrackLengthKey); length != properties.constEnd())
        stated.length = length->toULongLong();
    return stated;
}

std::optional<std::uint64_t> StatedBlocks::bytes() const
{
    const std::uint64_t blocks = length.value_or(0);
    const std::uint64_t blockSize = size.value_or(0);
    if (blockSize != 0 && blocks > std::numeric_limits<std::uint64_t>::max() / blockSize)
        return std::nullopt;
    return blocks * blockSize;
}

QVariantMap propertiesOfStatedTrack(const StatedTrack &stated, const QVariantMap &others)
{
    QVariantMap properties = others;
    if (stated.blockSize)
        properties.insert(DRBlockSizeKey, quint32(*stated.blockSize));
    if (stated.length)
        properties.insert(DRTrackLengthKey, quint64(*stated.length));
    if (stated.pregap) {
        const bool fits = *stated.pregap <= std::numeric_limits<quint32>::max();
        properties.insert(DRPreGapLengthKey,
                          fits ? QVariant(quint32(*stated.pregap)) : QVariant(quint64(*stated.pregap)));
    }
    if (!stated.indexPoints.empty())
        properties.insert(DRIndexPointsKey, QVariantList(stated.indexPoints.begin(), stated.indexPoints.end()));
    for (const NumberProperty &property : numberProperties) {
        if (const std::optional<std::int32_t> number = stated.recording.*property.member)
            properties.insert(*property.key, *number);
    }
    for (const CopyStateName &known : copyStateNames) {
        if (stated.copyState == known.state)
            properties.insert(DRSerialCopyManagementStateKey, *known.name);
    }
    if (stated.hasPreEmphasis)
        properties.insert(DRAudioPreEmphasisKey, true);
    if (stated.hasFourChannels)
        properties.insert(DRAudioFourChannelKey, true);
    return properties;
}

QVariantMap propertiesOfDiscTrack(const DiscTrack &track, const QVariantMap &others)
{
    QVariantMap properties = others;
    properties.insert(DRBlockSizeKey, quint32(track.blockSize));
    properties.insert(DRTrackLengthKey, quint64(track.length));
    setOrRemove(&properties, DRPreGapLengthKey, track.pregap.length > 0, quint32(track.pregap.length));
    setOrRemove(&properties, DRPostGapLengthKey, track.postgap.length > 0, quint32(track.postgap.length));
    QVariantList points;
    for (const std::uint64_t point : track.indexPoints)
        points.append(quint32(point));
    setOrRemove(&properties, DRIndexPointsKey, !points.isEmpty(), points);
    const bool isStated = track.recording != RecordingNumbers{};
    const RecordingNumbers numbers = isStated ? track.recording : recordingNumbers(track);
    for (const NumberProperty &property : numberProperties) {
        const std::optional<std::int32_t> number = numbers.*property.member;
        setOrRemove(&properties, *property.key, number.has_value(), number.value_or(0));
    }
    properties.remove(DRSerialCopyManagementStateKey);
    for (const CopyStateName &known : copyStateNames) {
        if (track.copyState == known.state)
            properties.insert(DRSerialCopyManagementStateKey, *known.name);
    }
    setOrRemove(&properties, DRAudioPreEmphasisKey, track.hasPreEmphasis, true);
    setOrRemove(&properties, DRAudioFourChannelKey, track.hasFourChannels, true);
    return properties;
}

Result<TableOfContents> tableOfContentsOfLayout(const DRLayout &layout, TrackLengthIs lengthOfFilesystem)
{
    const auto *const given = std::get_if<std::vector<DRTrackArray>>(&layout);
    const std::vector<DRTrackArray> sessions = given ? *given : std::vector<DRTrackArray>{tracksOfLayout(layout)};
    if (isNullLayout(layout) || tracksOfLayout(layout).empty())
        return propertyError(QStringLiteral("There is nothing to write: the layout has no track."));
    TableOfContents contents;
    for (const DRTrackArray &tracks : sessions) {
        if (tracks.empty())
            continue;
        DiscSession &session = contents.sessions.emplace_back();
        for (const std::shared_ptr<DRTrack> &track : tracks) {
            if (!track)
                return propertyError(QStringLiteral("A track of the layout is missing."));
            const auto length = track->rootFolder() ? lengthOfFilesystem : TrackLengthIs::Stated;
            Result<DiscTrack> description = discTrackOfProperties(track->properties(), length);
            if (!description)
                return description.error();
            session.tracks.push_back(*std::move(description));
        }
    }
    contents.numberTracks();
    contents.joinSessions();
    return contents;
}

void putPlannedLengths(const TableOfContents &contents, const DRLayout &layout)
{
    const std::vector<const DiscTrack *> planned = contents.tracks();
    const DRTrackArray tracks = tracksOfLayout(layout);
    for (std::size_t index = 0; index < std::min(planned.size(), tracks.size()); ++index) {
        DRTrack &track = *tracks[index];
        if (!track.rootFolder())
            continue;
        QVariantMap properties = track.properties();
        properties.insert(DRTrackLengthKey, quint64(planned[index]->length));
        track.setProperties(properties);
    }
}

} // namespace Tessaron
