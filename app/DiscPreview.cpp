#include "app/DiscPreview.h"

#include "app/AbandonedJob.h"
#include "app/DiscDocument.h"
#include "app/Words.h"

#include <QHash>

#include <platform/discrecording/objects/DRStorageReport.h>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

using namespace std::chrono_literals;

/// So that a disc that is being arranged is not looked at between two steps of it.
constexpr auto delayAfterChange = 700ms;
/// The copy of as many takes about as long as a frame or two.
constexpr std::uint32_t mostLookedAtUnasked = 20'000;
/// What a window lists of changes, and what the marks hold of them.
constexpr std::size_t mostChanges = 50'000;

/// Finds nodes by their paths on the disc, in a time that does not grow with their folders.
class NodesByPath
{
public:
    explicit NodesByPath(const DiscNode &root)
        : m_root(root)
    {
    }

    [[nodiscard]] const DiscNode *at(const QString &path)
    {
        const DiscNode *node = &m_root;
        for (const QString &name : path.split(u'/', Qt::SkipEmptyParts)) {
            node = childrenOf(*node).value(name);
            if (!node)
                return nullptr;
        }
        return node;
    }

private:
    const QHash<QString, const DiscNode *> &childrenOf(const DiscNode &folder)
    {
        const auto known = m_children.constFind(&folder);
        if (known != m_children.cend())
            return *known;
        QHash<QString, const DiscNode *> children;
        for (const std::unique_ptr<DiscNode> &child : folder.children)
            children.insert(child->name, child.get());
        return *m_children.insert(&folder, children);
    }

    const DiscNode &m_root;
    QHash<const DiscNode *, QHash<QString, const DiscNode *>> m_children;
};

QString sentenceFor(const DRStorageReportItem &item)
{
    const QString tree = discTreeTitle(item.tree);
    switch (item.kind) {
    case DRStorageReportItem::Kind::Renamed:
        return DiscPreview::tr("%1 calls it %2").arg(tree, displayableText(item.nameGiven));
    case DRStorageReportItem::Kind::Refused:
        return DiscPreview::tr("Not in %1: %2").arg(tree, displayableText(item.reason));
    case DRStorageReportItem::Kind::Altered:
        break;
    }
    return QStringLiteral("%1: %2").arg(tree, displayableText(item.reason));
}

} // namespace

DiscPreview::DiscPreview(DiscDocument &document, QObject *parent)
    : QObject(parent)
    , m_document(document)
{
    m_delay.setSingleShot(true);
    m_delay.setInterval(delayAfterChange);
    connect(&m_delay, &QTimer::timeout, this, &DiscPreview::look);
    connect(&document.model(), &DiscTreeModel::treeChanged, this, &DiscPreview::discHasChanged);
    connect(&document, &DiscDocument::volumeNameChanged, this, &DiscPreview::discHasChanged);
}

DiscPreview::~DiscPreview()
{
    abandonJob(std::move(m_job));
}

void DiscPreview::letGo()
{
    m_delay.stop();
    abandonJob(std::move(m_job));
}

void DiscPreview::discHasChanged()
{
    abandonJob(std::move(m_job));
    m_isCurrent = false;
    m_changes.clear();
    m_lostCount = 0;
    Q_EMIT outdated();
    const std::uint32_t objects = m_document.model().root().objects;
    if (objects > 1 && objects <= mostLookedAtUnasked)
        m_delay.start();
    else
        m_delay.stop();
}

void DiscPreview::look()
{
    m_delay.stop();
    abandonJob(std::move(m_job));
    if (m_document.model().root().children.empty())
        return;
    DiscPlanOrder order;
    order.tree = copyForJob(m_document.model().root());
    order.volumeName = m_document.volumeName();
    m_job = std::make_unique<DiscPlanJob>(std::move(order));
    connect(m_job.get(), &DiscPlanJob::finished, this, [this](const DiscPlanResult &result) {
        m_job.release()->deleteLater(); // which has the result until then
        take(result);
    });
    m_job->start();
}

/// An error is told when an image is made, which comes to the same one: here nothing was asked for.
void DiscPreview::take(const DiscPlanResult &result)
{
    m_changes.clear();
    m_lostCount = 0;
    m_isCurrent = !result.error;
    if (result.error)
        return;
    if (result.report)
        mark(*result.report);
    Q_EMIT looked(result.bytes);
}

/// The short names of ISO 9660 are seen by few: they are told, but no reason for a mark while nothing is lost.
void DiscPreview::mark(const DRStorageReport &report)
{
    m_lostCount = report.lostCount();
    NodesByPath nodes(m_document.model().root());
    DiscTreeModel::Marks marks;
    QStringList losses;
    for (std::size_t index = 0; index < report.count(); ++index) {
        const DRStorageReportItem item = report.item(index);
        const QString sentence = sentenceFor(item);
        const bool isSeen = item.isLost || item.tree != DRDiscTree::ISO9660;
        if (isSeen && std::size_t(losses.size() + m_changes.size()) < mostChanges)
            (item.isLost ? losses : m_changes) << QStringLiteral("%1: %2").arg(displayableText(item.path), sentence);
        const DiscNode *const node = nodes.at(item.path);
        if (!node || (!isSeen && std::size_t(marks.size()) >= mostChanges))
            continue;
        DiscMark &mark = marks[node];
        mark.text += (mark.text.isEmpty() ? QString() : QStringLiteral("\n")) + sentence;
        mark.severity = std::max(mark.severity,
                                 item.isLost  ? DiscMark::Severity::Lost
                                     : isSeen ? DiscMark::Severity::Changed
                                              : DiscMark::Severity::Told);
    }
    m_changes = losses + m_changes;
    m_document.model().setMarks(std::move(marks));
}

} // namespace Tessaron::Desktop
