#include <QButtonGroup>
#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>

#include <TessaronClassesUI/ControlAdditions.h>
#include <gtest/gtest.h>

using namespace Tessaron;

TEST(ControlAdditions, safelySetStringValue_emptiesTheField_forANullText)
{
    QLineEdit field(QStringLiteral("before"));
    safelySetStringValue(field, QStringLiteral("text"));
    EXPECT_EQ(field.text(), QStringLiteral("text"));
    safelySetStringValue(field, QString());
    EXPECT_EQ(field.text(), QString());
}

TEST(ControlAdditions, changeStateOfAllCells_reachesEveryButton)
{
    QCheckBox first;
    QCheckBox second;
    second.setTristate(true);
    QButtonGroup matrix;
    matrix.setExclusive(false);
    matrix.addButton(&first);
    matrix.addButton(&second);
    changeStateOfAllCells(matrix, 1);
    EXPECT_EQ(first.checkState(), Qt::Checked);
    EXPECT_EQ(second.checkState(), Qt::Checked);
    changeStateOfAllCells(matrix, -1);
    EXPECT_EQ(first.checkState(), Qt::Checked);
    EXPECT_EQ(second.checkState(), Qt::PartiallyChecked);
    changeStateOfAllCells(matrix, 0);
    EXPECT_EQ(first.checkState(), Qt::Unchecked);
    EXPECT_EQ(second.checkState(), Qt::Unchecked);
}

TEST(ControlAdditions, changeStateOfAllCells_reachesEveryButton_alsoWhereOneExcludesTheOthers)
{
    QRadioButton first;
    QRadioButton second;
    for (QRadioButton *const button : {&first, &second})
        button->setAutoExclusive(false);
    QButtonGroup matrix;
    matrix.addButton(&first);
    matrix.addButton(&second);
    changeStateOfAllCells(matrix, 1);
    EXPECT_TRUE(first.isChecked());
    EXPECT_TRUE(second.isChecked());
    changeStateOfAllCells(matrix, 0);
    EXPECT_FALSE(first.isChecked());
    EXPECT_FALSE(second.isChecked());
    EXPECT_TRUE(matrix.exclusive());
    first.click();
    second.click();
    EXPECT_FALSE(first.isChecked()) << "a click excludes as before";
}

TEST(ControlAdditions, changeStateOfAllCells_ofNoButtons_doesNothing)
{
    QButtonGroup matrix;
    changeStateOfAllCells(matrix, 1);
    EXPECT_TRUE(matrix.buttons().isEmpty());
}
