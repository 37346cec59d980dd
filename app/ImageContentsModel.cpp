#include "app/ImageContentsModel.h"

#include "app/Words.h"

#include <QApplication>
#include <QDateTime>
#include <QIcon>
#include <QLocale>
#include <QStyle>

#include <algorithm>
#include <platform/discimage/volume/VolumeReader.h>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::uint32_t framesPerSecond = 75;

} // namespace

struct ImageContentsModel::Node {
    enum class Kind : std::uint8_t { Volume, Folder, File, Other, Track };
    enum class State : std::uint8_t { Unlisted, Waiting, Listed };

    Node *parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;
    int row = 0;
    Kind kind = Kind::File;
    State state = State::Listed;
    QString name;
    QString toolTip;
    QString sizeText; ///< in place of bytes
    std::uint64_t size = 0;
    std::optional<std::int64_t> modified; ///< seconds since 1970
    std::uint32_t track = 0; ///< its number; 0 for everything else
    bool isSound = false;
    VolumeKind filesystem = VolumeKind::ISO9660; ///< of volumes
    std::optional<std::size_t> part; ///< of the image that has the volume
    const VolumeReader *reader = nullptr; ///< of volumes and folders
    VolumeObject object; ///< the folder

    Node &add(std::unique_ptr<Node> child)
    {
        child->parent = this;
        child->row = int(children.size());
        children.push_back(std::move(child));
        return *children.back();
    }
};

/// What the thread finds in a folder.
struct ImageContentsModel::Listing {
    std::vector<std::unique_ptr<Node>> nodes;
    NSError error;
};

ImageContentsModel::ImageContentsModel(QObject *parent)
    : QAbstractItemModel(parent)
    , m_root(std::make_unique<Node>())
{
}

ImageContentsModel::~ImageContentsModel() = default;

void ImageContentsModel::setImage(std::shared_ptr<const OpenedDiscImage> image,
                                  const std::vector<VolumeCensus> &censuses,
                                  const std::vector<std::vector<VolumeCensus>> &partCensuses)
{
    beginResetModel();
    m_work.cancel();
    m_waiting.clear();
    m_listing = nullptr;
    m_root = std::make_unique<Node>();
    m_image = std::move(image);
    if (m_image) {
        addVolumes(m_image->volumes, censuses, std::nullopt);
        for (std::size_t part = 0; part < m_image->parts.size(); ++part)
            addVolumes(m_image->parts[part].volumes,
                       part < partCensuses.size() ? partCensuses[part] : std::vector<VolumeCensus>(), part);
    }
    endResetModel();
}

void ImageContentsModel::addVolumes(const std::vector<FoundVolume> &volumes, const std::vector<VolumeCensus> &censuses,
                                    std::optional<std::size_t> part)
{
    for (std::size_t index = 0; index < volumes.size(); ++index) {
        const FoundVolume &volume = volumes[index];
        auto node = std::make_unique<Node>();
        node->kind = Node::Kind::Volume;
        node->name = volumeKindName(volume.kind);
        if (volume.reader && !volume.reader->facts().name.isEmpty())
            node->name += QStringLiteral(" “%1”").arg(displayableText(volume.reader->facts().name));
        if (part)
            node->name += QStringLiteral(", %1").arg(m_image->parts[*part].name);
        node->filesystem = volume.kind;
        node->part = part;
        if (volume.error)
            node->toolTip = errorText(volume.error);
        if (volume.reader) {
            node->reader = volume.reader.get();
            node->object = volume.reader->root();
            node->state = Node::State::Unlisted;
        }
        if (index < censuses.size())
            node->sizeText = tr("%n file(s)", nullptr, int(censuses[index].files)) + QStringLiteral(", ")
                + Desktop::sizeText(censuses[index].bytes);
        m_root->add(std::move(node));
    }
}

void ImageContentsModel::setTracks(const DescribedDisc &disc)
{
    const std::vector<const DiscTrack *> tracks = disc.disc.contents.tracks();
    if (tracks.empty())
        return;
    const int first = int(m_root->children.size());
    beginInsertRows({}, first, first + int(tracks.size()) - 1);
    for (const DiscTrack *const track : tracks) {
        auto node = std::make_unique<Node>();
        node->kind = Node::Kind::Track;
        node->track = track->number;
        node->isSound = track->isAudio();
        const QString number = tr("Track %1").arg(track->number);
        node->name = track->isAudio() ? tr("%1, sound").arg(number) : tr("%1, data").arg(number);
        node->size = track->length * track->blockSize;
        if (track->isAudio())
            node->sizeText = durationText(std::chrono::seconds(track->length / framesPerSecond));
        m_root->add(std::move(node));
    }
    endInsertRows();
}

std::uint32_t ImageContentsModel::trackAt(const QModelIndex &index) const
{
    return index.isValid() ? nodeAt(index).track : 0;
}

std::optional<ImagePlace> ImageContentsModel::placeAt(const QModelIndex &index) const
{
    if (!index.isValid())
        return std::nullopt;
    const Node *node = &nodeAt(index);
    ImagePlace place;
    while (node->kind != Node::Kind::Volume) {
        if (node->kind == Node::Kind::Track)
            return std::nullopt;
        const QByteArray name = fileSystemRepresentation(node->name);
        place.path = place.path.isEmpty() ? name : name + '/' + place.path;
        node = node->parent;
    }
    place.filesystem = node->filesystem;
    place.part = node->part;
    return place;
}

