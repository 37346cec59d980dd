#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

namespace
{

std::shared_ptr<KRFileHierarchyItem> folderNamed(const QString &name)
{
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::virtualFolderWithName(name));
}

std::shared_ptr<KRFileHierarchyItem> itemAtPath(const QString &path)
{
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::fileReferenceWithPath(path));
}

std::vector<QString> namesOf(const KRFileHierarchyItem::Items &items)
{
    std::vector<QString> names;
    for (const auto &item : items)
        names.push_back(item->fileReference()->name());
    return names;
}

std::shared_ptr<KRFileHierarchyItem> folderWithChildren(const QStringList &names)
{
    auto folder = folderNamed(QStringLiteral("root"));
    for (const QString &name : names)
        folder->addItem(folderNamed(name));
    return folder;
}

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");
const QString c = QStringLiteral("c");
const QString x = QStringLiteral("x");

TEST(KRFileHierarchyItem, childWithDesiredName_takesNoNameForNoEmptyName)
{
    const auto root = folderNamed(QStringLiteral("root"));
    root->addItem(KRFileHierarchyItem::initWithFileReference(KRFileReference::initWithFSRef(FSRef())));
    EXPECT_FALSE(root->childWithDesiredName(QLatin1String("")));
}

TEST(KRFileHierarchyItem, walk_keepsTheChildOfTheTurn_whenTheArrayIsChanged)
{
    const auto root = folderWithChildren({a, b, c});
    EXPECT_THROW(
        for (const auto &item
             : root->walk()) {
            root->items().clear();
            EXPECT_EQ(item->fileReference()->name(), a);
        },
        std::logic_error);
}

TEST(KRFileHierarchyItem, addItem_refusesAnItemThatHoldsThisOne_alsoFarAbove)
{
    const auto one = folderNamed(a);
    const auto two = folderNamed(b);
    const auto three = folderWithChildren({c});
    one->addItem(two);
    two->addItem(three);
    three->addItem(one);
    EXPECT_EQ(three->numberOfItems(), 1u);
    EXPECT_EQ(one->parent(), nullptr);
}

TEST(KRFileHierarchyItem, addItem_ends_whereStaleLinksRunInACircle)
{
    const auto one = folderNamed(a);
    const auto two = folderNamed(b);
    one->addItem(two);
    one->removeItem(two);
    two->addItem(one); // the link of each leads to the other now
    const auto other = folderWithChildren({c});
    one->addItem(other);
    EXPECT_EQ(one->items(), KRFileHierarchyItem::Items{other});
}

TEST(KRFileHierarchyItem, anItem_letsItsReferenceGo)
{
    std::weak_ptr<KRFileReference> watched;
    {
        const auto item = folderNamed(a);
        watched = item->fileReference();
        EXPECT_FALSE(watched.expired());
    }
    EXPECT_TRUE(watched.expired());
}

} // namespace

TEST(KRFileHierarchyItem, initWithFileReference_makesAnItemWithoutChildren)
{
    const auto reference = KRFileReference::virtualFolderWithName(a);
    const auto item = KRFileHierarchyItem::initWithFileReference(reference);
    EXPECT_EQ(item->fileReference(), reference);
    EXPECT_FALSE(item->parent());
    EXPECT_EQ(item->numberOfItems(), 0u);
    EXPECT_TRUE(item->items().empty());
    const auto other = KRFileReference::virtualFolderWithName(b);
    item->setFileReference(other);
    EXPECT_EQ(item->fileReference(), other);
}

TEST(KRFileHierarchyItem, addItem_appendsAndSetsTheParent)
{
    const auto root = folderWithChildren({a, b});
    EXPECT_EQ(namesOf(root->items()), (std::vector<QString>{a, b}));
    EXPECT_EQ(root->items().front()->parent(), root);
    root->addItem(nullptr);
    EXPECT_EQ(root->numberOfItems(), 2u);
    root->items().pop_back(); // the array itself, not a copy
    EXPECT_EQ(root->numberOfItems(), 1u);
}

TEST(KRFileHierarchyItem, addItem_refusesAnItemThatHoldsTheReceiver)
{
    const auto root = folderWithChildren({a});
    const auto inner = root->items().front();
    inner->addItem(root);
    inner->insertItem(inner, 0);
    EXPECT_EQ(inner->numberOfItems(), 0u);
    // A former parent may be added: it holds the item no longer, though the item still names it as its parent.
    root->addItem(folderNamed(b));
    root->removeItem(inner);
    inner->addItem(root);
    EXPECT_EQ(inner->items().front(), root);
    EXPECT_EQ(root->parent(), inner);
}

