#include "imaging/verification/FolderMatcher.h"

#include <QHashFunctions>

#include <algorithm>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::size_t noObject = std::numeric_limits<std::size_t>::max();
/// How often an object may be held against a source that turns out not to fit, for each object of the folder: an image
/// of something else altogether must not take hours to refuse.
constexpr std::uint64_t stepsForEachObject = 256;

std::string_view viewOf(const QByteArray &name)
{
    return {name.data(), std::size_t(name.size())};
}

std::uint64_t mixed(std::uint64_t one, std::uint64_t other)
{
    return qHashMulti(0, quint64(one), quint64(other));
}

/// True for names that every Unicode filesystem surely keeps; a quick look, since it is made for each name.
bool isSurelyKept(std::string_view name)
{
    constexpr std::size_t surelyShort = 40;
    return name.size() <= surelyShort && !name.ends_with('.') && !name.ends_with(' ')
        && std::all_of(name.begin(), name.end(), [](char byte) {
               return byte >= ' ' && byte <= '~' && byte != ':' && byte != ';' && byte != '?' && byte != '\\'
                   && byte != '*';
           });
}

} // namespace

bool mayStandFor(VolumeKind volume, bool hasRockRidge, const VolumeObject &object, const SourceObject &source)
{
    if (object.kind == source.kind)
        return true;
    if (object.kind != VolumeObjectKind::File || object.size != 0)
        return false;
    if (source.kind == VolumeObjectKind::Folder)
        return volume == VolumeKind::ISO9660 && hasRockRidge;
    return (volume == VolumeKind::ISO9660 || volume == VolumeKind::Joliet) && source.kind != VolumeObjectKind::File;
}

FolderMatcher::FolderMatcher(const VolumeReader &reader, const SourceIndex &sources, const ContentPlan &plan,
                             SourceNumber folder, bool hasRockRidge)
    : m_reader(reader)
    , m_kind(reader.facts().kind)
    , m_sources(sources)
    , m_plan(plan)
    , m_folder(folder)
    , m_hasRockRidge(hasRockRidge)
{
    // In plain ISO 9660 hardly a name stays as it is: they are always considered together.
    if (keepsEveryName(m_kind) || m_kind == VolumeKind::ISO9660)
        return;
    const SourceObject &facts = m_sources[folder];
    for (SourceNumber child = facts.firstChild; child < facts.firstChild + facts.childCount; ++child) {
        const std::string_view name = m_sources.name(child);
        if (isSurelyKept(name))
            continue;
        const ComparableName comparable(m_kind, name);
        m_hasLongNames = m_hasLongNames || mayBeCut(m_kind, comparable.form);
        if (comparable.form != comparable.text)
            m_changedNames.insert(comparable.form);
    }
}

SourceNumber FolderMatcher::sourceByName(const VolumeObject &object) const
{
    if (m_kind == VolumeKind::ISO9660)
        return noSource;
    const SourceNumber source = m_sources.child(m_folder, viewOf(object.name));
    if (source == noSource || keepsEveryName(m_kind))
        return source;
    // A link of this name may have been left out, so that a neighbour of another kind has got it.
    if (m_sources[source].kind != object.kind)
        return noSource;
    // A neighbour whose name had to change may have got this one.
    if (!m_changedNames.empty() || m_hasLongNames) {
        const QString form = formOfName(m_kind, viewOf(object.name));
        if (m_changedNames.contains(form) || (m_hasLongNames && mayBeCut(m_kind, form)))
            return noSource;
    }
    return source;
}

std::vector<MatchedObject> FolderMatcher::matchKept(const std::stop_token &stop)
{
    if (!m_kept.empty()) {
        makeCandidates(stop);
        m_fingerprints.emplace(m_reader, m_sources, stop);
        m_stepsLeft = stepsForEachObject * (m_kept.size() + m_candidates.size());
        for (const Pass pass : {Pass::Place, Pass::OnlyChoice, Pass::ContentsAndTime, Pass::Contents, Pass::KindAndSize,
                                Pass::Kind, Pass::Name})
            run(pass, stop);
    }
    m_names.clear();
    m_candidates.clear();
    return std::exchange(m_kept, {});
}