bool ImageContentsModel::isSound(std::uint32_t track) const
{
    return std::any_of(m_root->children.begin(), m_root->children.end(),
                       [track](const auto &node) { return node->track == track && node->isSound; });
}

ImageContentsModel::Node &ImageContentsModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? *static_cast<Node *>(index.internalPointer()) : *m_root;
}

QModelIndex ImageContentsModel::indexOf(const Node &node) const
{
    return node.parent ? createIndex(node.row, Name, &node) : QModelIndex();
}

QModelIndex ImageContentsModel::index(int row, int column, const QModelIndex &parent) const
{
    const Node &above = nodeAt(parent);
    if (row < 0 || column < 0 || column >= columnCountOfAll || row >= int(above.children.size()))
        return {};
    return createIndex(row, column, above.children[std::size_t(row)].get());
}

QModelIndex ImageContentsModel::parent(const QModelIndex &index) const
{
    if (!index.isValid() || !nodeAt(index).parent)
        return {};
    return indexOf(*nodeAt(index).parent);
}

int ImageContentsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() && parent.column() != Name ? 0 : int(nodeAt(parent).children.size());
}

int ImageContentsModel::columnCount(const QModelIndex &) const
{
    return columnCountOfAll;
}

bool ImageContentsModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0 || (parent.column() <= Name && nodeAt(parent).state != Node::State::Listed);
}

bool ImageContentsModel::canFetchMore(const QModelIndex &parent) const
{
    return nodeAt(parent).state == Node::State::Unlisted;
}

void ImageContentsModel::fetchMore(const QModelIndex &parent)
{
    Node &folder = nodeAt(parent);
    if (folder.state != Node::State::Unlisted)
        return;
    folder.state = Node::State::Waiting;
    m_waiting.push_back(&folder);
    if (!m_listing)
        listNext();
}

void ImageContentsModel::listNext()
{
    m_listing = m_waiting.front();
    m_waiting.pop_front();
    const auto listing = std::make_shared<Listing>();
    m_work.start(
        [image = m_image, reader = m_listing->reader, folder = m_listing->object,
         listing](const std::stop_token &stop) {
            listing->error = reader->listFolder(folder, [&](const VolumeObject &object) {
                auto node = std::make_unique<Node>();
                node->name = stringWithFileSystemRepresentation(object.name);
                node->size = object.size;
                if (object.modified)
                    node->modified = object.modified->seconds;
                switch (object.kind) {
                case VolumeObjectKind::Folder:
                    node->kind = Node::Kind::Folder;
                    node->state = Node::State::Unlisted;
                    node->reader = reader;
                    node->object = object;
                    break;
                case VolumeObjectKind::File:
                    break;
                case VolumeObjectKind::SymbolicLink:
                    node->toolTip = displayableText(stringWithFileSystemRepresentation(object.linkTarget));
                    [[fallthrough]];
                case VolumeObjectKind::Other:
                    node->kind = Node::Kind::Other;
                    break;
                }
                listing->nodes.push_back(std::move(node));
                return !stop.stop_requested();
            });
            std::stable_sort(listing->nodes.begin(), listing->nodes.end(), [](const auto &one, const auto &other) {
                const bool isFolder = one->kind == Node::Kind::Folder;
                return isFolder != (other->kind == Node::Kind::Folder) ? isFolder
                                                                       : one->name.localeAwareCompare(other->name) < 0;
            });
        },
        [this, listing] { takeListing(*m_listing, listing); });
}

void ImageContentsModel::takeListing(Node &folder, const std::shared_ptr<Listing> &listing)
{
    folder.state = Node::State::Listed;
    const QModelIndex index = indexOf(folder);
    if (!listing->nodes.empty()) {
        beginInsertRows(index, 0, int(listing->nodes.size()) - 1);
        for (std::unique_ptr<Node> &node : listing->nodes)
            folder.add(std::move(node));
        endInsertRows();
    }
    Q_EMIT dataChanged(index, index);
    m_listing = nullptr; // only now: views that hear of the rows ask for those below
    if (!m_waiting.empty())
        listNext();
    Q_EMIT listed(listing->error ? errorText(listing->error) : QString());
}

Qt::ItemFlags ImageContentsModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    return index.isValid() && nodeAt(index).kind != Node::Kind::Track ? flags | Qt::ItemIsDragEnabled : flags;
}

QVariant ImageContentsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node &node = nodeAt(index);
    if (role == Qt::ToolTipRole || role == Qt::AccessibleDescriptionRole)
        return node.toolTip;
    if (role == Qt::TextAlignmentRole && index.column() == Size)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::DecorationRole && index.column() == Name) {
        const bool isFolder = node.kind == Node::Kind::Folder;
        const bool isDisc = node.kind == Node::Kind::Volume || node.kind == Node::Kind::Track;
        return QApplication::style()->standardIcon(isDisc         ? QStyle::SP_DriveCDIcon
                                                       : isFolder ? QStyle::SP_DirIcon
                                                                  : QStyle::SP_FileIcon);
    }
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case Name:
        return displayableText(node.name);
    case Size:
        return !node.sizeText.isEmpty()                                       ? node.sizeText
            : node.kind == Node::Kind::File || node.kind == Node::Kind::Track ? Desktop::sizeText(node.size)
                                                                              : QString();
    default:
        return node.modified ? QLocale().toString(QDateTime::fromSecsSinceEpoch(*node.modified), QLocale::ShortFormat)
                             : QString();
    }
}

QVariant ImageContentsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == Name ? tr("Name") : section == Size ? tr("Size") : tr("Modified");
}

} // namespace Tessaron::Desktop