TEST(KRFileHierarchyItem, insertItem_clampsTheIndex)
{
    const auto root = folderWithChildren({a, b, c});
    root->insertItem(folderNamed(QStringLiteral("front")), -5);
    root->insertItem(folderNamed(QStringLiteral("end")), 99);
    root->insertItem(folderNamed(QStringLiteral("second")), 1);
    root->insertItem(nullptr, 0);
    EXPECT_EQ(
        namesOf(root->items()),
        (std::vector<QString>{QStringLiteral("front"), QStringLiteral("second"), a, b, c, QStringLiteral("end")}));
    EXPECT_EQ(root->items().back()->parent(), root);
}

TEST(KRFileHierarchyItem, removeItemAtIndex_countsANegativeIndexAsZero)
{
    const auto root = folderWithChildren({a, b, c});
    root->removeItemAtIndex(-7);
    EXPECT_EQ(namesOf(root->items()), (std::vector<QString>{b, c}));
    root->removeItemAtIndex(1);
    EXPECT_EQ(namesOf(root->items()), (std::vector<QString>{b}));
}

TEST(KRFileHierarchyItem, removeItemAtIndex_ignoresOnlyWhatIsBeyondTheCount)
{
    const auto root = folderWithChildren({a, b});
    root->removeItemAtIndex(3);
    root->removeItemAtIndex(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(root->numberOfItems(), 2u);
    EXPECT_THROW(root->removeItemAtIndex(2), std::out_of_range);
    EXPECT_THROW(folderNamed(a)->removeItemAtIndex(-1), std::out_of_range);
    EXPECT_EQ(root->numberOfItems(), 2u);
}

TEST(KRFileHierarchyItem, removeItem_removesEveryOccurrence_andKeepsTheParentLink)
{
    const auto root = folderWithChildren({a, b});
    const auto child = root->items().front();
    root->addItem(child);
    root->removeItem(nullptr);
    root->removeItem(folderNamed(a)); // equal in name only
    EXPECT_EQ(root->numberOfItems(), 3u);
    root->removeItem(root->items().front());
    EXPECT_EQ(namesOf(root->items()), (std::vector<QString>{b}));
    EXPECT_EQ(child->parent(), root);
}

TEST(KRFileHierarchyItem, parent_isNull_onceTheParentIsGone)
{
    auto root = folderWithChildren({a});
    const auto child = root->items().front();
    root.reset();
    EXPECT_FALSE(child->parent());
    const auto other = folderNamed(b);
    child->setParent(other);
    EXPECT_EQ(child->parent(), other);
}

TEST(KRFileHierarchyItem, visibleItems_leaveOutWhatTheFileManagerHides)
{
    const TemporaryTree tree;
    tree.makeFile("one.txt");
    tree.makeFile(".hidden");
    tree.makeFile("two.txt");
    const auto root = folderNamed(QStringLiteral("root"));
    for (const char *const name : {"one.txt", ".hidden", "two.txt"})
        root->addItem(itemAtPath(tree.pathText(name)));
    EXPECT_EQ(root->numberOfVisibleItems(), 2u);
    EXPECT_EQ(root->numberOfItems(), 3u);
    EXPECT_EQ(namesOf(root->visibleItems()),
              (std::vector<QString>{QStringLiteral("one.txt"), QStringLiteral("two.txt")}));
    root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(nullptr));
    EXPECT_EQ(root->numberOfVisibleItems(), 3u);
}

TEST(KRFileHierarchyItem, childWithDesiredName_findsByTheNameOnTheDisc)
{
    const TemporaryTree tree;
    tree.makeFile("scan.pdf");
    tree.makeFile("plain.txt");
    tree.makeFolder("folder");
    const auto root = folderNamed(QStringLiteral("root"));
    root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(nullptr));
    const auto renamed = itemAtPath(tree.pathText("scan.pdf"));
    renamed->fileReference()->setDesiredName(QStringLiteral("Report"));
    const auto plain = itemAtPath(tree.pathText("plain.txt"));
    const auto folder = itemAtPath(tree.pathText("folder"));
    const auto virtualFolder = folderNamed(QStringLiteral("Virtual"));
    for (const auto &item : {renamed, plain, folder, virtualFolder})
        root->addItem(item);

    EXPECT_EQ(root->childWithDesiredName(QStringLiteral("Report.pdf")), renamed);
    EXPECT_FALSE(root->childWithDesiredName(QStringLiteral("Report")));
    EXPECT_FALSE(root->childWithDesiredName(QStringLiteral("scan.pdf")));
    EXPECT_EQ(root->childWithDesiredName(QStringLiteral("plain.txt")), plain);
    EXPECT_FALSE(root->childWithDesiredName(QStringLiteral("PLAIN.TXT")));
    EXPECT_EQ(root->childWithDesiredName(QStringLiteral("folder")), folder);
    EXPECT_EQ(root->childWithDesiredName(QStringLiteral("Virtual")), virtualFolder);
    EXPECT_FALSE(root->childWithDesiredName(QString()));
    plain->fileReference()->setDesiredName(QStringLiteral("Report.pdf"));
    EXPECT_EQ(root->childWithDesiredName(QStringLiteral("Report.pdf")), renamed) << "the first in order";
}

