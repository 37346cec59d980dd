#include "app/OptionsDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <platform/discrecording/objects/DRFilesystems.h>

namespace Tessaron::Desktop
{

namespace
{

struct NamedFilesystem {
    std::uint32_t bit;
    const char *name;
};

constexpr std::array<NamedFilesystem, 4> namedFilesystems = {{
    {DRFilesystemInclusionMaskISO9660, "ISO 9660"},
    {DRFilesystemInclusionMaskJoliet, "Joliet"},
    {DRFilesystemInclusionMaskUDF, "UDF"},
    {DRFilesystemInclusionMaskHFSPlus, "HFS+"},
}};

constexpr std::int32_t onlyMacs = 1;
constexpr std::int32_t onlyPCs = 2;

} // namespace

OptionsDialog::OptionsDialog(const QString &what, const _TessaronAttributes &options, QWidget *parent)
    : QDialog(parent)
    , m_isHidden(new QCheckBox(tr("&Hidden on the disc"), this))
    , m_all(new QRadioButton(tr("&Everywhere"), this))
    , m_macs(new QRadioButton(tr("Only for &Macs (UDF and HFS+)"), this))
    , m_pcs(new QRadioButton(tr("Only for &PCs (ISO 9660 and Joliet)"), this))
    , m_chosen(new QRadioButton(tr("Only in &these filesystems:"), this))
{
    setWindowTitle(tr("Options"));
    auto *const column = new QVBoxLayout(this);
    column->addWidget(new QLabel(what, this));
    column->addWidget(m_isHidden);
    auto *const group = new QGroupBox(tr("Is found"), this);
    auto *const choices = new QVBoxLayout(group);
    for (QRadioButton *const choice : {m_all, m_macs, m_pcs, m_chosen})
        choices->addWidget(choice);
    auto *const row = new QHBoxLayout;
    row->setContentsMargins(24, 0, 0, 0);
    const bool isChosen = options.useBasicFSInclusion == 0 && options.hasAdvancedFSInclusion != 0;
    for (std::size_t index = 0; index < namedFilesystems.size(); ++index) {
        m_filesystems[index] = new QCheckBox(QString::fromLatin1(namedFilesystems[index].name), group);
        m_filesystems[index]->setChecked(!isChosen || (options.advancedFSInclusion & namedFilesystems[index].bit) != 0);
        m_filesystems[index]->setEnabled(isChosen);
        connect(m_chosen, &QRadioButton::toggled, m_filesystems[index], &QWidget::setEnabled);
        row->addWidget(m_filesystems[index]);
    }
    choices->addLayout(row);
    column->addWidget(group);
    m_isHidden->setChecked(options.invisible != 0);
    const std::int32_t basic = options.hasBasicFSInclusion ? options.basicFSInclusion : 0;
    QRadioButton *const current = isChosen ? m_chosen : basic == onlyMacs ? m_macs : basic == onlyPCs ? m_pcs : m_all;
    current->setChecked(true);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    // At least one filesystem: an object in none would silently be missing.
    const auto check = [this, buttons] {
        bool isAny = !m_chosen->isChecked();
        for (const QCheckBox *const box : m_filesystems)
            isAny = isAny || box->isChecked();
        buttons->button(QDialogButtonBox::Ok)->setEnabled(isAny);
    };
    for (QCheckBox *const box : m_filesystems)
        connect(box, &QCheckBox::toggled, this, check);
    connect(m_chosen, &QRadioButton::toggled, this, check);
}

_TessaronAttributes OptionsDialog::options() const
{
    _TessaronAttributes options = TessaronFileAttributesNone_fct();
    options.invisible = m_isHidden->isChecked() ? 1 : 0;
    if (m_macs->isChecked() || m_pcs->isChecked()) {
        options.hasBasicFSInclusion = 1;
        options.basicFSInclusion = m_macs->isChecked() ? onlyMacs : onlyPCs;
    }
    if (m_chosen->isChecked()) {
        options.useBasicFSInclusion = 0;
        options.hasAdvancedFSInclusion = 1;
        options.advancedFSInclusion = 0;
        for (std::size_t index = 0; index < namedFilesystems.size(); ++index) {
            if (m_filesystems[index]->isChecked())
                options.advancedFSInclusion |= namedFilesystems[index].bit;
        }
    }
    return options;
}

} // namespace Tessaron::Desktop
