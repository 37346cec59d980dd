#include "app/VideoView.h"

#include "app/EmptyPage.h"
#include "app/FileDrops.h"
#include "app/JobBar.h"
#include "app/ListDialog.h"
#include "app/Words.h"

#include <QAction>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStackedLayout>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <platform/foundation/LanguageNames.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr int videoNameColumn = 0;
constexpr int titleRole = Qt::UserRole;
constexpr int chapterRole = Qt::UserRole + 1;

QString playingTimeText(std::chrono::milliseconds time)
{
    return durationText(std::chrono::duration_cast<std::chrono::seconds>(time));
}

QString languageText(const QByteArray &language)
{
    if (language.isEmpty())
        return VideoView::tr("any language");
    const QString name = languageName(language);
    return name.isEmpty() ? QString::fromLatin1(language) : name;
}

QString purposeText(DVDStreamPurpose purpose)
{
    switch (purpose) {
    case DVDStreamPurpose::Unstated:
    case DVDStreamPurpose::Normal:
        return {};
    case DVDStreamPurpose::VisuallyImpaired:
        return VideoView::tr("for the visually impaired");
    case DVDStreamPurpose::Comments:
    case DVDStreamPurpose::OtherComments:
        return VideoView::tr("comments");
    case DVDStreamPurpose::Large:
        return VideoView::tr("large letters");
    case DVDStreamPurpose::Children:
        return VideoView::tr("for children");
    case DVDStreamPurpose::HardOfHearing:
        return VideoView::tr("for the hard of hearing");
    case DVDStreamPurpose::Forced:
        return VideoView::tr("always shown");
    }
    return {};
}

QString soundFormatText(DVDAudioFormat format)
{
    switch (format) {
    case DVDAudioFormat::AC3:
        return QStringLiteral("AC-3");
    case DVDAudioFormat::MPEG1:
        return QStringLiteral("MPEG-1");
    case DVDAudioFormat::MPEG2:
        return QStringLiteral("MPEG-2");
    case DVDAudioFormat::LPCM:
        return QStringLiteral("LPCM");
    case DVDAudioFormat::DTS:
        return QStringLiteral("DTS");
    case DVDAudioFormat::SDDS:
        return QStringLiteral("SDDS");
    case DVDAudioFormat::Unknown:
        break;
    }
    return VideoView::tr("of an unknown form");
}

QString menuKindText(DVDMenuKind kind)
{
    switch (kind) {
    case DVDMenuKind::Title:
        return VideoView::tr("Title menu");
    case DVDMenuKind::Root:
        return VideoView::tr("Main menu");
    case DVDMenuKind::Subtitle:
        return VideoView::tr("Subtitle menu");
    case DVDMenuKind::Audio:
        return VideoView::tr("Sound menu");
    case DVDMenuKind::Angle:
        return VideoView::tr("Angle menu");
    case DVDMenuKind::Chapter:
        return VideoView::tr("Chapter menu");
    }
    return {};
}

QString listed(QStringList parts)
{
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

QTreeWidgetItem *titleItem(const DVDTitle &title)
{
    const QString standard =
        title.video.standard == DVDVideoStandard::PAL ? QStringLiteral("PAL") : QStringLiteral("NTSC");
    const QString picture = QStringLiteral("%1, %2×%3, %4")
                                .arg(standard)
                                .arg(title.video.width)
                                .arg(title.video.height)
                                .arg(title.video.isWide ? QStringLiteral("16:9") : QStringLiteral("4:3"));
    const QString angles = title.angles > 1 ? VideoView::tr("%n angle(s)", nullptr, title.angles) : QString();
    auto *const item = new QTreeWidgetItem({VideoView::tr("Title %1").arg(title.number), playingTimeText(title.length),
                                            listed({picture, angles, title.damage})});
    const auto add = [item](const QStringList &texts, int chapter = 0) {
        auto *const child = new QTreeWidgetItem(item, texts);
        child->setData(videoNameColumn, titleRole, item->data(videoNameColumn, titleRole));
        child->setData(videoNameColumn, chapterRole, chapter);
    };
    item->setData(videoNameColumn, titleRole, title.number);
    int number = 0;
    for (const DVDChapter &chapter : title.chapters) {
        ++number;
        add({VideoView::tr("Chapter %1").arg(number), playingTimeText(chapter.length),
             VideoView::tr("at %1").arg(playingTimeText(chapter.start))},
            number);
    }
    number = 0;
    for (const DVDAudioStream &stream : title.audio)
        add({VideoView::tr("Sound %1").arg(++number), QString(),
             listed({languageText(stream.language), soundFormatText(stream.format),
                     VideoView::tr("%n channel(s)", nullptr, stream.channels),
                     QStringLiteral("%1 kHz").arg(stream.sampleRate / 1000), purposeText(stream.purpose)})});
    number = 0;
    for (const DVDSubtitleStream &stream : title.subtitles)
        add({VideoView::tr("Subtitles %1").arg(++number), QString(),
             listed({languageText(stream.language), purposeText(stream.purpose)})});
    return item;
}

} // namespace

