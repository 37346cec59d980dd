#pragma once

#include "platform/foundation/Export.h"

#include <QAbstractListModel>
#include <QMultiHash>
#include <QSize>

#include <memory>
#include <vector>

namespace Tessaron
{

class KRImageBrowserItem;

/// A list of pictures for a QListView: titles, and thumbnails that are made when a view first asks for them, off the
/// main thread. Until a thumbnail is there a blank of the same size stands for it, so that nothing moves. Of all
/// thumbnails the 64 MB that were shown last are kept. On the main thread.
///
/// The destructor waits for the pictures that are being read just now, not for those that were asked for besides.
class TESSARON_EXPORT KRImageBrowserModel : public QAbstractListModel
{
    Q_OBJECT

public:
    /// Besides Qt::DisplayRole (the title), Qt::DecorationRole (a QPixmap of thumbnailSize()) and Qt::ToolTipRole (the
    /// title, or why there is no picture).
    enum Role : int {
        ImageUIDRole = Qt::UserRole, ///< QString
        ImageRepresentationRole, ///< QString: the path of the picture
    };

    explicit KRImageBrowserModel(QObject *parent = nullptr);
    ~KRImageBrowserModel() override;

    /// Replaces the list; null items are left out.
    void setItems(const std::vector<std::shared_ptr<KRImageBrowserItem>> &items);
    /// Null for a row that is not there.
    [[nodiscard]] std::shared_ptr<KRImageBrowserItem> item(int row) const;

    /// In points; 128 by 128 at first. Pictures are made smaller to fit, never larger.
    [[nodiscard]] QSize thumbnailSize() const { return m_thumbnailSize; }
    /// Forgets all thumbnails where the size or the ratio (pixels to a point) changes.
    void setThumbnailSize(QSize size, qreal devicePixelRatio = 1);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    class Thumbnails;

    void thumbnailIsReady(const QString &imageUID);

    std::vector<std::shared_ptr<KRImageBrowserItem>> m_items;
    QMultiHash<QString, int> m_rows; ///< of each identifier
    QSize m_thumbnailSize;
    qreal m_devicePixelRatio = 1;
    std::unique_ptr<Thumbnails> m_thumbnails;
};

} // namespace Tessaron