TEST(KRFileHierarchyItem, contentsPhysicalSize_sumsTheSubtree)
{
    const TemporaryTree tree;
    tree.makeFile("big", QByteArray(100'000, 'x'));
    tree.makeFile("folder/small", QByteArray(10, 'x'));
    const auto root = folderNamed(QStringLiteral("root"));
    const auto inner = itemAtPath(tree.pathText("folder"));
    const auto big = itemAtPath(tree.pathText("big"));
    const auto small = itemAtPath(tree.pathText("folder/small"));
    root->addItem(big);
    root->addItem(inner);
    inner->addItem(small);
    EXPECT_GE(big->fileReference()->physicalSize(), 100'000u);
    EXPECT_EQ(root->contentsPhysicalSize(),
              big->fileReference()->physicalSize() + small->fileReference()->physicalSize());
    EXPECT_EQ(inner->contentsPhysicalSize(), small->fileReference()->physicalSize());
    EXPECT_EQ(folderNamed(a)->contentsPhysicalSize(), 0u);
}

TEST(KRFileHierarchyItem, walk_visitsTheChildrenInOrder)
{
    const auto root = folderWithChildren({a, b, c});
    std::vector<QString> visited;
    for (const auto &item : root->walk())
        visited.push_back(item->fileReference()->name());
    EXPECT_EQ(visited, (std::vector<QString>{a, b, c}));
}

TEST(KRFileHierarchyItem, walk_raises_whenTheChildrenAreChangedUnderIt)
{
    const auto changeWhileWalking = [](const std::function<void(KRFileHierarchyItem &)> &change) {
        const auto root = folderWithChildren({a, b, c});
        for (const auto &item : root->walk()) {
            if (item->fileReference()->name() == b)
                change(*root);
        }
    };
    EXPECT_NO_THROW(changeWhileWalking([](KRFileHierarchyItem &) {}));
    EXPECT_THROW(changeWhileWalking([](KRFileHierarchyItem &root) { root.addItem(folderNamed(x)); }), std::logic_error);
    EXPECT_THROW(changeWhileWalking([](KRFileHierarchyItem &root) { root.removeItemAtIndex(0); }), std::logic_error);
    EXPECT_THROW(changeWhileWalking([](KRFileHierarchyItem &root) { root.items().clear(); }), std::logic_error);
    EXPECT_THROW(changeWhileWalking([](KRFileHierarchyItem &root) { std::swap(root.items()[0], root.items()[1]); }),
                 std::logic_error);
}

TEST(KRFileHierarchyItem, walk_raises_whenAChildIsExchangedForANewOne)
{
    // The new child is likely to be made in the memory of the one that was removed.
    for (const bool isBehind : {false, true}) {
        const auto root = folderWithChildren({a, b, c});
        const auto reference = KRFileReference::virtualFolderWithName(x);
        std::vector<QString> visited;
        EXPECT_THROW(
            for (const auto &item
                 : root->walk()) {
                visited.push_back(item->fileReference()->name());
                if (item->fileReference()->name() != b)
                    continue;
                root->removeItemAtIndex(isBehind ? 2 : 0);
                root->insertItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(reference), isBehind ? 2 : 0);
            },
            std::logic_error)
            << isBehind;
        EXPECT_LE(visited.size(), 3u);
    }
}

TEST(KRFileHierarchyItem, treesOfAnyDepth_areSizedAndFreedWithoutRecursion)
{
    auto root = folderNamed(QStringLiteral("root"));
    auto deepest = root;
    for (int depth = 0; depth < 200'000; ++depth) {
        const auto inner = KRFileHierarchyItem::fileHierarchyItemWithFileReference(nullptr);
        deepest->addItem(inner);
        deepest = inner;
    }
    EXPECT_EQ(root->contentsPhysicalSize(), 0u);
    const std::weak_ptr<KRFileHierarchyItem> watched = deepest;
    deepest.reset();
    root.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(KRFileHierarchyItem, destructor_sparesWhatSomebodyElseHolds)
{
    auto root = folderWithChildren({a});
    const auto inner = root->items().front();
    inner->addItem(folderNamed(b));
    root.reset();
    EXPECT_EQ(namesOf(inner->items()), (std::vector<QString>{b}));
    EXPECT_EQ(inner->items().front()->parent(), inner);
}
