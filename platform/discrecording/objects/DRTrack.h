#pragma once

#include "platform/discrecording/objects/DRTrackProducer.h"
#include "platform/foundation/Export.h"

#include <QString>
#include <QVariantMap>

#include <memory>
#include <variant>
#include <vector>

namespace Tessaron
{

class DRFolder;

// Keys of track properties, and the values' types.
TESSARON_EXPORT extern const QString DRTrackLengthKey; ///< quint64, blocks
TESSARON_EXPORT extern const QString DRPreGapLengthKey; ///< quint32, blocks
TESSARON_EXPORT extern const QString
    DRPostGapLengthKey; ///< quint32, blocks of silence or zeros that end the track, part of its length
TESSARON_EXPORT extern const QString DRBlockSizeKey; ///< quint32, bytes
TESSARON_EXPORT extern const QString DRBlockTypeKey; ///< int: 0 audio, 8 mode 1, 9 to 13 the forms of mode 2
TESSARON_EXPORT extern const QString DRDataFormKey; ///< int
TESSARON_EXPORT extern const QString DRTrackModeKey; ///< int
TESSARON_EXPORT extern const QString DRSessionFormatKey; ///< int
TESSARON_EXPORT extern const QString DRIndexPointsKey; ///< QVariantList of quint32, frames
TESSARON_EXPORT extern const QString DRSerialCopyManagementStateKey; ///< QString, one of the three below
TESSARON_EXPORT extern const QString DRSCMSCopyrightFree;
TESSARON_EXPORT extern const QString DRSCMSCopyrightProtectedOriginal;
TESSARON_EXPORT extern const QString DRSCMSCopyrightProtectedCopy;
TESSARON_EXPORT extern const QString DRAudioPreEmphasisKey; ///< bool
TESSARON_EXPORT extern const QString DRAudioFourChannelKey; ///< bool

/// One track of a disc to be made: a filesystem track made from a root folder, or a track whose blocks a producer
/// delivers. Not thread-safe.
class TESSARON_EXPORT DRTrack
{
public:
    /// A data track holding the tree below `root`, with the filesystems that its masks ask for. Properties: block size
    /// 2048, block type 8, data form 16, track mode 4, session format 0. Null for a null folder.
    [[nodiscard]] static std::shared_ptr<DRTrack> trackForRootFolder(const std::shared_ptr<DRFolder> &root);
    /// A track whose data the producer delivers. The producer is kept alive by the track. Properties start empty; a
    /// burn needs at least DRBlockSizeKey and DRTrackLengthKey. Null for a null producer.
    [[nodiscard]] static std::shared_ptr<DRTrack> trackWithProducer(const std::shared_ptr<DRTrackProducer> &producer);

    [[nodiscard]] QVariantMap properties() const { return m_properties; }
    void setProperties(const QVariantMap &properties) { m_properties = properties; }

    /// Null for a track with a producer.
    [[nodiscard]] std::shared_ptr<DRFolder> rootFolder() const { return m_root; }
    /// Null for a filesystem track.
    [[nodiscard]] std::shared_ptr<DRTrackProducer> producer() const { return m_producer; }

private:
    DRTrack() = default;

    std::shared_ptr<DRFolder> m_root;
    std::shared_ptr<DRTrackProducer> m_producer;
    QVariantMap m_properties;
};

/// What a burn accepts: nothing, one track, an array of tracks, or an array of sessions.
using DRTrackArray = std::vector<std::shared_ptr<DRTrack>>;
using DRLayout = std::variant<std::monostate, std::shared_ptr<DRTrack>, DRTrackArray, std::vector<DRTrackArray>>;

/// True when the layout names no track at all: no value or a null track. An empty array is not null.
[[nodiscard]] TESSARON_EXPORT bool isNullLayout(const DRLayout &layout);
/// The tracks of all sessions in order, null entries included.
[[nodiscard]] TESSARON_EXPORT DRTrackArray tracksOfLayout(const DRLayout &layout);

} // namespace Tessaron
