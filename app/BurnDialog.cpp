#include "app/BurnDialog.h"

#include "app/AbandonedJob.h"
#include "app/DiscWords.h"
#include "app/JobBar.h"
#include "app/Words.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::uint64_t blockSize = 2048;
constexpr std::uint64_t soundBlockSize = 2352;
const QString verifySetting = QStringLiteral("verifyAfterBurning");
const QString ejectSetting = QStringLiteral("ejectAfterBurning");

/// Files of the disc that would not be seen any more: a few by name, the others counted.
QString replacedText(const QStringList &paths)
{
    constexpr qsizetype shown = 4;
    QStringList names;
    for (const QString &path : paths.mid(0, shown))
        names << displayableText(path);
    QString text = BurnDialog::tr("%n of its files will be replaced: %1", nullptr, int(paths.size()))
                       .arg(names.join(QStringLiteral(", ")));
    if (paths.size() > shown)
        text += BurnDialog::tr(" and %n more", nullptr, int(paths.size() - shown));
    return text;
}

/// What becomes of what a disc has, and how much is added.
QString additionText(const BurnDiscResult &addition)
{
    QStringList lines;
    if (addition.keptFiles > 0)
        lines << BurnDialog::tr("%n file(s) on it stay as they are; %1 are added.", nullptr, int(addition.keptFiles))
                     .arg(sizeText(addition.data.bytes));
    else
        lines << BurnDialog::tr("What is on it stays as it is; %1 are added.").arg(sizeText(addition.data.bytes));
    if (!addition.replaced.isEmpty())
        lines << replacedText(addition.replaced);
    if (addition.isStartLost)
        lines << BurnDialog::tr("Computers can be started from it now, and not any more afterwards.");
    return lines.join(u'\n');
}

} // namespace

BurnDialog::BurnDialog(const BurnSubject &subject, QWidget *parent)
    : QDialog(parent)
    , m_subject(subject)
    , m_drives(new QComboBox(this))
    , m_again(new QPushButton(tr("&Look Again"), this))
    , m_state(new QLabel(this))
    , m_speeds(new QComboBox(this))
    , m_verify(new QCheckBox(tr("&Compare the disc with the files afterwards"), this))
    , m_open(new QCheckBox(tr("&Keep the disc open, so that more can be added to it"), this))
    , m_simulate(new QCheckBox(tr("Only &simulate: the laser stays off"), this))
    , m_eject(new QCheckBox(tr("&Eject the disc at the end"), this))
    , m_progress(new JobBar(this))
{
    setWindowTitle(tr("Burn a Disc"));
    layOut();
    const QSettings settings;
    m_verify->setChecked(settings.value(verifySetting, true).toBool());
    m_eject->setChecked(settings.value(ejectSetting, false).toBool());
    connect(m_again, &QPushButton::clicked, this, &BurnDialog::lookForDrives);
    connect(m_drives, &QComboBox::activated, this, &BurnDialog::look);
    connect(m_erase, &QPushButton::clicked, this, &BurnDialog::eraseDisc);
    connect(m_open, &QCheckBox::clicked, this, &BurnDialog::chooseAddition);
    connect(this, &QDialog::accepted, this, [this] {
        QSettings kept;
        kept.setValue(verifySetting, m_verify->isChecked());
        kept.setValue(ejectSetting, m_eject->isChecked());
    });
    updateButtons();
}

BurnDialog::~BurnDialog()
{
    abandonJob(std::move(m_look));
    abandonJob(std::move(m_plan));
    abandonJob(std::move(m_blanking));
}

void BurnDialog::layOut()
{
    auto *const column = new QVBoxLayout(this);
    auto *const form = new QFormLayout;
    auto *const row = new QHBoxLayout;
    m_drives->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    row->addWidget(m_drives, 1);
    row->addWidget(m_again);
    auto *const driveLabel = new QLabel(tr("&Drive:"), this);
    driveLabel->setBuddy(m_drives);
    form->addRow(driveLabel, row);
    m_state->setWordWrap(true);
    m_state->setTextFormat(Qt::PlainText);
    m_state->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_state->setMinimumHeight(2 * fontMetrics().lineSpacing()); // so that what is below stays where it is
    m_state->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    m_state->setAccessibleName(tr("The disc in the drive"));
    form->addRow(tr("Disc:"), m_state);
    form->addRow(tr("S&peed:"), m_speeds);
    column->addLayout(form);
    for (QCheckBox *const box : {m_verify, m_open, m_simulate, m_eject})
        column->addWidget(box);
    column->addWidget(m_progress);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_burn = buttons->addButton(tr("&Burn"), QDialogButtonBox::AcceptRole);
    m_erase = buttons->addButton(tr("E&rase…"), QDialogButtonBox::ActionRole);
    // The Return key burns wherever the focus is.
    for (QPushButton *const button : findChildren<QPushButton *>())
        button->setAutoDefault(button == m_burn);
    m_burn->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addStretch(1);
    column->addWidget(buttons);
    resize(520, sizeHint().height());
}

