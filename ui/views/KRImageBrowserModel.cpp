#include "platform/foundation/RunLoopQueue.h"
#include "ui/views/Thumbnail.h"

#include <QCache>
#include <QPainter>
#include <QPixmap>
#include <QSet>

#include <TessaronClassesUI/KRImageBrowserItem.h>
#include <TessaronClassesUI/KRImageBrowserModel.h>
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <stop_token>
#include <system_error>
#include <thread>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr QSize usualSize(128, 128);
constexpr qsizetype keptBytes = qsizetype(64) << 20;
/// More are not shown at a time; of those that were scrolled past, the oldest are dropped until they are asked for
/// again.
constexpr std::size_t mostRequests = 256;

QPixmap centred(const QImage &image, QSize points, qreal ratio)
{
    QPixmap pixmap(points * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    if (image.isNull())
        return pixmap;
    QImage scaled = image;
    scaled.setDevicePixelRatio(ratio);
    const QSizeF size = scaled.deviceIndependentSize();
    QPainter(&pixmap).drawImage(QPointF((points.width() - size.width()) / 2, (points.height() - size.height()) / 2),
                                scaled);
    return pixmap;
}

} // namespace

/// Makes thumbnails on a few threads, those first that were asked for last.
class KRImageBrowserModel::Thumbnails
{
public:
    struct Kept {
        QPixmap pixmap;
        QString problem;
    };

    Thumbnails(KRImageBrowserModel &model, QSize points, qreal ratio)
        : m_model(model)
        , m_points(points)
        , m_ratio(ratio)
        , m_blank(centred({}, points, ratio))
        , m_kept(keptBytes)
        , m_mostThreads(std::max(2u, std::thread::hardware_concurrency()) - 1)
    {
    }
    /// Waits for the pictures that are being read.
    ~Thumbnails()
    {
        for (std::jthread &thread : m_threads)
            thread.request_stop();
    }
    Thumbnails(const Thumbnails &) = delete;
    Thumbnails &operator=(const Thumbnails &) = delete;

    [[nodiscard]] const QPixmap &blank() const { return m_blank; }

    /// Null until it is made; asks for it then.
    const Kept *find(const KRImageBrowserItem &item)
    {
        const QString uid = item.imageUID();
        if (const Kept *const kept = m_kept.object(uid))
            return kept;
        if (m_awaited.contains(uid))
            return nullptr;
        if (isReady())
            ask({uid, item.imageRepresentation()});
        return nullptr;
    }

    [[nodiscard]] QString problem(const QString &uid) const
    {
        const Kept *const kept = m_kept.object(uid);
        return kept ? kept->problem : QString();
    }

private:
    struct Request {
        QString uid;
        QString path;
    };

    /// Whether there is a thread to ask. As long as the system gives none, pictures stay blank.
    bool isReady()
    {
        if (m_threads.size() < m_mostThreads) {
            try {
                m_threads.emplace_back([this](const std::stop_token &stop) { makeAll(stop); });
            } catch (const std::system_error &) {
            }
        }
        return !m_threads.empty();
    }

    void ask(Request request)
    {
        m_awaited.insert(request.uid);
        std::optional<QString> dropped;
        {
            const std::lock_guard lock(m_mutex);
            if (m_requests.size() >= mostRequests) {
                dropped = m_requests.front().uid;
                m_requests.pop_front();
            }
            m_requests.push_back(std::move(request));
        }
        if (dropped)
            m_awaited.remove(*dropped);
        m_changed.notify_one();
    }

    /// On a thread of its own.
    void makeAll(const std::stop_token &stop)
    {
        while (const std::optional<Request> request = takeLatest(stop)) {
            const Thumbnail made = thumbnailOfFile(request->path, m_points * m_ratio);
            m_made.perform([this, made, uid = request->uid] { keep(uid, made); });
        }
    }

