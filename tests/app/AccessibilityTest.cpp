#include "app/AudioView.h"
#include "app/BurnDialog.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/DiscTreeView.h"
#include "app/MainWindow.h"
#include "app/OptionsDialog.h"
#include "app/Translations.h"

#include "tests/app/Keys.h"
#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QTest>
#include <QTranslator>

#include <gtest/gtest.h>
#include <set>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

std::string nameOf(const QWidget &widget)
{
    return std::string(widget.metaObject()->className()) + ' ' + widget.accessibleName().toStdString();
}

/// Everything in a window that a person may come to by Tab.
std::vector<QWidget *> controlsOf(QWidget &window)
{
    std::vector<QWidget *> controls;
    for (QWidget *const widget : window.findChildren<QWidget *>()) {
        const bool isReached = (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isVisible() && widget->isEnabled()
            && !widget->focusProxy();
        if (isReached)
            controls.push_back(widget);
    }
    return controls;
}

/// What a screen reader would say nothing of.
void expectNamesAndRoles(QWidget &window)
{
    for (QWidget *const widget : window.findChildren<QWidget *>()) {
        // The field of a spin box is told as the box.
        if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisible()
            || qobject_cast<QAbstractSpinBox *>(widget->parentWidget()))
            continue;
        QAccessibleInterface *const told = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(told, nullptr) << nameOf(*widget);
        EXPECT_FALSE(told->text(QAccessible::Name).isEmpty()) << nameOf(*widget);
        EXPECT_NE(told->role(), QAccessible::NoRole) << nameOf(*widget);
        EXPECT_NE(told->role(), QAccessible::Client) << nameOf(*widget);
    }
}

class AccessibilityTest : public testing::Test
{
protected:
    void show(MainWindow &window)
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    static constexpr int panels = 4;
    const TemporaryTree tree;
};

/// The letters that choose an entry while the menu is open; two entries with one letter are a trap.
void expectMnemonicsOnce(const QMenu &menu, const QString &language)
{
    std::set<QChar> letters;
    for (const QAction *const action : menu.actions()) {
        if (action->isSeparator())
            continue;
        const QString text = action->text();
        const qsizetype place = text.indexOf(u'&');
        EXPECT_TRUE(place >= 0 || !action->shortcut().isEmpty()) << text.toStdString();
        if (place < 0 || place + 1 >= text.size())
            continue;
        EXPECT_TRUE(letters.insert(text.at(place + 1).toLower()).second)
            << language.toStdString() << ": " << menu.title().toStdString() << ": " << text.toStdString();
    }
}

} // namespace

TEST_F(AccessibilityTest, everyControl_ofEveryPanel_hasANameAndARole)
{
    MainWindow window;
    show(window);
    for (int panel = 0; panel < panels; ++panel) {
        window.showPanel(panel);
        QApplication::processEvents();
        expectNamesAndRoles(window);
    }
}

TEST_F(AccessibilityTest, everyControl_ofTheDialogs_hasANameAndARole)
{
    OptionsDialog options(QStringLiteral("letter.txt"), TessaronFileAttributesNone_fct());
    options.show();
    expectNamesAndRoles(options);
    BurnSubject subject;
    subject.bytes = 1'000'000;
    BurnDialog burning(subject);
    burning.show();
    expectNamesAndRoles(burning);
}

TEST_F(AccessibilityTest, tabKey_reachesEveryControl)
{
    MainWindow window;
    show(window);
    for (int panel = 0; panel < panels; ++panel) {
        window.showPanel(panel);
        QApplication::processEvents();
        const std::vector<QWidget *> controls = controlsOf(window);
        ASSERT_FALSE(controls.empty());
        controls.front()->setFocus();
        std::set<const QWidget *> reached;
        for (std::size_t step = 0; step < 3 * controls.size(); ++step) {
            QWidget *const focused = QApplication::focusWidget();
            ASSERT_NE(focused, nullptr);
            reached.insert(focused);
            // A table takes the key to go from cell to cell only where that was asked for.
            QTest::keyClick(focused, Qt::Key_Tab);
        }
        for (const QWidget *const control : controls)
            EXPECT_TRUE(reached.contains(control)) << "panel " << panel << ": " << nameOf(*control);
    }
}

TEST_F(AccessibilityTest, everyAction_isChosenByKeys_inEveryLanguage)
{
    for (const char *const language : {"en", "de", "fr", "ja"}) {
        QCoreApplication &application = *QCoreApplication::instance();
        installTranslations(application, QLocale(QString::fromLatin1(language)));
        {
            MainWindow window;
            for (int panel = 0; panel < panels; ++panel) {
                window.showPanel(panel);
                std::set<QChar> titles;
                for (const QAction *const title : window.menuBar()->actions()) {
                    const qsizetype place = title->text().indexOf(u'&');
                    ASSERT_GE(place, 0) << title->text().toStdString();
                    EXPECT_TRUE(titles.insert(title->text().at(place + 1).toLower()).second)
                        << language << ": " << title->text().toStdString();
                    expectMnemonicsOnce(*title->menu(), QString::fromLatin1(language));
                }
            }
        }
        qDeleteAll(application.findChildren<QTranslator *>());
    }
}

TEST_F(AccessibilityTest, disc_isPutTogether_byKeysAlone)
{
    tree.makeFile("letter.txt", "Dear reader,\n");
    tree.makeFile("photos/beach.jpg", "b");
    MainWindow window;
    show(window);
    DataView &view = window.dataPanel().dataView();
    DiscDocument &document = window.dataPanel().document();
    window.openFiles({tree.path("letter.txt"), tree.path("photos")});
    EXPECT_TRUE(runEventLoopUntil([&view] { return !view.intake().isRunning(); }));
    QTreeView &rows = view.tree();
    rows.setFocus();
    press(Qt::Key_End);
    press(Qt::Key_Home); // photos
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    typeName("sorted");
    ASSERT_NE(nodeAt(document, QStringLiteral("/photos/sorted")), nullptr);
    press(Qt::Key_End); // letter.txt
    press(Qt::Key_F2);
    typeName("note.txt");
    EXPECT_NE(nodeAt(document, QStringLiteral("/note.txt")), nullptr);
    press(Qt::Key_End);
    press(Qt::Key_Delete);
    EXPECT_EQ(nodeAt(document, QStringLiteral("/note.txt")), nullptr);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(nodeAt(document, QStringLiteral("/note.txt")), nullptr);
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget(), &view.filterField());
}