void BurnDialog::lookForDrives()
{
    forgetDisc();
    m_look = std::make_unique<DrivesJob>(DrivesOrder());
    connect(m_look.get(), &DrivesJob::finished, this, [this](const DrivesResult &result) {
        const std::vector<DriveFacts> drives = result.drives;
        m_look.release()->deleteLater();
        showDrives(drives);
    });
    m_look->start();
    updateButtons();
}

void BurnDialog::showDrives(const std::vector<DriveFacts> &drives)
{
    const QByteArray before = drive();
    m_drives->clear();
    for (const DriveFacts &facts : drives)
        m_drives->addItem(driveText(facts.drive), facts.drive.path);
    m_drives->setCurrentIndex(std::max(m_drives->findData(before), 0));
    look();
}

QByteArray BurnDialog::drive() const
{
    return m_drives->currentData().toByteArray();
}

void BurnDialog::forgetDisc()
{
    m_open->setChecked(false);
    abandonJob(std::move(m_look));
    abandonJob(std::move(m_plan));
    m_disc.reset();
    m_addition.reset();
    m_fault.clear();
}

void BurnDialog::look()
{
    forgetDisc();
    if (m_drives->count() > 0) {
        m_look = std::make_unique<DrivesJob>(DrivesOrder{{drive()}});
        connect(m_look.get(), &DrivesJob::finished, this, [this](const DrivesResult &result) {
            const DriveFacts facts = result.drives.empty() ? DriveFacts() : result.drives.front();
            m_look.release()->deleteLater();
            looked(facts);
        });
        m_look->start();
    }
    updateButtons();
}

void BurnDialog::looked(const DriveFacts &facts)
{
    if (facts.error)
        m_fault = errorText(facts.error);
    else
        m_disc = facts.disc;
    showSpeeds();
    if (m_disc && m_disc->state == DiscState::Appendable && !isWrongKind())
        planAddition();
    updateButtons();
}

/// What is overwritten may be added to instead.
void BurnDialog::chooseAddition()
{
    if (!m_disc || !isOverwritten(m_disc->family))
        return;
    abandonJob(std::move(m_plan));
    m_addition.reset();
    if (addsToDisc())
        planAddition();
    updateButtons();
}

/// The sessions of a disc are read, and what is to be written is laid out beside what they hold.
void BurnDialog::planAddition()
{
    BurnDiscOrder order = m_subject.order;
    order.drive = drive();
    order.leavesOpen = true;
    order.isPlanOnly = true;
    m_plan = std::make_unique<BurnDiscJob>(std::move(order));
    connect(m_plan.get(), &BurnDiscJob::finished, this, [this](const BurnDiscResult &result) {
        m_plan.release()->deleteLater(); // with the result, later
        planned(result);
    });
    m_plan->start();
}

void BurnDialog::planned(const BurnDiscResult &result)
{
    m_addition = result;
    updateButtons();
}

void BurnDialog::showSpeeds()
{
    m_speeds->clear();
    m_speeds->addItem(tr("As fast as it goes"), 0.0);
    if (!m_disc)
        return;
    const std::uint32_t single = singleSpeed(m_disc->profile);
    for (auto speed = m_disc->writeSpeeds.rbegin(); single != 0 && speed != m_disc->writeSpeeds.rend(); ++speed)
        m_speeds->addItem(speedText(*speed, m_disc->profile), double(*speed) * 1000 / single);
}

/// What is in the way of writing, or what the user has to know before; empty for nothing.
QString BurnDialog::obstacle() const
{
    if (!m_disc || m_disc->state == DiscState::NoDisc)
        return {};
    if (isWrongKind())
        return tr("Sound takes a CD-R or CD-RW. Put one in.");
    if (m_addition)
        return m_addition->error ? errorText(m_addition->error) : additionText(*m_addition);
    if (!mayWrite())
        return m_disc->isErasable ? tr("Erase it first, or put in another disc.") : tr("Put in another disc.");
    const std::uint64_t bytesOfBlock = m_subject.order.audio ? soundBlockSize : blockSize;
    if (m_subject.bytes > m_disc->freeBlocks * bytesOfBlock)
        return tr("It is too small: about %1 are to be written.").arg(sizeText(m_subject.bytes));
    return {};
}

bool BurnDialog::addsToDisc() const
{
    return m_disc && (m_disc->state == DiscState::Appendable || (isOverwritten(m_disc->family) && m_open->isChecked()));
}

