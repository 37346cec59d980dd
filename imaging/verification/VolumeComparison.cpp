#include "imaging/verification/VolumeComparison.h"

#include "imaging/verification/NameRules.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <QDate>
#include <QDateTime>

#include <algorithm>

namespace Tessaron
{

namespace
{

std::optional<std::int64_t> latestTimeFromEnvironment()
{
    bool isNumber = false;
    const qint64 seconds = qgetenv("SOURCE_DATE_EPOCH").toLongLong(&isNumber);
    return isNumber ? std::optional<std::int64_t>(seconds) : std::nullopt;
}

/// How often names of a folder are held against each other by rules: an image of something else altogether must not
/// take hours to refuse.
constexpr std::size_t maximumTries = 2'000'000;

QString kindText(VolumeObjectKind kind)
{
    switch (kind) {
    case VolumeObjectKind::File:
        return QStringLiteral("a file");
    case VolumeObjectKind::Folder:
        return QStringLiteral("a folder");
    case VolumeObjectKind::SymbolicLink:
        return QStringLiteral("a symbolic link");
    case VolumeObjectKind::Other:
        return QStringLiteral("a special file");
    }
    return {};
}

/// "2024-02-29 12:34:56", UTC.
QString timeText(const VolumeTime &time)
{
    return QDateTime::fromSecsSinceEpoch(time.seconds, Qt::UTC).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString quoted(const QByteArray &path)
{
    return QStringLiteral("“%1”").arg(stringWithFileSystemRepresentation(path));
}

bool isWithin(std::int64_t seconds, int firstYear, int lastYear)
{
    constexpr std::int64_t secondsPerDay = 86400;
    const qint64 epoch = QDate(1970, 1, 1).toJulianDay();
    return seconds >= (QDate(firstYear, 1, 1).toJulianDay() - epoch) * secondsPerDay
        && seconds < (QDate(lastYear + 1, 1, 1).toJulianDay() - epoch) * secondsPerDay;
}

/// Several slashes in a row are one; one at the end, also as "/.", is none: discs record components.
QByteArray plainTarget(const QByteArray &target)
{
    QByteArray result;
    for (const char byte : target) {
        if (byte != '/' || !result.endsWith('/'))
            result += byte;
    }
    if (result.endsWith("/."))
        result.chop(1);
    if (result.size() > 1 && result.endsWith('/'))
        result.chop(1);
    return result;
}

} // namespace

VolumeComparison::VolumeComparison(const VolumeReader &reader, SourceIndex &sources, ContentPlan &contents,
                                   ImageDifferenceList &differences, FolderPlaces *rockRidgeFolders, bool hasRockRidge)
    : m_reader(reader)
    , m_kind(reader.facts().kind)
    , m_bit(setOf(m_kind))
    , m_sources(sources)
    , m_contents(contents)
    , m_differences(differences)
    , m_rockRidgeFolders(rockRidgeFolders)
    , m_hasRockRidge(hasRockRidge)
    , m_latestTime(latestTimeFromEnvironment())
{
}

VolumeVerification VolumeComparison::run(const std::stop_token &stop)
{
    m_result.kind = m_kind;
    m_contents.prepareLookup();
    VolumeWalker walker;
    walker.enterFolder = [this](const QByteArray &path, const VolumeObject &folder) { return enter(path, folder); };
    walker.leaveFolder = [this](const QByteArray &) { leave(); };
    walker.object = [&](const QByteArray &, const VolumeObject &object) {
        take(object);
        return !stop.stop_requested();
    };
    walker.failed = [&](const QByteArray &path, const NSError &error) {
        m_levels.back().isWhole = false;
        m_differences.addDamage(m_bit, '/' + path, error);
        return !stop.stop_requested();
    };
    walkVolume(m_reader, walker);
    return m_result;
}

bool VolumeComparison::enter(const QByteArray &path, const VolumeObject &folder)
{
    takePending(); // the folder around this one is listed now
    const SourceNumber source = path.isEmpty() ? 0 : m_entered.value(folder.location, noSource);
    m_entered.remove(folder.location);
    if (source == noSource)
        return false;
    Level level{source, true, {}};
    const SourceObject &facts = m_sources[source];
    for (SourceNumber child = facts.firstChild; child < facts.firstChild + facts.childCount; ++child) {
        // In plain ISO 9660 hardly a name stays as it is; there names are looked up by key anyway.
        if (m_kind != VolumeKind::ISO9660 && mustChangeName(m_kind, m_sources.name(child)))
            level.changedNames.insert(nameKey(m_kind, m_sources.name(child)));
    }
    m_levels.push_back(std::move(level));
    return true;
}

void VolumeComparison::leave()
{
    takePending();
    if (m_levels.back().isWhole)
        reportMissing(m_levels.back().folder);
    m_levels.pop_back();
}

void VolumeComparison::take(const VolumeObject &object)
{
    ++(object.kind == VolumeObjectKind::Folder ? m_result.folders : m_result.files);
    // The place tells more than the name where names had to change: several may come near to one.
    SourceNumber source = keepsEveryName(m_kind) ? noSource : sourceAtPlace(object);
    if (source == noSource && !isAmbiguous(object))
        source = sourceWithName(object);
    if (source != noSource && isSeen(source))
        source = noSource;
    if (source == noSource)
        m_pending.push_back(object);
    else
        compare(object, source);
}

void VolumeComparison::takePending()
{
    if (m_pending.empty())
        return;
    const std::vector<VolumeObject> pending = std::move(m_pending);
    m_pending.clear();
    std::vector<SourceNumber> candidates;
    const SourceObject &folder = m_sources[m_levels.back().folder];
    for (SourceNumber child = folder.firstChild; child < folder.firstChild + folder.childCount; ++child) {
        if (!isSeen(child))
            candidates.push_back(child);
    }
    NameKeys keys;
    for (const SourceNumber source : candidates)
        keys.insert(nameKey(m_kind, m_sources.name(source)), source);
    std::vector<const VolumeObject *> unknown;
    for (const VolumeObject &object : pending) {
        const SourceNumber source = sourceByKey(object, keys);
        if (source != noSource)
            compare(object, source);
        else
            unknown.push_back(&object);
    }
    if (unknown.empty())
        return;
    std::erase_if(candidates, [this](SourceNumber source) { return isSeen(source); });
    m_triesLeft = maximumTries;
    std::size_t next = 0;
    std::vector<const VolumeObject *> strangers;
    for (const VolumeObject *const object : unknown) {
        const SourceNumber source = sourceByRules(*object, candidates, &next);
        if (source != noSource)
            compare(*object, source);
        else if (!belongsToRelocation(*object))
            strangers.push_back(object);
    }
    for (const VolumeObject *const object : strangers) {
        const SourceNumber source = sourceByNameAlone(*object, candidates);
        if (source != noSource)
            compare(*object, source);
        else
            reportExtra(*object);
    }
}

void VolumeComparison::reportExtra(const VolumeObject &object)
{
    QByteArray path = m_sources.discPath(m_levels.back().folder);
    path += (path.endsWith('/') ? "" : "/") + object.name;
    differ(ImageDifference::Kind::Extra, path, object.recordOffset,
           QStringLiteral("%1 that the sources do not have").arg(kindText(object.kind)));
}

void VolumeComparison::compare(const VolumeObject &object, SourceNumber source)
{
    SourceObject &facts = m_sources[source];
    facts.seenIn = std::uint8_t(facts.seenIn | m_bit);
    if (object.name != QByteArrayView(m_sources.name(source).data(), facts.nameLength))
        ++m_result.renamed;
    const auto differHere = [&](ImageDifference::Kind kind, const QString &message) {
        differ(kind, m_sources.discPath(source), object.recordOffset, message);
    };
    if (!fitsKind(object, facts)) {
        differHere(ImageDifference::Kind::Type,
                   QStringLiteral("%1 instead of %2").arg(kindText(object.kind), kindText(facts.kind)));
        return;
    }
    if (object.size != facts.size)
        differHere(ImageDifference::Kind::Size,
                   QStringLiteral("%1 bytes instead of %2").arg(object.size).arg(facts.size));
    else
        m_contents.add(source, m_kind, object);
    compareTime(object, source);
    if (object.kind == VolumeObjectKind::SymbolicLink)
        compareLink(object, source);
    if (object.kind != VolumeObjectKind::Folder)
        return;
    m_entered.insert(object.location, source);
    if (m_kind == VolumeKind::RockRidge && m_rockRidgeFolders != nullptr)
        m_rockRidgeFolders->insert(object.location, source);
}

void VolumeComparison::compareTime(const VolumeObject &object, SourceNumber source)
{
    const SourceObject &facts = m_sources[source];
    std::int64_t seconds = facts.seconds;
    std::uint32_t nanoseconds = facts.nanoseconds;
    if (m_latestTime && (seconds > *m_latestTime || (seconds == *m_latestTime && nanoseconds > 0))) {
        seconds = *m_latestTime;
        nanoseconds = 0;
    }
    const DiscVolumeFacts &volume = m_reader.facts();
    if (!object.modified || !isWithin(seconds, volume.firstYear, volume.lastYear))
        return;
    // Writers that know whole seconds only leave finer fields zero.
    const std::uint32_t granularity =
        object.modified->nanoseconds == 0 ? 1'000'000'000 : std::max(object.modified->granularity, 1u);
    if (object.modified->seconds == seconds && object.modified->nanoseconds / granularity == nanoseconds / granularity)
        return;
    differ(ImageDifference::Kind::Time, m_sources.discPath(source), object.recordOffset,
           QStringLiteral("modified at %1 instead of %2")
               .arg(timeText(*object.modified), timeText({seconds, nanoseconds, 1})));
}

void VolumeComparison::compareLink(const VolumeObject &object, SourceNumber source)
{
    const QByteArray target = plainTarget(m_sources.linkTarget(source));
    const QByteArray recorded = plainTarget(object.linkTarget);
    // UDF records characters, not bytes.
    const bool isSame = recorded == target
        || (m_kind == VolumeKind::UDF && holdsUndecodableBytes(stringWithFileSystemRepresentation(target))
            && stringWithFileSystemRepresentation(recorded).size()
                == stringWithFileSystemRepresentation(target).size());
    if (!isSame)
        differ(ImageDifference::Kind::LinkTarget, m_sources.discPath(source), object.recordOffset,
               QStringLiteral("leads to %1 instead of %2").arg(quoted(recorded), quoted(target)));
}

bool VolumeComparison::mayBeLeftOut(SourceNumber source) const
{
    const VolumeObjectKind kind = m_sources[source].kind;
    if (kind == VolumeObjectKind::File || kind == VolumeObjectKind::Folder)
        return false;
    if (m_kind == VolumeKind::Joliet || (m_kind == VolumeKind::ISO9660 && !m_hasRockRidge))
        return true;
    // In UDF a target must fit into one block, at up to two bytes a character.
    constexpr qsizetype longestSureTarget = 900;
    return m_kind == VolumeKind::UDF && kind == VolumeObjectKind::SymbolicLink
        && m_sources.linkTarget(source).size() > longestSureTarget;
}

void VolumeComparison::reportMissing(SourceNumber folder)
{
    const SourceObject &facts = m_sources[folder];
    for (SourceNumber child = facts.firstChild; child < facts.firstChild + facts.childCount; ++child) {
        if (isSeen(child))
            continue;
        if (mayBeLeftOut(child)) {
            ++m_result.leftOut;
            continue;
        }
        m_differences.add({ImageDifference::Kind::Missing,
                           m_bit,
                           m_sources.discPath(child),
                           {},
                           QStringLiteral("%1 of the sources is missing").arg(kindText(m_sources[child].kind))});
    }
}

void VolumeComparison::differ(ImageDifference::Kind kind, const QByteArray &path, std::uint64_t offset,
                              const QString &message)
{
    m_differences.add({kind, m_bit, path, offset, message});
}

} // namespace Tessaron
