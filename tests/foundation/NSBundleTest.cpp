#include "platform/foundation/NSBundle.h"

#include "platform/foundation/StringsTable.h"
#include "tests/support/TemporaryTree.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

TEST(NSBundle, localizedString_yieldsTheKey_whenKeyOrTableIsMissing)
{
    const TemporaryTree tree;
    tree.makeFile("Resources/Localizable.strings", "\"known\" = \"text\";\n");
    const auto bundle = NSBundle::bundleWithPath(tree.pathText());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->localizedString(QStringLiteral("known")), QStringLiteral("text"));
    EXPECT_EQ(bundle->localizedString(QStringLiteral("unknown")), QStringLiteral("unknown"));
    EXPECT_EQ(bundle->localizedString(QStringLiteral("known"), {}, QStringLiteral("Other")), QStringLiteral("known"));
}

TEST(NSBundle, localizedString_yieldsTheGivenValue_whenTheKeyIsMissing)
{
    const TemporaryTree tree;
    EXPECT_EQ(NSBundle::bundleWithPath(tree.pathText())->localizedString(QStringLiteral("a"), QStringLiteral("b")),
              QStringLiteral("b"));
}

TEST(NSBundle, localizedString_takesTheFirstPreferredLanguageThatHasTheTable)
{
    const TemporaryTree tree;
    tree.makeFile("Resources/de.lproj/Localizable.strings", "\"word\" = \"Wort\";");
    tree.makeFile("Resources/fr.lproj/Localizable.strings", "\"word\" = \"mot\";");
    tree.makeFile("Resources/Localizable.strings", "\"word\" = \"none of them\";");
    const auto bundle = NSBundle::bundleWithPath(tree.pathText());
    bundle->setPreferredLanguages({QStringLiteral("sv"), QStringLiteral("de-AT"), QStringLiteral("fr")});
    EXPECT_EQ(bundle->localizedString(QStringLiteral("word")), QStringLiteral("Wort"));
    bundle->setPreferredLanguages({QStringLiteral("sv")});
    EXPECT_EQ(bundle->localizedString(QStringLiteral("word")), QStringLiteral("none of them"));
}

TEST(NSBundle, bundleWithPath_isNullForAMissingFolder)
{
    EXPECT_FALSE(NSBundle::bundleWithPath(QStringLiteral("/no/such/folder")));
}

TEST(NSBundle, bundleWithPath_looksBelowTheSystemRoot_whenOneIsSet)
{
    const TemporaryTree tree;
    tree.makeFolder("System/Library/Some.app/Resources");
    EXPECT_FALSE(NSBundle::bundleWithPath(QStringLiteral("/System/Library/Some.app")));
    NSBundle::setSystemRoot(tree.pathText());
    EXPECT_TRUE(NSBundle::bundleWithPath(QStringLiteral("/System/Library/Some.app")));
}

TEST(NSBundle, mainBundle_isAnEmptyBundle_whenItsFolderIsMissing)
{
    const auto bundle = NSBundle::mainBundle();
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->localizedString(QStringLiteral("toolbar burn")), QStringLiteral("toolbar burn"));
}

TEST(NSBundle, mainBundle_isTheFolderNamed)
{
    const TemporaryTree tree;
    tree.makeFile("Resources/Localizable.strings", "\"toolbar burn\" = \"Make disc\";");
    NSBundle::setMainBundlePath(tree.pathText());
    EXPECT_EQ(NSBundle::mainBundle()->localizedString(QStringLiteral("toolbar burn")), QStringLiteral("Make disc"));
}

