#include "app/CapacityBar.h"

#include "app/CapacityMeter.h"
#include "app/Media.h"
#include "app/Words.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>

namespace Tessaron::Desktop
{

CapacityBar::CapacityBar(QWidget *parent)
    : QWidget(parent)
    , m_meter(new CapacityMeter(this))
    , m_label(new QLabel(this))
    , m_medium(new QComboBox(this))
{
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_meter, 1);
    row->addWidget(m_label);
    row->addWidget(m_medium);
    for (const DiscMedium &medium : discMedia())
        m_medium->addItem(medium.name, medium.key);
    m_medium->setCurrentIndex(m_medium->findData(QStringLiteral("dvd")));
    m_medium->setAccessibleName(tr("Kind of disc"));
    m_medium->setToolTip(tr("What has to fit onto it"));
    m_label->setAccessibleName(tr("Size of the disc"));
    connect(m_medium, &QComboBox::currentIndexChanged, this, [this] {
        showUse();
        Q_EMIT mediumChanged(mediumKey());
    });
    showUse();
}

void CapacityBar::setUsed(std::uint64_t bytes, bool isExact)
{
    m_used = bytes;
    m_isExact = isExact;
    showUse();
}

QString CapacityBar::mediumKey() const
{
    return m_medium->currentData().toString();
}

void CapacityBar::setMediumKey(const QString &key)
{
    m_medium->setCurrentIndex(std::max(m_medium->findData(key), 0));
}

bool CapacityBar::isTooMuch() const
{
    const std::uint64_t room = discMediumOfKey(mediumKey()).bytes;
    return room != 0 && m_used > room;
}

QString CapacityBar::text() const
{
    return m_label->text();
}

void CapacityBar::showUse()
{
    const std::uint64_t room = discMediumOfKey(mediumKey()).bytes;
    const QString used = m_isExact || m_used == 0 ? sizeText(m_used) : tr("about %1").arg(sizeText(m_used));
    QString text = used;
    if (room != 0 && m_used > room)
        text = tr("%1: %2 too much").arg(used, sizeText(m_used - room));
    else if (room != 0)
        text = tr("%1, %2 free").arg(used, sizeText(room - m_used));
    m_label->setText(text);
    m_meter->setFill(room == 0 ? 0 : double(m_used) / double(room));
    m_meter->setAccessibleDescription(text);
    m_meter->setVisible(room != 0);
}

} // namespace Tessaron::Desktop