void FolderMatcher::makeCandidates(const std::stop_token &stop)
{
    for (const MatchedObject &kept : m_kept) {
        m_names.emplace_back(m_kind, viewOf(kept.object.name));
        if (kept.object.modified)
            m_granularity = std::max(kept.object.modified->granularity, 1u);
        if (stop.stop_requested())
            return;
    }
    const SourceObject &facts = m_sources[m_folder];
    for (SourceNumber child = facts.firstChild; child < facts.firstChild + facts.childCount; ++child) {
        if (!isSeen(child))
            m_candidates.push_back({child, ComparableName(m_kind, m_sources.name(child)), noObject});
        if (stop.stop_requested())
            return;
    }
}

bool FolderMatcher::isSeen(SourceNumber source) const
{
    return (m_sources[source].seenIn & setOf(m_kind)) != 0;
}

/// Numbers for the forms under which a name can be looked up. A recorded name is looked up without its number, too, and
/// a long one, of either side, by how it begins.
std::vector<std::uint64_t> FolderMatcher::keysOf(const ComparableName &name, bool isRecorded) const
{
    const bool isPlain = m_kind == VolumeKind::ISO9660;
    std::vector<std::uint64_t> keys = {qHash(name.form, 1)};
    if (isRecorded) {
        for (const QString &shorter : formsWithoutNumber(isPlain ? name.text : name.form))
            keys.push_back(qHash(isPlain ? formOfName(m_kind, viewOf(shorter.toUtf8())) : shorter, 1));
    }
    if (mayBeCut(m_kind, name.form))
        keys.push_back(qHash(sureBeginning(m_kind, name.form), 2));
    return keys;
}

std::uint64_t FolderMatcher::evidenceOfTime(FileTime time) const
{
    return mixed(std::uint64_t(time.seconds), time.nanoseconds / m_granularity);
}

/// What a source and the object made of it have in common in this pass; several numbers when there are several
/// possibilities, none when the pass does not concern it.
std::vector<std::uint64_t> FolderMatcher::evidenceOfCandidate(Pass pass, const Candidate &candidate)
{
    const SourceObject &facts = m_sources[candidate.source];
    switch (pass) {
    case Pass::Place:
        return m_plan.offsetsOf(candidate.source);
    case Pass::ContentsAndTime:
        return {mixed(evidenceOfTime(facts.modificationTime()), m_fingerprints->ofSource(candidate.source))};
    case Pass::Contents:
        return {m_fingerprints->ofSource(candidate.source)};
    case Pass::OnlyChoice:
    case Pass::KindAndSize:
        return {mixed(std::uint64_t(facts.kind), facts.size)};
    case Pass::Kind:
    case Pass::Name:
        break;
    }
    return {0};
}

std::optional<std::uint64_t> FolderMatcher::evidenceOfObject(Pass pass, const VolumeObject &object)
{
    switch (pass) {
    case Pass::Place:
        if (object.extents.empty() || object.extents.front().isHole)
            return std::nullopt;
        return object.extents.front().offset;
    case Pass::ContentsAndTime:
        if (!object.modified)
            return std::nullopt;
        return mixed(evidenceOfTime(*object.modified), m_fingerprints->ofObject(object));
    case Pass::Contents:
        return m_fingerprints->ofObject(object);
    case Pass::OnlyChoice:
    case Pass::KindAndSize:
        return mixed(std::uint64_t(object.kind), object.size);
    case Pass::Kind:
    case Pass::Name:
        break;
    }
    return 0;
}

