#include "app/SplitDialog.h"

#include "app/AbandonedJob.h"
#include "app/JobBar.h"
#include "app/Media.h"
#include "app/Words.h"

#include <TessaronClasses/KRFileHierarchyItem.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

/// A window shows that many rows of a disc; how many more there are is said.
constexpr qsizetype mostRows = 5000;

} // namespace

SplitDialog::SplitDialog(std::function<std::shared_ptr<KRFileHierarchyItem>()> makeTree, const QString &volumeName,
                         const QString &mediumKey, QWidget *parent)
    : QDialog(parent)
    , m_makeTree(std::move(makeTree))
    , m_volumeName(volumeName)
    , m_medium(new QComboBox(this))
    , m_summary(new QLabel(this))
    , m_tree(new QTreeWidget(this))
    , m_progress(new JobBar(this))
{
    setWindowTitle(tr("Split over Several Discs"));
    layOut();
    for (const DiscMedium &medium : discMedia()) {
        if (medium.bytes > 0)
            m_medium->addItem(medium.name, medium.key);
    }
    const int known = m_medium->findData(mediumKey);
    m_medium->setCurrentIndex(known >= 0 ? known : m_medium->findData(QStringLiteral("dvd")));
    connect(m_medium, &QComboBox::currentIndexChanged, this, [this] { propose(m_medium->currentData().toString()); });
    connect(m_progress, &JobBar::cancelWanted, this, [this] {
        m_progress->showCancelling();
        if (m_job)
            m_job->cancel();
    });
    propose(m_medium->currentData().toString());
}

SplitDialog::~SplitDialog()
{
    abandonJob(std::move(m_job));
}

void SplitDialog::layOut()
{
    auto *const column = new QVBoxLayout(this);
    auto *const form = new QFormLayout;
    form->addRow(tr("&Kind of disc:"), m_medium);
    column->addLayout(form);
    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);
    column->addWidget(m_summary);
    m_tree->setHeaderLabels({tr("Disc"), tr("Size")});
    m_tree->setUniformRowHeights(true);
    m_tree->setAccessibleName(tr("The discs and what is on them"));
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    column->addWidget(m_tree, 1);
    column->addWidget(m_progress);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    const auto addButton = [&](const QString &text, void (SplitDialog::*wanted)()) {
        m_ofProposal << buttons->addButton(text, QDialogButtonBox::ActionRole);
        connect(m_ofProposal.back(), &QPushButton::clicked, this, wanted);
    };
    addButton(tr("&Burn…"), &SplitDialog::burningWanted);
    addButton(tr("&Save Images…"), &SplitDialog::imagesWanted);
    addButton(tr("Save &Projects…"), &SplitDialog::projectsWanted);
    column->addWidget(buttons);
    resize(560, 480);
}

QString SplitDialog::summary() const
{
    return m_summary->text();
}

void SplitDialog::propose(const QString &mediumKey)
{
    abandonJob(std::move(m_job));
    m_discs.clear();
    m_tree->clear();
    for (QPushButton *const button : std::as_const(m_ofProposal))
        button->setEnabled(false);
    m_mediumKey = mediumKey;
    m_summary->setText(tr("Finding out what goes onto which disc…"));
    m_capacity = discMediumOfKey(mediumKey).bytes;
    DiscSplitOrder order;
    order.tree = m_makeTree();
    order.capacity = m_capacity;
    order.volumeName = m_volumeName;
    m_progress->begin(tr("Splitting"));
    m_job = std::make_unique<DiscSplitJob>(std::move(order));
    connect(m_job.get(), &DiscSplitJob::finished, this, [this](const DiscSplitResult &result) {
        m_job.release()->deleteLater(); // which has the result until then
        take(result);
    });
    m_job->start();
}

void SplitDialog::take(const DiscSplitResult &result)
{
    m_progress->end();
    if (result.error) {
        m_summary->setText(errorText(result.error));
        Q_EMIT proposed();
        return;
    }
    m_discs = result.discs;
    m_summary->setText(tr("%n disc(s) of %1 are needed.", nullptr, int(m_discs.size())).arg(sizeText(m_capacity)));
    if (!result.tooLarge.empty())
        m_summary->setText(
            m_summary->text() + u' '
            + tr("%n file(s) are larger than such a disc, and on none.", nullptr, int(result.tooLarge.size())));
    showDiscs(result);
    for (QPushButton *const button : std::as_const(m_ofProposal))
        button->setEnabled(!m_discs.empty());
    Q_EMIT proposed();
}

void SplitDialog::showDiscs(const DiscSplitResult &result)
{
    for (const DiscShare &disc : m_discs) {
        auto *const item = new QTreeWidgetItem(
            m_tree,
            {tr("%1: %2").arg(displayableText(disc.volumeName), tr("%n file(s)", nullptr, int(disc.files))),
             sizeText(disc.bytes)});
        for (qsizetype row = 0; row < std::min(disc.paths.size(), mostRows); ++row)
            new QTreeWidgetItem(item, {displayableText(disc.paths[row])});
        if (disc.paths.size() > mostRows)
            new QTreeWidgetItem(item, {tr("… and %n more", nullptr, int(disc.paths.size() - mostRows))});
        item->setExpanded(m_discs.size() <= 10);
    }
    if (result.tooLarge.empty())
        return;
    auto *const item = new QTreeWidgetItem(m_tree, {tr("Too large for such a disc")});
    for (const DiscSplitResult::TooLargeFile &file : result.tooLarge)
        new QTreeWidgetItem(item, {displayableText(file.path), sizeText(file.bytes)});
    item->setExpanded(true);
}

} // namespace Tessaron::Desktop