VideoView::VideoView(QWidget *parent)
    : QWidget(parent)
    , m_summary(new QLabel(this))
    , m_judgement(new QLabel(this))
    , m_showProblems(new QPushButton(tr("Sho&w…"), this))
    , m_tree(new QTreeWidget(this))
    , m_progress(new JobBar(this))
{
    setAcceptDrops(true);
    makeActions();
    m_pages = new QStackedLayout(this);
    m_pages->addWidget(emptyPage());
    m_pages->addWidget(discPage());
    connect(m_progress, &JobBar::cancelWanted, this, &VideoView::cancelWanted);
    connect(m_showProblems, &QPushButton::clicked, this, [this] {
        auto *const dialog = new ListDialog(m_judgement->text(), m_problems, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
    showProblems({}, {});
    showSummary({}, false);
}

void VideoView::makeActions()
{
    m_open = new QAction(QIcon::fromTheme(QStringLiteral("folder-open")), tr("&Open Video DVD…"), this);
    m_open->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    m_open->setToolTip(tr("Choose a folder VIDEO_TS, or the one that holds it"));
    connect(m_open, &QAction::triggered, this, &VideoView::openWanted);
    m_openImage = new QAction(QIcon::fromTheme(QStringLiteral("document-open")), tr("Open &Image…"), this);
    m_openImage->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I));
    m_openImage->setToolTip(tr("Choose an image of a video DVD"));
    connect(m_openImage, &QAction::triggered, this, &VideoView::openImageWanted);
    m_play = new QAction(QIcon::fromTheme(QStringLiteral("media-playback-start")), tr("&Play"), this);
    m_play->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
    m_play->setToolTip(tr("Play the disc, or the title or chapter that is chosen"));
    connect(m_play, &QAction::triggered, this, &VideoView::playWanted);
}

QWidget *VideoView::emptyPage()
{
    auto *const page =
        new EmptyPage(tr("Drop a video DVD here"),
                      tr("A folder VIDEO_TS, or an image. See its titles, check and play it, save it as an "
                         "image for players, and write it to a disc."),
                      tr("Open Video DVD…"), this);
    connect(page, &EmptyPage::pressed, this, &VideoView::openWanted);
    return page;
}

QWidget *VideoView::discPage()
{
    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_summary->setAccessibleName(tr("The video DVD"));
    m_judgement->setWordWrap(true);
    m_judgement->setTextFormat(Qt::PlainText);
    m_showProblems->setAccessibleName(tr("Show what is not as players need it"));
    m_tree->setHeaderLabels({tr("Content"), tr("Length"), tr("Details")});
    m_tree->setUniformRowHeights(true);
    m_tree->setAlternatingRowColors(true);
    m_tree->setAccessibleName(tr("What the video DVD holds"));
    m_tree->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_tree->addAction(m_play);
    connect(m_tree, &QTreeWidget::itemActivated, m_play, &QAction::trigger);
    m_tree->header()->setStretchLastSection(true);
    m_tree->header()->resizeSection(videoNameColumn, fontMetrics().horizontalAdvance(QString(30, u'n')));
    auto *const page = new QWidget(this);
    auto *const column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_summary);
    auto *const row = new QHBoxLayout;
    row->addWidget(m_judgement, 1);
    row->addWidget(m_showProblems);
    column->addLayout(row);
    column->addWidget(m_tree, 1);
    column->addWidget(m_progress);
    return page;
}

void VideoView::showSummary(const QString &text, bool canBePlayed)
{
    m_summary->setText(text);
    m_play->setEnabled(canBePlayed);
    m_pages->setCurrentIndex(text.isEmpty() ? 0 : 1);
}

void VideoView::showDisc(const DVDDescription &disc)
{
    m_tree->clear();
    for (const DVDTitle &title : disc.titles) {
        QTreeWidgetItem *const item = titleItem(title);
        m_tree->addTopLevelItem(item);
        item->setExpanded(disc.titles.size() == 1);
    }
    for (const DVDMenu &menu : disc.menus) {
        const QString place = menu.titleSet == 0 ? tr("of the disc") : tr("of title set %1").arg(int(menu.titleSet));
        m_tree->addTopLevelItem(
            new QTreeWidgetItem({menuKindText(menu.kind), QString(), listed({place, languageText(menu.language)})}));
    }
}

void VideoView::showProblems(const QStringList &problems, const QString &nothingFound)
{
    m_problems = problems;
    m_judgement->setText(problems.isEmpty()
                             ? nothingFound
                             : tr("%n thing(s) are not as players need them.", nullptr, int(problems.size())));
    m_showProblems->setVisible(!problems.isEmpty());
}

QString VideoView::judgement() const
{
    return m_judgement->text();
}

std::pair<int, int> VideoView::chosenPlace() const
{
    const QTreeWidgetItem *const item = m_tree->currentItem();
    if (!item || !item->isSelected())
        return {0, 0};
    return {item->data(videoNameColumn, titleRole).toInt(), item->data(videoNameColumn, chapterRole).toInt()};
}

void VideoView::dragEnterEvent(QDragEnterEvent *event)
{
    acceptFiles(*event);
}

void VideoView::dropEvent(QDropEvent *event)
{
    if (const QByteArray path = takeDroppedFile(*event); !path.isEmpty())
        Q_EMIT discDropped(path);
}

} // namespace Tessaron::Desktop