bool FolderMatcher::fits(Pass pass, std::size_t object, const Candidate &candidate) const
{
    const SourceObject &facts = m_sources[candidate.source];
    const VolumeObject &recorded = m_kept[object].object;
    const bool isSameKind = pass == Pass::Name || mayStandFor(m_kind, m_hasRockRidge, recorded, facts);
    const bool isSameSize = pass >= Pass::Kind || recorded.size == facts.size;
    return isSameKind && isSameSize && mayBeNameOf(m_kind, m_names[object], candidate.name);
}

void FolderMatcher::run(Pass pass, const std::stop_token &stop)
{
    makeGroups(pass, stop);
    if (pass == Pass::OnlyChoice) {
        pairOnlyChoices();
        findRivals();
        return;
    }
    std::vector<std::size_t> left;
    for (std::size_t object = 0; object < m_kept.size() && !stop.stop_requested(); ++object) {
        if (m_kept[object].source == noSource && !takeFree(pass, object))
            left.push_back(object);
    }
    for (const std::size_t object : left) {
        if (stop.stop_requested())
            return;
        takeFromAnother(pass, object);
    }
}

void FolderMatcher::makeGroups(Pass pass, const std::stop_token &stop)
{
    // Files that need not be told apart from others are not looked into.
    const bool rivalsOnly = pass == Pass::ContentsAndTime || pass == Pass::Contents;
    bool hasOpenObjects = false;
    m_groupsOfObject.assign(m_kept.size(), {});
    for (std::size_t object = 0; object < m_kept.size() && !stop.stop_requested(); ++object) {
        if (m_kept[object].source != noSource || (rivalsOnly && !m_isRivalObject[object]))
            continue;
        hasOpenObjects = true;
        const std::optional<std::uint64_t> evidence = evidenceOfObject(pass, m_kept[object].object);
        for (const std::uint64_t key : evidence ? keysOf(m_names[object], true) : std::vector<std::uint64_t>())
            m_groupsOfObject[object].push_back(mixed(key, *evidence));
    }
    m_groups.clear();
    m_firstFree.clear();
    for (std::uint32_t index = 0; index < m_candidates.size() && !stop.stop_requested(); ++index) {
        const Candidate &candidate = m_candidates[index];
        if (!hasOpenObjects || candidate.owner != noObject || (rivalsOnly && !m_isRivalCandidate[index]))
            continue;
        for (const std::uint64_t key : groupsOfCandidate(pass, candidate))
            m_groups[key].push_back(index);
    }
}

std::vector<std::uint64_t> FolderMatcher::groupsOfCandidate(Pass pass, const Candidate &candidate)
{
    std::vector<std::uint64_t> groups;
    for (const std::uint64_t evidence : evidenceOfCandidate(pass, candidate)) {
        for (const std::uint64_t key : keysOf(candidate.name, false))
            groups.push_back(mixed(key, evidence));
    }
    return groups;
}

/// Pairs an object and a source that have no other choice. Groups are those of kind and size.
void FolderMatcher::pairOnlyChoices()
{
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> objectsOfGroup;
    for (std::size_t object = 0; object < m_kept.size(); ++object) {
        for (const std::uint64_t key : m_groupsOfObject[object])
            objectsOfGroup[key].push_back(object);
    }
    const auto onlyCandidate = [this](std::size_t object) -> std::optional<std::uint32_t> {
        std::optional<std::uint32_t> only;
        for (const std::uint64_t key : m_groupsOfObject[object]) {
            const auto found = m_groups.find(key);
            for (std::size_t at = 0; found != m_groups.end() && at < found->second.size(); ++at) {
                if (only && found->second[at] != *only)
                    return std::nullopt;
                only = found->second[at];
            }
        }
        return only;
    };
    for (std::size_t object = 0; object < m_kept.size(); ++object) {
        const std::optional<std::uint32_t> only = onlyCandidate(object);
        if (!only || m_candidates[*only].owner != noObject || !fits(Pass::OnlyChoice, object, m_candidates[*only]))
            continue;
        const std::vector<std::uint64_t> groups = groupsOfCandidate(Pass::OnlyChoice, m_candidates[*only]);
        const bool isWantedByOthers = std::any_of(groups.begin(), groups.end(), [&](std::uint64_t key) {
            const std::vector<std::size_t> &objects = objectsOfGroup[key];
            return std::any_of(objects.begin(), objects.end(), [&](std::size_t other) { return other != object; });
        });
        if (!isWantedByOthers)
            pair(object, *only);
    }
}

