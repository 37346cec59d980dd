#pragma once

#include "imaging/verification/ContentPlan.h"
#include "imaging/verification/FolderMatcher.h"
#include "imaging/verification/SourceIndex.h"
#include "platform/discimage/volume/VolumeReader.h"
#include <TessaronClasses/ImageDifferences.h>
#include <TessaronClasses/ImageVerification.h>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Tessaron
{

/// The directory records of a view with Rock Ridge, by their offsets in the image, and the sources that they describe.
/// The view without Rock Ridge has the same records: what one of them describes need not be found out again. 16 bytes
/// an object.
class RecordedSources
{
public:
    void add(std::uint64_t recordOffset, SourceNumber source) { m_records.emplace_back(recordOffset, source); }
    /// To be called between the last add() and the first sourceAt().
    void sort();
    [[nodiscard]] SourceNumber sourceAt(std::uint64_t recordOffset) const;

private:
    std::vector<std::pair<std::uint64_t, SourceNumber>> m_records;
};

/// Walks one volume beside the sources and compares names, kinds, sizes, times and link targets. Where contents lie
/// goes into the plan.
class VolumeComparison
{
public:
    /// `rockRidge`: filled by the view with Rock Ridge, used by the one without; null for the other filesystems, and
    /// for a plain view without Rock Ridge.
    VolumeComparison(const VolumeReader &reader, SourceIndex &sources, ContentPlan &contents,
                     ImageDifferenceList &differences, RecordedSources *rockRidge);
    /// Objects that the sources do not have are not differences.
    void allowExtra() { m_allowsExtra = true; }

    [[nodiscard]] VolumeVerification run(const std::stop_token &stop);

private:
    struct Level {
        SourceNumber folder = noSource;
        FolderMatcher matcher;
        bool isWhole = true; ///< its listing did not fail
    };

    [[nodiscard]] bool enter(const QByteArray &path, const VolumeObject &folder);
    void leave();
    void take(const VolumeObject &object);
    [[nodiscard]] SourceNumber sourceOfRecord(const VolumeObject &object) const;
    void settle(Level &level);
    [[nodiscard]] bool belongsToRelocation(const VolumeObject &folder) const;
    void compare(const VolumeObject &object, SourceNumber source);
    void compareTime(const VolumeObject &object, SourceNumber source);
    void compareLink(const VolumeObject &object, SourceNumber source);
    void reportExtra(const VolumeObject &object);
    void reportMissing(SourceNumber folder);
    [[nodiscard]] bool mayBeLeftOut(SourceNumber source) const;
    void differ(ImageDifference::Kind kind, const QByteArray &path, std::uint64_t offset, const QString &message);
    [[nodiscard]] bool isSeen(SourceNumber source) const { return (m_sources[source].seenIn & m_bit) != 0; }

    const VolumeReader &m_reader;
    const VolumeKind m_kind;
    const VolumeSet m_bit;
    SourceIndex &m_sources;
    ContentPlan &m_contents;
    ImageDifferenceList &m_differences;
    RecordedSources *const m_rockRidge;
    const std::optional<std::int64_t> m_latestTime; ///< of SOURCE_DATE_EPOCH
    std::stop_token m_stop;
    bool m_allowsExtra = false;
    VolumeVerification m_result;
    std::vector<Level> m_levels;
    std::unordered_map<std::uint64_t, SourceNumber> m_foldersToEnter; ///< by the reader's mark
};

} // namespace Tessaron
