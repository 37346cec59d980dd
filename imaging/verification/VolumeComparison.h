#pragma once

#include "imaging/verification/ContentPlan.h"
#include "imaging/verification/SourceIndex.h"
#include "platform/discimage/volume/VolumeReader.h"
#include <TessaronClasses/ImageDifferences.h>

#include <QHash>
#include <QSet>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// What volumes that describe one another's objects share while they are compared: the folders of ISO 9660 and Rock
/// Ridge are the same bytes, so that the names of the one say whose folders those of the other are.
using FolderPlaces = QHash<quint64, SourceNumber>;

/// Walks one volume beside the sources and compares names, kinds, sizes, times and link targets. Where
/// contents lie goes into the plan.
class VolumeComparison
{
public:
    /// `rockRidgeFolders`: filled by the view with Rock Ridge, used by the one without; may be null.
    /// `hasRockRidge`: links and special files are there in plain ISO 9660, as empty files.
    VolumeComparison(const VolumeReader &reader, SourceIndex &sources, ContentPlan &contents,
                     ImageDifferenceList &differences, FolderPlaces *rockRidgeFolders, bool hasRockRidge);

    [[nodiscard]] VolumeVerification run(const std::stop_token &stop);

private:
    using NameKeys = QMultiHash<QByteArray, SourceNumber>;

    struct Level {
        SourceNumber folder = noSource;
        bool isWhole = true; ///< its listing did not fail
        QSet<QByteArray> changedNames; ///< keys of the children whose names the filesystem cannot hold
    };

    [[nodiscard]] bool enter(const QByteArray &path, const VolumeObject &folder);
    void leave();
    void take(const VolumeObject &object);
    void takePending();
    void reportExtra(const VolumeObject &object);
    [[nodiscard]] SourceNumber sourceWithName(const VolumeObject &object) const;
    [[nodiscard]] SourceNumber sourceAtPlace(const VolumeObject &object) const;
    [[nodiscard]] bool isAmbiguous(const VolumeObject &object) const;
    [[nodiscard]] SourceNumber sourceByKey(const VolumeObject &object, NameKeys &keys) const;
    [[nodiscard]] SourceNumber sourceByRules(const VolumeObject &object, std::vector<SourceNumber> &candidates,
                                             std::size_t *next);
    [[nodiscard]] SourceNumber likeliest(const VolumeObject &object, const std::vector<SourceNumber> &sources) const;
    [[nodiscard]] std::uint64_t likeness(const VolumeObject &object, SourceNumber source) const;
    [[nodiscard]] bool belongsToRelocation(const VolumeObject &folder) const;
    [[nodiscard]] SourceNumber sourceByNameAlone(const VolumeObject &object, std::vector<SourceNumber> &candidates);
    [[nodiscard]] bool hasNameOf(const VolumeObject &object, SourceNumber source) const;
    [[nodiscard]] bool mayBe(const VolumeObject &object, SourceNumber source) const;
    [[nodiscard]] bool fitsKind(const VolumeObject &object, const SourceObject &source) const;
    void compare(const VolumeObject &object, SourceNumber source);
    void compareTime(const VolumeObject &object, SourceNumber source);
    void compareLink(const VolumeObject &object, SourceNumber source);
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
    FolderPlaces *const m_rockRidgeFolders;
    const bool m_hasRockRidge;
    const std::optional<std::int64_t> m_latestTime; ///< of SOURCE_DATE_EPOCH
    VolumeVerification m_result;
    std::vector<Level> m_levels;
    std::vector<VolumeObject> m_pending; ///< objects of the folder whose names are not those of a source
    std::size_t m_triesLeft = 0; ///< for the pending objects of one folder
    FolderPlaces m_entered; ///< folders that are still to be entered, by their mark
};

} // namespace Tessaron
