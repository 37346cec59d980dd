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
    const bool wasExclusive = matrix.exclusive();
    matrix.setExclusive(false);
    for (QAbstractButton *const button : buttons) {
        auto *const checkBox = qobject_cast<QCheckBox *>(button);
        if (checkBox && checkBox->isTristate() && state < 0)
            checkBox->setCheckState(Qt::PartiallyChecked);
        else
            button->setChecked(state != 0);
    }
    matrix.setExclusive(wasExclusive);
}

} // namespace Tessaron
