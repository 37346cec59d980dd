#include "app/ListDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace Tessaron::Desktop
{

ListDialog::ListDialog(const QString &text, const QStringList &lines, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Details"));
    auto *const column = new QVBoxLayout(this);
    auto *const label = new QLabel(text, this);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    column->addWidget(label);
    auto *const list = new QPlainTextEdit(lines.join(u'\n'), this);
    list->setReadOnly(true);
    list->setLineWrapMode(QPlainTextEdit::NoWrap);
    list->setTabChangesFocus(true);
    list->setAccessibleName(tr("Details"));
    column->addWidget(list, 1);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    resize(640, 360);
}

} // namespace Tessaron::Desktop
