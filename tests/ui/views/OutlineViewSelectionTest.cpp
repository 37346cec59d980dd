#include <QItemSelectionModel>
#include <QStandardItemModel>
#include <QTreeView>

#include <TessaronClassesUI/OutlineViewSelection.h>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

/// "a" with the children "a1" and "a2", then "b" and "c"; two columns.
class OutlineViewSelection : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const char16_t *const name : {u"a", u"b", u"c"})
            m_model.appendRow({item(name), item(u"second column")});
        m_model.item(0)->appendRow({item(u"a1"), item(u"second column")});
        m_model.item(0)->appendRow({item(u"a2"), item(u"second column")});
        m_view.setModel(&m_model);
        m_view.setSelectionMode(QAbstractItemView::ExtendedSelection);
        m_view.expandAll();
    }

    static QStandardItem *item(const char16_t *name) { return new QStandardItem(QString::fromUtf16(name)); }

    void select(const QModelIndex &index)
    {
        m_view.selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    [[nodiscard]] QStringList selectedNames() const
    {
        QStringList names;
        const QModelIndexList items = selectedItems(m_view).value_or(QModelIndexList());
        for (const QModelIndex &index : items)
            names << index.data().toString();
        return names;
    }

    QStandardItemModel m_model;
    QTreeView m_view;
};

} // namespace

TEST_F(OutlineViewSelection, selectedItems_hasNoValue_whenNothingIsSelected)
{
    EXPECT_EQ(selectedItems(m_view), std::nullopt);
    const QTreeView withoutModel;
    EXPECT_EQ(selectedItems(withoutModel), std::nullopt);
}

TEST_F(OutlineViewSelection, selectedItems_areInTheOrderOfTheRows)
{
    select(m_model.index(2, 0));
    select(m_model.index(1, 0, m_model.index(0, 0)));
    select(m_model.index(0, 0));
    EXPECT_EQ(selectedNames(), (QStringList{QStringLiteral("a"), QStringLiteral("a2"), QStringLiteral("c")}));
    const QModelIndexList items = selectedItems(m_view).value_or(QModelIndexList());
    for (const QModelIndex &index : items)
        EXPECT_EQ(index.column(), 0);
}

TEST_F(OutlineViewSelection, selectedItems_leaveOutRowsThatAreNotShown)
{
    select(m_model.index(0, 0, m_model.index(0, 0)));
    select(m_model.index(1, 0));
    m_view.collapse(m_model.index(0, 0));
    EXPECT_EQ(selectedNames(), (QStringList{QStringLiteral("b")}));
}

TEST_F(OutlineViewSelection, selectedItems_hasNoValue_whenOnlyRowsThatAreNotShownAreSelected)
{
    select(m_model.index(0, 0, m_model.index(0, 0)));
    m_view.collapse(m_model.index(0, 0));
    EXPECT_EQ(selectedItems(m_view), std::nullopt);
}

TEST_F(OutlineViewSelection, selectedItems_leaveOutAHiddenFirstRow)
{
    select(m_model.index(0, 0));
    select(m_model.index(1, 0));
    m_view.setRowHidden(0, QModelIndex(), true);
    EXPECT_EQ(selectedNames(), QStringList{QStringLiteral("b")});
}

TEST_F(OutlineViewSelection, selectedItems_takeARow_whenOnlyItsSecondColumnIsSelected)
{
    m_view.selectionModel()->select(m_model.index(1, 1), QItemSelectionModel::Select);
    EXPECT_EQ(selectedNames(), QStringList{QStringLiteral("b")});
}