    /// Waits for one; empty once the thread is to end.
    std::optional<Request> takeLatest(const std::stop_token &stop)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, stop, [this] { return !m_requests.empty(); });
        if (stop.stop_requested())
            return std::nullopt;
        std::optional<Request> latest = std::move(m_requests.back());
        m_requests.pop_back();
        return latest;
    }

    void keep(const QString &uid, const Thumbnail &made)
    {
        m_awaited.remove(uid);
        auto kept = std::make_unique<Kept>();
        kept->pixmap = centred(made.image, m_points, m_ratio);
        kept->problem = made.problem;
        const qsizetype bytes = qsizetype(kept->pixmap.width()) * kept->pixmap.height() * 4;
        m_kept.insert(uid, kept.release(), bytes);
        m_model.thumbnailIsReady(uid);
    }

    KRImageBrowserModel &m_model;
    const QSize m_points;
    const qreal m_ratio;
    const QPixmap m_blank;
    QCache<QString, Kept> m_kept; ///< also of pictures that could not be read: they are not tried again and again
    QSet<QString> m_awaited;

    std::mutex m_mutex; ///< guards the requests
    std::condition_variable_any m_changed;
    std::deque<Request> m_requests;

    RunLoopQueue m_made; ///< its end silences what is on its way to the main thread
    const std::size_t m_mostThreads;
    std::vector<std::jthread> m_threads; ///< last, so that they are joined first
};

KRImageBrowserModel::KRImageBrowserModel(QObject *parent)
    : QAbstractListModel(parent)
{
    setThumbnailSize(usualSize);
}

KRImageBrowserModel::~KRImageBrowserModel() = default;

void KRImageBrowserModel::setItems(const std::vector<std::shared_ptr<KRImageBrowserItem>> &items)
{
    beginResetModel();
    m_items = items;
    std::erase(m_items, nullptr);
    m_rows.clear();
    for (std::size_t row = 0; row < m_items.size(); ++row)
        m_rows.insert(m_items[row]->imageUID(), int(row));
    endResetModel();
}

std::shared_ptr<KRImageBrowserItem> KRImageBrowserModel::item(int row) const
{
    return row >= 0 && std::size_t(row) < m_items.size() ? m_items[std::size_t(row)] : nullptr;
}

void KRImageBrowserModel::setThumbnailSize(QSize size, qreal devicePixelRatio)
{
    const QSize points = size.expandedTo({1, 1});
    if (points == m_thumbnailSize && devicePixelRatio == m_devicePixelRatio)
        return;
    m_thumbnailSize = points;
    m_devicePixelRatio = devicePixelRatio;
    m_thumbnails = std::make_unique<Thumbnails>(*this, points, devicePixelRatio);
    if (!m_items.empty())
        Q_EMIT dataChanged(index(0), index(int(m_items.size()) - 1), {Qt::DecorationRole});
}

int KRImageBrowserModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

QVariant KRImageBrowserModel::data(const QModelIndex &index, int role) const
{
    const std::shared_ptr<KRImageBrowserItem> shown = index.isValid() ? item(index.row()) : nullptr;
    if (!shown)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return shown->imageTitle();
    case Qt::ToolTipRole: {
        const QString problem = m_thumbnails->problem(shown->imageUID());
        return problem.isEmpty() ? shown->imageTitle() : problem;
    }
    case Qt::DecorationRole: {
        const Thumbnails::Kept *const kept = m_thumbnails->find(*shown);
        return kept ? kept->pixmap : m_thumbnails->blank();
    }
    case ImageUIDRole:
        return shown->imageUID();
    case ImageRepresentationRole:
        return shown->imageRepresentation();
    default:
        return {};
    }
}

void KRImageBrowserModel::thumbnailIsReady(const QString &imageUID)
{
    const QList<int> rows = m_rows.values(imageUID);
    for (const int row : rows)
        Q_EMIT dataChanged(index(row), index(row), {Qt::DecorationRole, Qt::ToolTipRole});
}

} // namespace Tessaron
