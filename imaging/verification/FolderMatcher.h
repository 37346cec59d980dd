#pragma once

#include "imaging/verification/ContentPlan.h"
#include "imaging/verification/Fingerprints.h"
#include "imaging/verification/NameRules.h"
#include "imaging/verification/SourceIndex.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Tessaron
{

/// An object of a folder, and the source that it was made of; noSource when no source fits.
struct MatchedObject {
    VolumeObject object;
    SourceNumber source = noSource;
};

/// Finds out which source of a folder each object of the same folder of a volume was made of. Where the filesystem
/// keeps the name, that says it. Where it had to change names, several sources may fit one name, so all such objects of
/// the folder are considered together: each pass pairs those that agree in less than the pass before, in the place of
/// the contents, in the contents (for a folder, all that is in it) and the time, in kind and size, and at last in the
/// name alone.
///
/// Time grows linearly with the objects of the folder, save that names which fit several sources in different ways are
/// tried out, up to a limit.
class FolderMatcher
{
public:
    /// `plan` knows where the volumes before this one have the contents of files.
    FolderMatcher(const VolumeReader &reader, const SourceIndex &sources, const ContentPlan &plan, SourceNumber folder,
                  bool hasRockRidge);

    /// The source that the name says the object was made of, at once; noSource when the names of the folder have to be
    /// considered together.
    [[nodiscard]] SourceNumber sourceByName(const VolumeObject &object) const;
    /// Keeps an object for matchKept().
    void keep(const VolumeObject &object) { m_kept.push_back({object, noSource}); }
    /// Pairs the objects that were kept with sources of the folder that no object of this volume has been paired with
    /// (SourceObject::seenIn), and hands them out. Incomplete after a stop.
    [[nodiscard]] std::vector<MatchedObject> matchKept(const std::stop_token &stop);

private:
    enum class Pass : std::uint8_t { Place, OnlyChoice, ContentsAndTime, Contents, KindAndSize, Kind, Name };

    struct Candidate {
        SourceNumber source = noSource;
        ComparableName name;
        std::size_t owner; ///< index of the object paired with it
    };
    using Group = std::vector<std::uint32_t>; ///< of candidates that agree in a form of the name and the evidence

    void makeCandidates(const std::stop_token &stop);
    void run(Pass pass, const std::stop_token &stop);
    void makeGroups(Pass pass, const std::stop_token &stop);
    [[nodiscard]] std::vector<std::uint64_t> groupsOfCandidate(Pass pass, const Candidate &candidate);
    [[nodiscard]] std::vector<std::uint64_t> keysOf(const ComparableName &name, bool isRecorded) const;
    void findRivals();
    void pairOnlyChoices();
    [[nodiscard]] std::uint64_t evidenceOfTime(FileTime time) const;
    [[nodiscard]] std::vector<std::uint64_t> evidenceOfCandidate(Pass pass, const Candidate &candidate);
    [[nodiscard]] std::optional<std::uint64_t> evidenceOfObject(Pass pass, const VolumeObject &object);
    [[nodiscard]] bool fits(Pass pass, std::size_t object, const Candidate &candidate) const;
    [[nodiscard]] bool takeFree(Pass pass, std::size_t object);
    void takeFromAnother(Pass pass, std::size_t object);
    void pair(std::size_t object, std::uint32_t candidate);
    [[nodiscard]] bool isSeen(SourceNumber source) const;

    const VolumeReader &m_reader;
    const VolumeKind m_kind;
    const SourceIndex &m_sources;
    const ContentPlan &m_plan;
    const SourceNumber m_folder;
    const bool m_hasRockRidge;
    std::unordered_set<QString> m_changedNames; ///< the forms of names that the filesystem cannot hold
    bool m_hasLongNames = false; ///< that may have been cut

    std::vector<MatchedObject> m_kept;
    std::vector<ComparableName> m_names; ///< of the kept objects
    std::vector<Candidate> m_candidates;
    std::optional<Fingerprints> m_fingerprints;
    std::unordered_map<std::uint64_t, Group> m_groups; ///< of the pass that runs
    std::unordered_map<std::uint64_t, std::size_t> m_firstFree; ///< by group: none before it is free
    std::vector<std::vector<std::uint64_t>> m_groupsOfObject; ///< those that an object belongs to
    std::vector<bool> m_isRivalObject; ///< sources of the same form of the name, kind and size are free
    std::vector<bool> m_isRivalCandidate;
    std::uint32_t m_granularity = 1; ///< of times in this volume, nanoseconds
    std::uint64_t m_stepsLeft = 0;
};

/// True when an object of the volume may stand for the source as far as its kind goes: where a filesystem has no links
/// or special files, there may be empty files in their place, and so, in the plain view of an image with Rock Ridge,
/// for folders that were moved up.
[[nodiscard]] bool mayStandFor(VolumeKind volume, bool hasRockRidge, const VolumeObject &object,
                               const SourceObject &source);

} // namespace Tessaron