TEST(NSBundle, pathForResource_findsTheOneOfTheUsersLanguageFirst)
{
    const TemporaryTree tree;
    tree.makeFile("Resources/picture.png");
    tree.makeFile("Resources/page.html");
    tree.makeFile("Resources/de.lproj/page.html");
    tree.makeFolder("Resources/folder");
    const auto bundle = NSBundle::bundleWithPath(tree.pathText());
    bundle->setPreferredLanguages({QStringLiteral("de-AT")});
    const auto found = [&](const char *name, const char *type) {
        return bundle->pathForResource(QString::fromLatin1(name), QString::fromLatin1(type));
    };
    EXPECT_EQ(found("picture", "png"), tree.pathText("Resources/picture.png"));
    EXPECT_EQ(found("picture.png", ""), tree.pathText("Resources/picture.png"));
    EXPECT_EQ(found("page", "html"), tree.pathText("Resources/de.lproj/page.html"));
    EXPECT_EQ(found("missing", "html"), QString());
    EXPECT_EQ(found("folder", ""), QString());
    tree.makeFolder("Resources/Helper.app/Contents");
    EXPECT_EQ(found("Helper", "app"), tree.pathText("Resources/Helper.app"));
    EXPECT_EQ(found("Helper.app", ""), QString());
    EXPECT_EQ(found("", ""), QString());
}

TEST(NSBundle, pathForResource_ofMainAndFrameworkBundleFindsHelperPrograms_itsOwnOnesFirst)
{
    const QDir programs(QCoreApplication::applicationDirPath() + QStringLiteral("/../libexec/TessaronClasses"));
    ASSERT_TRUE(QDir().mkpath(programs.path()));
    const QString name = QStringLiteral("helper-of-a-test-%1").arg(QCoreApplication::applicationPid());
    QFile program(programs.absoluteFilePath(name));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    const TemporaryTree tree;
    NSBundle::setMainBundlePath(tree.pathText());
    EXPECT_EQ(NSBundle::mainBundle()->pathForResource(name), QDir::cleanPath(program.fileName()));
    EXPECT_EQ(NSBundle::frameworkBundle()->pathForResource(name), QDir::cleanPath(program.fileName()));
    EXPECT_EQ(NSBundle::bundleWithPath(tree.pathText())->pathForResource(name), QString());
    tree.makeFile("Resources/" + name.toUtf8());
    EXPECT_EQ(NSBundle::mainBundle()->pathForResource(name), tree.pathText("Resources/") + name);
    EXPECT_TRUE(program.remove());
}

TEST(NSBundle, bundleWithIdentifier_findsTheFrameworkAndWhatWasRegistered)
{
    EXPECT_EQ(NSBundle::bundleWithIdentifier(frameworkBundleIdentifier), NSBundle::frameworkBundle());
    EXPECT_FALSE(NSBundle::bundleWithIdentifier(QStringLiteral("org.example.plug-in")));
    const TemporaryTree tree;
    const auto bundle = NSBundle::bundleWithPath(tree.pathText());
    NSBundle::registerBundle(QStringLiteral("org.example.plug-in"), bundle);
    EXPECT_EQ(NSBundle::bundleWithIdentifier(QStringLiteral("org.example.plug-in")), bundle);
}

TEST(StringsTable, parse_understandsCommentsAndEscapes)
{
    const auto table = parseStringsTable("/* head\n \"not\" = \"read\"; */\n"
                                         "// \"nor\" = \"this\";\n"
                                         "\"a\" = \"line\\nbreak \\\"quoted\\\" \\\\ \\U00e9\";\"b\"=\"two\";");
    EXPECT_EQ(table.size(), 2);
    EXPECT_EQ(table.value(QStringLiteral("a")), QStringLiteral("line\nbreak \"quoted\" \\ \u00e9"));
    EXPECT_EQ(table.value(QStringLiteral("b")), QStringLiteral("two"));
}

TEST(StringsTable, parse_skipsABrokenEntryAndKeepsTheOthers)
{
    const auto table = parseStringsTable("\"a\" = \"1\";\n\"broken\" \"2\";\nnonsense\n\"c\" = \"3\";\n\"open");
    EXPECT_EQ(table.size(), 2);
    EXPECT_EQ(table.value(QStringLiteral("c")), QStringLiteral("3"));
}
