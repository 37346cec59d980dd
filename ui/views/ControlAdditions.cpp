#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QLineEdit>

#include <TessaronClassesUI/ControlAdditions.h>

namespace Tessaron
{

void safelySetStringValue(QLineEdit &field, const QString &value)
{
    field.setText(value.isNull() ? QStringLiteral("") : value);
}

void changeStateOfAllCells(QButtonGroup &matrix, int state)
{
    const QList<QAbstractButton *> buttons = matrix.buttons();
    for (QAbstractButton *const button : buttons) {
        auto *const checkBox = qobject_cast<QCheckBox *>(button);
        if (checkBox && checkBox->isTristate() && state < 0)
            checkBox->setCheckState(Qt::PartiallyChecked);
        else
            button->setChecked(state != 0);
    }
}

} // namespace Tessaron
