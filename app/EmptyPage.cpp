#include "app/EmptyPage.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace Tessaron::Desktop
{

EmptyPage::EmptyPage(const QString &title, const QString &text, const QString &buttonText, QWidget *parent)
    : QWidget(parent)
{
    auto *const titleLabel = new QLabel(title, this);
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    titleLabel->setFont(big);
    auto *const textLabel = new QLabel(text, this);
    textLabel->setWordWrap(true);
    textLabel->setAlignment(Qt::AlignCenter);
    auto *const button = new QPushButton(buttonText, this);
    connect(button, &QPushButton::clicked, this, &EmptyPage::pressed);
    auto *const column = new QVBoxLayout(this);
    column->addStretch(1);
    column->addWidget(titleLabel, 0, Qt::AlignCenter);
    column->addWidget(textLabel);
    column->addWidget(button, 0, Qt::AlignCenter);
    column->addStretch(1);
}

} // namespace Tessaron::Desktop
