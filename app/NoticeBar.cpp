#include "app/NoticeBar.h"

#include "app/ListDialog.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

namespace Tessaron::Desktop
{

NoticeBar::NoticeBar(QWidget *parent)
    : QFrame(parent)
    , m_label(new QLabel(this))
    , m_more(new QPushButton(tr("&Details…"), this))
    , m_close(new QToolButton(this))
{
    setFrameShape(StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    m_label->setForegroundRole(QPalette::ToolTipText);
    m_label->setWordWrap(true);
    m_label->setTextFormat(Qt::PlainText); // names of files may look like markup
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    m_close->setAutoRaise(true);
    m_close->setToolTip(tr("Close this message"));
    m_close->setAccessibleName(m_close->toolTip());
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 4, 4);
    row->addWidget(m_label, 1);
    row->addWidget(m_more);
    row->addWidget(m_close);
    connect(m_more, &QPushButton::clicked, this, &NoticeBar::showDetails);
    connect(m_close, &QToolButton::clicked, this, &NoticeBar::clear);
    hide();
}

void NoticeBar::tell(const QString &text, const QStringList &details)
{
    m_details = details;
    m_label->setText(text);
    m_more->setVisible(!details.isEmpty());
    setAccessibleName(text);
    show();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void NoticeBar::clear()
{
    m_details.clear();
    m_label->clear();
    hide();
}

QString NoticeBar::text() const
{
    return m_label->text();
}

void NoticeBar::showDetails()
{
    auto *const dialog = new ListDialog(m_label->text(), m_details, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

} // namespace Tessaron::Desktop
