#include "imaging/verification/VolumeComparison.h"

#include "imaging/verification/LinkTargets.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/discrecording/planning/DiscImagePlan.h"
#include "platform/foundation/MessageTexts.h"

#include <QDate>

#include <algorithm>

namespace Tessaron
{

namespace
{

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

bool isWithin(std::int64_t seconds, int firstYear, int lastYear)
{
    constexpr std::int64_t secondsPerDay = 86400;
    const qint64 epoch = QDate(1970, 1, 1).toJulianDay();
    return seconds >= (QDate(firstYear, 1, 1).toJulianDay() - epoch) * secondsPerDay
        && seconds < (QDate(lastYear + 1, 1, 1).toJulianDay() - epoch) * secondsPerDay;
}

/// In the plain tree the name has no dot, and a number where another object has it.
bool isNameOfRelocation(QByteArray name)
{
    if (name.startsWith('.') || name.startsWith('_'))
        name.remove(0, 1);
    const QByteArray usual = "rr_moved";
    if (!name.startsWith(usual))
        return false;
    const QByteArray rest = name.mid(usual.size());
    bool isNumber = false;
    (void)rest.mid(1).toUInt(&isNumber);
    return rest.isEmpty() || (rest.startsWith('_') && isNumber);
}

} // namespace

void RecordedSources::sort()
{
    std::sort(m_records.begin(), m_records.end());
}

SourceNumber RecordedSources::sourceAt(std::uint64_t recordOffset) const
{
    const auto found = std::lower_bound(m_records.begin(), m_records.end(), std::pair(recordOffset, SourceNumber(0)));
    return found != m_records.end() && found->first == recordOffset ? found->second : noSource;
}

VolumeComparison::VolumeComparison(const VolumeReader &reader, SourceIndex &sources, ContentPlan &contents,
                                   ImageDifferenceList &differences, RecordedSources *rockRidge)
    : m_reader(reader)
    , m_kind(reader.facts().kind)
    , m_bit(setOf(m_kind))
    , m_sources(sources)
    , m_contents(contents)
    , m_differences(differences)
    , m_rockRidge(rockRidge)
    , m_latestTime(sourceDateEpochFromEnvironment())
{
}

VolumeVerification VolumeComparison::run(const std::stop_token &stop)
{
    m_result.kind = m_kind;
    m_stop = stop;
    VolumeWalker walker;
    walker.enterFolder = [this](const QByteArray &path, const VolumeObject &folder) { return enter(path, folder); };
    walker.leaveFolder = [this](const QByteArray &) { leave(); };
    walker.object = [this](const QByteArray &, const VolumeObject &object) {
        take(object);
        return !m_stop.stop_requested();
    };
    walker.failed = [this](const QByteArray &path, const NSError &error) {
        m_levels.back().isWhole = false;
        m_differences.addDamage(m_bit, '/' + path, error);
        return !m_stop.stop_requested();
    };
    walkVolume(m_reader, walker);
    if (m_rockRidge != nullptr && m_kind == VolumeKind::RockRidge)
        m_rockRidge->sort();
    return m_result;
}

bool VolumeComparison::enter(const QByteArray &path, const VolumeObject &folder)
{
    if (!m_levels.empty())
        settle(m_levels.back()); // the folder around this one is listed now
    const auto toEnter = m_foldersToEnter.extract(folder.location);
    const SourceNumber source = path.isEmpty() ? 0 : toEnter.empty() ? noSource : toEnter.mapped();
    if (source == noSource || m_stop.stop_requested())
        return false;
    m_levels.push_back({source, FolderMatcher(m_reader, m_sources, m_contents, source, m_rockRidge != nullptr), true});
    return true;
}

void VolumeComparison::leave()
{
    settle(m_levels.back());
    if (m_levels.back().isWhole && !m_stop.stop_requested())
        reportMissing(m_levels.back().folder);
    m_levels.pop_back();
}

void VolumeComparison::take(const VolumeObject &object)
{
    ++(object.kind == VolumeObjectKind::Folder ? m_result.folders : m_result.files);
    FolderMatcher &matcher = m_levels.back().matcher;
    SourceNumber source = sourceOfRecord(object);
    if (source == noSource)
        source = matcher.sourceByName(object);
    if (source == noSource || isSeen(source))
        matcher.keep(object);
    else
        compare(object, source);
}

/// The source that Rock Ridge names in the same record, if the plain name may be made of it.
SourceNumber VolumeComparison::sourceOfRecord(const VolumeObject &object) const
{
    if (m_kind != VolumeKind::ISO9660 || m_rockRidge == nullptr)
        return noSource;
    const SourceNumber source = m_rockRidge->sourceAt(object.recordOffset);
    if (source == noSource || m_sources[source].parent != m_levels.back().folder)
        return noSource;
    const ComparableName recorded(m_kind, std::string_view(object.name.data(), std::size_t(object.name.size())));
    return mayBeNameOf(m_kind, recorded, ComparableName(m_kind, m_sources.name(source))) ? source : noSource;
}

void VolumeComparison::settle(Level &level)
{
    for (const MatchedObject &matched : level.matcher.matchKept(m_stop)) {
        if (m_stop.stop_requested())
            return;
        if (matched.source != noSource)
            compare(matched.object, matched.source);
        else if (!m_allowsExtra && !belongsToRelocation(matched.object))
            reportExtra(matched.object);
    }
}

/// The folder in which writers gather what lies deeper than ISO 9660 allows; Rock Ridge shows its content elsewhere. It
/// may be one of the sources, too.
bool VolumeComparison::belongsToRelocation(const VolumeObject &folder) const
{
    if (folder.kind != VolumeObjectKind::Folder || m_rockRidge == nullptr)
        return false;
    if (m_levels.size() == 2 && m_kind == VolumeKind::ISO9660) {
        const std::string_view source = m_sources.name(m_levels.back().folder);
        return source == "rr_moved" || source == ".rr_moved";
    }
    if (m_levels.size() != 1 || !isNameOfRelocation(folder.name.toLower()))
        return false;
    bool isEmpty = true;
    const NSError error = m_reader.listFolder(folder, [&](const VolumeObject &) {
        isEmpty = false;
        return false;
    });
    return m_kind == VolumeKind::ISO9660 || (m_kind == VolumeKind::RockRidge && isEmpty && !error);
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
    if (!mayStandFor(m_kind, m_rockRidge != nullptr, object, facts)) {
        differHere(ImageDifference::Kind::Type,
                   QStringLiteral("%1 instead of %2").arg(kindText(object.kind), kindText(facts.kind)));
        return;
    }
    if (object.size != facts.size)
        differHere(ImageDifference::Kind::Size,
                   QStringLiteral("%1 instead of %2").arg(counted(object.size, "byte", "bytes")).arg(facts.size));
    else if (object.kind == VolumeObjectKind::File) // a folder's extents are those of its records
        m_contents.add(source, m_kind, object);
    compareTime(object, source);
    if (object.kind == VolumeObjectKind::SymbolicLink)
        compareLink(object, source);
    if (object.kind == VolumeObjectKind::Folder)
        m_foldersToEnter.insert_or_assign(object.location, source);
    if (m_kind == VolumeKind::RockRidge && m_rockRidge != nullptr)
        m_rockRidge->add(object.recordOffset, source);
}

void VolumeComparison::compareTime(const VolumeObject &object, SourceNumber source)
{
    if (!m_sources[source].hasTime())
        return;
    FileTime time = m_sources[source].modificationTime();
    if (m_latestTime)
        time = std::min(time, FileTime{*m_latestTime, 0});
    const DiscVolumeFacts &volume = m_reader.facts();
    if (!object.modified || !isWithin(time.seconds, volume.firstYear, volume.lastYear))
        return;
    // Writers that know whole seconds only leave finer fields zero.
    const std::uint32_t granularity =
        object.modified->nanoseconds == 0 ? 1'000'000'000 : std::max(object.modified->granularity, 1u);
    if (object.modified->seconds == time.seconds
        && object.modified->nanoseconds / granularity == time.nanoseconds / granularity)
        return;
    differ(ImageDifference::Kind::Time, m_sources.discPath(source), object.recordOffset,
           QStringLiteral("modified at %1 instead of %2 (UTC)").arg(timeText(*object.modified), timeText(time)));
}

void VolumeComparison::compareLink(const VolumeObject &object, SourceNumber source)
{
    const QByteArray target = m_sources.linkTarget(source);
    const QByteArray &recorded = object.linkTarget;
    const bool isSame = mayBeLinkTargetOf(m_kind, recorded, target);
    if (!isSame)
        differ(ImageDifference::Kind::LinkTarget, m_sources.discPath(source), object.recordOffset,
               QStringLiteral("leads to %1 instead of %2").arg(quoted(recorded), quoted(target)));
}

bool VolumeComparison::mayBeLeftOut(SourceNumber source) const
{
    const VolumeObjectKind kind = m_sources[source].kind;
    if (kind == VolumeObjectKind::File || kind == VolumeObjectKind::Folder)
        return false;
    if (m_kind == VolumeKind::Joliet || (m_kind == VolumeKind::ISO9660 && m_rockRidge == nullptr))
        return true;
    return kind == VolumeObjectKind::SymbolicLink && !surelyHasRoom(m_kind, m_sources.linkTarget(source));
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
