#include "app/JobBar.h"

#include "app/Words.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace Tessaron::Desktop
{

JobBar::JobBar(QWidget *parent)
    : QWidget(parent)
    , m_label(new QLabel(this))
    , m_bar(new QProgressBar(this))
    , m_cancel(new QPushButton(tr("Cancel"), this))
{
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_label, 1);
    row->addWidget(m_bar);
    row->addWidget(m_cancel);
    m_bar->setMinimumWidth(180);
    m_bar->setAccessibleName(tr("Progress"));
    m_label->setTextFormat(Qt::PlainText);
    connect(m_cancel, &QPushButton::clicked, this, &JobBar::cancelWanted);
    QWidget::hide();
}

void JobBar::begin(const QString &name)
{
    m_name = name;
    m_isForDrive = false;
    m_clock.start();
    m_bar->setRange(0, 0);
    m_cancel->setEnabled(true);
    m_cancel->setVisible(true);
    m_cancel->setText(tr("Cancel"));
    m_label->setText(name);
    QWidget::show();
}

void JobBar::showProgress(const DiscJobProgress &progress)
{
    const auto elapsed = std::chrono::seconds(m_clock.elapsed() / 1000);
    const QString text = progressText(progress, m_isForDrive);
    m_label->setText(tr("%1 — %2 · %3 so far").arg(m_name, text, durationText(elapsed)));
    showAmount(progress);
}

void JobBar::showShare(const DiscJobProgress &progress)
{
    const auto elapsed = std::chrono::seconds(m_clock.elapsed() / 1000);
    m_label->setText(tr("%1 — %2").arg(m_name, tr("%1 so far").arg(durationText(elapsed))));
    showAmount(progress);
}

void JobBar::showAmount(const DiscJobProgress &progress)
{
    if (progress.bytesTotal == 0) {
        m_bar->setRange(0, 0);
        return;
    }
    m_bar->setRange(0, 1000);
    m_bar->setValue(int(progress.percent() * 10));
}

void JobBar::showText(const QString &text)
{
    m_label->setText(text.isEmpty() ? m_name : tr("%1 — %2").arg(m_name, text));
}

void JobBar::setCancellable(bool canBeCancelled)
{
    m_cancel->setVisible(canBeCancelled);
}

void JobBar::showCancelling()
{
    m_cancel->setEnabled(false);
    m_cancel->setText(tr("Cancelling…"));
}

void JobBar::end()
{
    QWidget::hide();
}

QString JobBar::text() const
{
    return m_label->text();
}

} // namespace Tessaron::Desktop
