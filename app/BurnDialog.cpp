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
const QString verifySetting = QStringLiteral("verifyAfterBurning");
const QString ejectSetting = QStringLiteral("ejectAfterBurning");

} // namespace

BurnDialog::BurnDialog(const BurnSubject &subject, QWidget *parent)
    : QDialog(parent)
    , m_bytes(subject.bytes)
    , m_canFollowOthers(!subject.order.tree)
    , m_drives(new QComboBox(this))
    , m_again(new QPushButton(tr("&Look Again"), this))
    , m_state(new QLabel(this))
    , m_speeds(new QComboBox(this))
    , m_verify(new QCheckBox(tr("&Compare the disc with the files afterwards"), this))
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
    for (QCheckBox *const box : {m_verify, m_simulate, m_eject})
        column->addWidget(box);
    column->addWidget(m_progress);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_burn = buttons->addButton(tr("&Burn"), QDialogButtonBox::AcceptRole);
    m_burn->setDefault(true);
    m_erase = buttons->addButton(tr("E&rase…"), QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addStretch(1);
    column->addWidget(buttons);
    resize(520, sizeHint().height());
}

void BurnDialog::lookForDrives()
{
    abandonJob(std::move(m_look));
    m_disc.reset();
    m_fault.clear();
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

void BurnDialog::look()
{
    abandonJob(std::move(m_look));
    m_disc.reset();
    m_fault.clear();
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
    if (!mayWrite())
        return m_disc->isErasable ? tr("Erase it first, or put in another disc.") : tr("Put in another disc.");
    const std::uint64_t room = m_disc->freeBlocks * blockSize;
    if (m_bytes > room)
        return tr("It is too small: about %1 are to be written.").arg(sizeText(m_bytes));
    if (m_disc->state == DiscState::Appendable)
        return tr("Only sound can be added to what is on it.");
    return {};
}

bool BurnDialog::mayWrite() const
{
    return m_disc
        && (m_disc->state == DiscState::Blank || (m_disc->state == DiscState::Appendable && m_canFollowOthers));
}

void BurnDialog::updateButtons()
{
    QStringList lines;
    if (m_blanking)
        lines << tr("The disc is being erased. That cannot be stopped.");
    else if (m_look)
        lines << (m_drives->count() == 0 ? tr("Looking for drives…") : tr("Looking at the disc…"));
    else if (!m_fault.isEmpty())
        lines << m_fault;
    else if (m_drives->count() == 0)
        lines << tr("This computer has no optical drive. Connect one, and look again.");
    else if (m_disc)
        lines << discText(*m_disc) << obstacle();
    lines.removeAll(QString());
    m_state->setText(lines.join(u'\n'));
    const bool isIdle = !isBusy();
    for (QWidget *const widget : std::initializer_list<QWidget *>{m_drives, m_again, m_speeds, m_verify, m_eject})
        widget->setEnabled(isIdle);
    m_simulate->setEnabled(isIdle && m_disc && m_disc->canSimulate);
    if (m_disc && !m_disc->canSimulate)
        m_simulate->setChecked(false);
    m_burn->setEnabled(isIdle && mayWrite());
    m_erase->setVisible(m_disc && m_disc->isErasable && m_disc->family != DiscFamily::Overwritable);
    m_erase->setEnabled(isIdle);
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
