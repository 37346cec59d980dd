#pragma once

#include "app/BackgroundWork.h"

#include <TessaronClasses/DescribedDisc.h>
#include <TessaronClasses/OpenedDiscImage.h>
#include <TessaronClasses/VolumeCensus.h>

#include <QAbstractItemModel>

#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace Tessaron::Desktop
{

/// Something in a filesystem of an image.
struct ImagePlace {
    VolumeKind filesystem = VolumeKind::ISO9660;
    std::optional<std::size_t> part; ///< see ExtractFilesOrder
    QByteArray path; ///< from the root; empty for all that the filesystem has

    friend bool operator==(const ImagePlace &, const ImagePlace &) = default;
};

/// What an image holds, as views see it: its filesystems with their folders and files, and its tracks. A folder is
/// listed in the background when it is first opened. On the main thread.
class ImageContentsModel final : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column : std::uint8_t { Name, Size, Modified };
    static constexpr int columnCountOfAll = 3;

    explicit ImageContentsModel(QObject *parent = nullptr);
    ~ImageContentsModel() override;

    /// Shows the filesystems of an image, and how much is in each; null for no image. `censuses` are those of its
    /// volumes and, in `partCensuses`, of its parts, as InspectJob gives them.
    void setImage(std::shared_ptr<const OpenedDiscImage> image, const std::vector<VolumeCensus> &censuses,
                  const std::vector<std::vector<VolumeCensus>> &partCensuses);
    /// Shows its tracks below the filesystems.
    void setTracks(const DescribedDisc &disc);
    /// The number of the track in a row; 0 for other rows.
    [[nodiscard]] std::uint32_t trackAt(const QModelIndex &index) const;
    /// What a row shows of a filesystem; absent for other rows.
    [[nodiscard]] std::optional<ImagePlace> placeAt(const QModelIndex &index) const;
    /// True for the number of a track of sound.
    [[nodiscard]] bool isSound(std::uint32_t track) const;
    [[nodiscard]] bool isListing() const { return m_listing != nullptr; }
    void letGo() { m_work.letGo(); }

    // QAbstractItemModel
    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &index) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] bool hasChildren(const QModelIndex &parent = {}) const override;
    [[nodiscard]] bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    /// A folder was listed, in part only when there is an error.
    void listed(const QString &error);

private:
    struct Node;
    struct Listing;

    [[nodiscard]] Node &nodeAt(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex indexOf(const Node &node) const;
    void addVolumes(const std::vector<FoundVolume> &volumes, const std::vector<VolumeCensus> &censuses,
                    std::optional<std::size_t> part);
    void listNext();
    void takeListing(Node &folder, const std::shared_ptr<Listing> &listing);

    std::shared_ptr<const OpenedDiscImage> m_image; ///< owns the readers
    std::unique_ptr<Node> m_root;
    std::deque<Node *> m_waiting; ///< folders to be listed
    Node *m_listing = nullptr; ///< the one that is being listed
    BackgroundWork m_work; ///< refers to the image, so it goes first
};

} // namespace Tessaron::Desktop