/// Notes which objects and sources have to be told apart. Groups are those of kind and size.
void FolderMatcher::findRivals()
{
    m_isRivalObject.assign(m_kept.size(), false);
    m_isRivalCandidate.assign(m_candidates.size(), false);
    for (std::size_t object = 0; object < m_kept.size(); ++object) {
        if (m_kept[object].source != noSource)
            continue;
        for (const std::uint64_t key : m_groupsOfObject[object]) {
            const auto found = m_groups.find(key);
            if (found == m_groups.end())
                continue;
            m_isRivalObject[object] = true;
            for (const std::uint32_t candidate : found->second)
                m_isRivalCandidate[candidate] = true;
            found->second.clear(); // told; the group stays, for the objects that share it
        }
    }
}

bool FolderMatcher::takeFree(Pass pass, std::size_t object)
{
    for (const std::uint64_t key : m_groupsOfObject[object]) {
        const auto found = m_groups.find(key);
        if (found == m_groups.end())
            continue;
        const Group &group = found->second;
        std::size_t &first = m_firstFree[key];
        while (first < group.size() && m_candidates[group[first]].owner != noObject)
            ++first;
        for (std::size_t at = first; at < group.size() && m_stepsLeft > 0; ++at) {
            if (m_candidates[group[at]].owner != noObject)
                continue;
            --m_stepsLeft;
            if (!fits(pass, object, m_candidates[group[at]]))
                continue;
            pair(object, group[at]);
            return true;
        }
    }
    return false;
}

/// Looks for a chain of objects each of which can give its source to the one before and has another for itself, the
/// shortest first. Without one, the object is left to the next pass, which asks for less.
void FolderMatcher::takeFromAnother(Pass pass, std::size_t object)
{
    struct Step {
        std::size_t object;
        std::uint32_t candidate; ///< that the object wants; its owner is the next object
        std::size_t before; ///< index of the step that wants this object's own candidate
    };
    constexpr std::size_t noStep = std::numeric_limits<std::size_t>::max();
    std::vector<Step> steps;
    std::vector<std::pair<std::size_t, std::size_t>> open = {{object, noStep}};
    std::unordered_set<std::uint32_t> visited;
    for (std::size_t next = 0; next < open.size(); ++next) {
        const auto [taker, before] = open[next];
        for (const std::uint64_t key : m_groupsOfObject[taker]) {
            const auto found = m_groups.find(key);
            if (found == m_groups.end())
                continue;
            for (const std::uint32_t index : found->second) {
                if (m_stepsLeft == 0)
                    return;
                --m_stepsLeft;
                if (visited.contains(index) || !fits(pass, taker, m_candidates[index]))
                    continue;
                visited.insert(index);
                steps.push_back({taker, index, before});
                const std::size_t owner = m_candidates[index].owner;
                if (owner != noObject) {
                    open.emplace_back(owner, steps.size() - 1);
                    continue;
                }
                for (std::size_t step = steps.size() - 1; step != noStep; step = steps[step].before)
                    pair(steps[step].object, steps[step].candidate);
                return;
            }
        }
    }
}

void FolderMatcher::pair(std::size_t object, std::uint32_t candidate)
{
    m_kept[object].source = m_candidates[candidate].source;
    m_candidates[candidate].owner = object;
}

} // namespace Tessaron