bool BurnDialog::isWrongKind() const
{
    const bool holdsDisc = m_disc && m_disc->state != DiscState::NoDisc;
    return m_subject.order.audio && holdsDisc && !isCDFamily(m_disc->family);
}

bool BurnDialog::mayWrite() const
{
    if (isWrongKind())
        return false;
    if (addsToDisc())
        return m_addition && !m_addition->error;
    return m_disc && m_disc->state == DiscState::Blank;
}

QStringList BurnDialog::stateLines() const
{
    if (m_blanking)
        return {tr("The disc is being erased. That cannot be stopped.")};
    if (m_look)
        return {m_drives->count() == 0 ? tr("Looking for drives…") : tr("Looking at the disc…")};
    if (!m_fault.isEmpty())
        return {m_fault};
    if (m_drives->count() == 0)
        return {tr("This computer has no optical drive. Connect one, and look again.")};
    if (!m_disc)
        return {};
    return {discText(*m_disc, addsToDisc()), m_plan ? tr("Looking at what is on it…") : obstacle()};
}

void BurnDialog::updateButtons()
{
    QStringList lines = stateLines();
    lines.removeAll(QString());
    m_state->setText(lines.join(u'\n'));
    const bool isIdle = !isBusy();
    for (QWidget *const widget : std::initializer_list<QWidget *>{m_drives, m_again, m_speeds, m_verify, m_eject})
        widget->setEnabled(isIdle);
    m_simulate->setEnabled(isIdle && m_disc && m_disc->canSimulate);
    if (m_disc && !m_disc->canSimulate)
        m_simulate->setChecked(false);
    updateOpenBox();
    m_burn->setEnabled(isIdle && mayWrite());
    m_erase->setVisible(m_disc && m_disc->isErasable && m_disc->family != DiscFamily::Overwritable);
    m_erase->setEnabled(isIdle);
}

/// Discs with sessions stay open for more; what has none is kept and added to, or replaced.
void BurnDialog::updateOpenBox()
{
    const bool isOver = m_disc && isOverwritten(m_disc->family) && !isWrongKind();
    const bool hasSessions = m_disc && m_disc->state == DiscState::Appendable;
    const bool isOffered = isOver || hasSessions || (m_disc && m_disc->canAppendLater);
    m_open->setText(isOver ? tr("&Keep what is on the disc, and add to it")
                           : tr("&Keep the disc open, so that more can be added to it"));
    m_open->setVisible(isOffered);
    m_open->setEnabled(!isBusy() && !hasSessions);
    m_open->setChecked(hasSessions || (isOffered && m_open->isChecked()));
}

QString BurnDialog::text() const
{
    return m_state->text();
}

BurnDiscOrder BurnDialog::settings() const
{
    BurnDiscOrder order;
    order.drive = drive();
    order.speed = m_speeds->currentData().toDouble();
    order.verifies = m_verify->isChecked();
    order.isSimulated = m_simulate->isChecked();
    order.leavesOpen = m_open->isChecked();
    order.ejects = m_eject->isChecked();
    return order;
}

void BurnDialog::eraseDisc()
{
    auto *const question = new QMessageBox(QMessageBox::Warning, tr("Erase the Disc"),
                                           tr("Everything on the disc will be lost."), QMessageBox::Cancel, this);
    question->setInformativeText(tr("Erasing takes a minute or two and cannot be stopped."));
    const QPushButton *const erase = question->addButton(tr("&Erase"), QMessageBox::DestructiveRole);
    question->setDefaultButton(QMessageBox::Cancel);
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QMessageBox::buttonClicked, this, [this, erase](const QAbstractButton *button) {
        if (button == erase)
            startErasing();
    });
    question->open();
}

void BurnDialog::startErasing()
{
    if (isBusy())
        return;
    m_fault.clear();
    m_blanking = std::make_unique<BlankDiscJob>(BlankDiscOrder{drive()});
    connect(m_blanking.get(), &DiscJob::progressed, m_progress, &JobBar::showShare);
    connect(m_blanking.get(), &BlankDiscJob::finished, this, &BurnDialog::erased);
    m_progress->begin(tr("Erasing"));
    m_progress->setCancellable(false);
    m_blanking->start();
    updateButtons();
}

void BurnDialog::erased(const BlankDiscResult &result)
{
    const NSError error = result.error;
    m_blanking.release()->deleteLater();
    m_progress->end();
    if (!error) {
        look();
        return;
    }
    m_disc.reset(); // who knows what it is now: "Look Again" tells
    m_fault = errorText(error);
    updateButtons();
}

void BurnDialog::reject()
{
    if (!m_blanking)
        QDialog::reject();
}

} // namespace Tessaron::Desktop
