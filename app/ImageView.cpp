#include "app/ImageView.h"

#include "app/EmptyPage.h"
#include "app/FileDrops.h"
#include "app/ImageContentsModel.h"
#include "app/ImageTreeView.h"
#include "app/JobBar.h"

#include <QAction>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace Tessaron::Desktop
{

ImageView::ImageView(ImageContentsModel &contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
    , m_summary(new QLabel(this))
    , m_tree(new ImageTreeView(this))
    , m_progress(new JobBar(this))
{
    setAcceptDrops(true);
    m_open = new QAction(QIcon::fromTheme(QStringLiteral("document-open")), tr("&Open Image…"), this);
    m_open->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    connect(m_open, &QAction::triggered, this, &ImageView::openWanted);
    m_takeFiles = new QAction(QIcon::fromTheme(QStringLiteral("archive-extract")), tr("Take Out &Files…"), this);
    m_takeFiles->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    m_takeFiles->setToolTip(tr("Copy what is chosen, or everything, into a folder"));
    connect(m_takeFiles, &QAction::triggered, this, &ImageView::takeFilesWanted);
    m_compare = new QAction(tr("&Compare with a Folder…"), this);
    m_compare->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    connect(m_compare, &QAction::triggered, this, &ImageView::compareWanted);
    m_takeOut = new QAction(tr("&Take Out Tracks…"), this);
    m_takeOut->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_T));
    connect(m_takeOut, &QAction::triggered, this, &ImageView::takeOutWanted);
    m_copy = new QAction(QIcon::fromTheme(QStringLiteral("edit-copy")), tr("Cop&y Files"), this);
    m_copy->setShortcut(QKeySequence::Copy);
    m_copy->setShortcutContext(Qt::WidgetShortcut); // texts can be copied, too
    m_copy->setToolTip(tr("Take what is chosen out, so that the file manager can paste it"));
    connect(m_copy, &QAction::triggered, this, &ImageView::copyWanted);
    connect(m_tree, &ImageTreeView::dragWanted, this, &ImageView::dragWanted);

    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_summary->setAccessibleName(tr("The image"));
    m_tree->setModel(&m_contents);
    m_tree->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_tree->addActions({m_copy, m_takeFiles, m_takeOut});
    m_tree->setAccessibleName(tr("What the image holds"));
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(ImageContentsModel::Name, QHeaderView::Stretch);
    const QFontMetrics metrics = fontMetrics();
    m_tree->header()->resizeSection(ImageContentsModel::Size,
                                    metrics.horizontalAdvance(QStringLiteral("100000 files, 0000.0 MB00")));
    m_tree->header()->resizeSection(ImageContentsModel::Modified,
                                    metrics.horizontalAdvance(QStringLiteral("28.12.2028 20:58 0000")));
    connect(m_progress, &JobBar::cancelWanted, this, &ImageView::cancelWanted);

    auto *const page = new QWidget(this);
    auto *const column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_summary);
    column->addWidget(m_tree, 1);
    column->addWidget(m_progress);
    m_pages = new QStackedLayout(this);
    m_pages->addWidget(emptyPage());
    m_pages->addWidget(page);
    showSummary({}, false);
}

QWidget *ImageView::emptyPage()
{
    auto *const page = new EmptyPage(tr("Drop a disc image here"),
                                     tr("An ISO, BIN or VANT image, or a cue sheet. See what is in it, take files out, "
                                        "compare it with a folder, and write it to a disc."),
                                     tr("Open Image…"), this);
    connect(page, &EmptyPage::pressed, this, &ImageView::openWanted);
    return page;
}

void ImageView::showSummary(const QString &text, bool isReady)
{
    m_summary->setText(text);
    m_pages->setCurrentIndex(text.isEmpty() ? 0 : 1);
    m_compare->setEnabled(isReady);
    m_takeOut->setEnabled(isReady);
    m_takeFiles->setEnabled(isReady);
    m_copy->setEnabled(isReady);
}

std::uint32_t ImageView::chosenTrack() const
{
    return m_contents.trackAt(m_tree->currentIndex());
}

QList<ImagePlace> ImageView::chosenPlaces() const
{
    QList<ImagePlace> places;
    for (const QModelIndex &row : m_tree->selectionModel()->selectedRows()) {
        if (const std::optional<ImagePlace> place = m_contents.placeAt(row))
            places << *place;
    }
    return places;
}

void ImageView::dragEnterEvent(QDragEnterEvent *event)
{
    acceptFiles(*event);
}

void ImageView::dropEvent(QDropEvent *event)
{
    if (const QByteArray path = takeDroppedFile(*event); !path.isEmpty())
        Q_EMIT imageDropped(path);
}

} // namespace Tessaron::Desktop
