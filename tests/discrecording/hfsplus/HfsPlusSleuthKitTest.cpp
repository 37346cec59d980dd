#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

#include <QMap>

namespace Tessaron::Testing
{

namespace
{

/// What the Sleuth Kit (fls, icat) reads from the volume of an image: it knows partitions, hard links, both forks and
/// the order of names, and shares nothing with the writer.
class SleuthKit
{
public:
    explicit SleuthKit(const QString &image)
        : m_image(image)
    {
    }

    /// Kind letters and number ("r/r 17") of each object by path. Hidden are the volume's own files. Control characters
    /// come as '^'.
    [[nodiscard]] QMap<QString, QString> list() const
    {
        QMap<QString, QString> objects;
        const ProgramRun result = run(QStringLiteral("fls"), {QStringLiteral("-r"), QStringLiteral("-p")}, {});
        EXPECT_EQ(result.status, 0) << result.errors.toStdString();
        for (const QString &line : QString::fromUtf8(result.output).split(u'\n', Qt::SkipEmptyParts)) {
            const qsizetype colon = line.indexOf(QStringLiteral(":\t"));
            const QString path = line.mid(colon + 2).normalized(QString::NormalizationForm_C);
            if (!path.startsWith(u'$') && !path.startsWith(QStringLiteral("^^^^HFS+")))
                objects.insert(path, line.left(colon));
        }
        return objects;
    }

    [[nodiscard]] QByteArray contents(const QString &listed, const QString &fork = {}) const
    {
        const QString number = listed.section(u' ', 1);
        const ProgramRun result = run(QStringLiteral("icat"), {}, {number + fork});
        EXPECT_EQ(result.status, 0) << result.errors.toStdString();
        return result.output;
    }

    [[nodiscard]] QByteArray facts(const QString &listed) const
    {
        return run(QStringLiteral("istat"), {}, {listed.section(u' ', 1)}).output;
    }

private:
    [[nodiscard]] ProgramRun run(const QString &program, const QStringList &before, const QStringList &after) const
    {
        // The volume begins 32 sectors into the image.
        return runProgram(program,
                          before
                              + QStringList{QStringLiteral("-f"), QStringLiteral("hfs"), QStringLiteral("-o"),
                                            QStringLiteral("32"), m_image}
                              + after);
    }

    const QString m_image;
};

} // namespace

class HfsPlusSleuthKit : public ::testing::TestWithParam<DRFilesystemMask>
{
protected:
    void SetUp() override
    {
        if (!hasProgram(QStringLiteral("fls")))
            GTEST_SKIP() << "sleuthkit is not installed";
    }
};

TEST_P(HfsPlusSleuthKit, oddTree_isReadWithAllContents)
{
    const TemporaryTree tree;
    QMap<QString, QByteArray> expected;
    const auto add = [&](const QByteArray &path, const QString &onDisc, const QByteArray &contents) {
        tree.makeFile(path, contents);
        expected.insert(onDisc, contents);
    };
    for (const char *const name : {"plain.txt", " lead", "trail. ", "...dots", "back\\slash", "q?*<>|\"", "colon:name",
                                   "Ünïcode é 한국어", "emoji😀", "sub/deep/er", "ÄRGER", "empty"})
        add(name, QString::fromUtf8(name), qstrcmp(name, "empty") == 0 ? QByteArray() : QByteArray(5000, name[0]));
    add("new\nline", QStringLiteral("new^line"), "control");
    add("ärger", QStringLiteral("ärger_1"), "collides");
    add("bad\xFF\xFE", QStringLiteral("bad__"), "not UTF-8");
    add(QByteArray(255, 'a'), QString(255, u'a'), "long");
    tree.makeHardLink("sub/hard", "plain.txt");
    expected.insert(QStringLiteral("sub/hard"), expected[QStringLiteral("plain.txt")]);
    tree.makeSymbolicLink("link", "sub/deep");
    expected.insert(QStringLiteral("link"), "sub/deep");
    const WrittenImage image(realFolder(tree), optionsFor(GetParam()));
    ASSERT_FALSE(image.error());

    const SleuthKit kit(image.path());
    QMap<QString, QString> listed = kit.list();
    EXPECT_EQ(listed.take(QStringLiteral("sub")).left(3), QStringLiteral("d/d"));
    EXPECT_EQ(listed.take(QStringLiteral("sub/deep")).left(3), QStringLiteral("d/d"));
    EXPECT_EQ(listed.keys(), expected.keys());
    EXPECT_EQ(listed[QStringLiteral("link")].left(3), QStringLiteral("l/l"));
    EXPECT_EQ(listed[QStringLiteral("sub/hard")], listed[QStringLiteral("plain.txt")]);
    for (auto object = listed.constBegin(); object != listed.constEnd(); ++object)
        EXPECT_EQ(kit.contents(object.value()), expected[object.key()]) << qPrintable(object.key());
}

TEST_P(HfsPlusSleuthKit, forksAndFinderInformation_areRead)
{
    const TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "the temporary folder keeps no extended attributes";
    tree.makeFile("document", "data fork");
    QByteArray info(32, '\0');
    info.replace(0, 8, "TEXTttxt");
    tree.setExtendedAttribute("document", "user.com.apple.FinderInfo", info);
    tree.setExtendedAttribute("document", "user.com.apple.ResourceFork", QByteArray(3000, 'r'));
    const WrittenImage image(realFolder(tree), optionsFor(GetParam()));
    const SleuthKit kit(image.path());
    const QString document = kit.list().value(QStringLiteral("document"));
    EXPECT_EQ(kit.contents(document), "data fork");
    EXPECT_EQ(kit.contents(document, QStringLiteral("-4353")), QByteArray(3000, 'r'));
    EXPECT_TRUE(kit.facts(document).contains("54455854  TEXT")) << kit.facts(document).toStdString();
}

TEST(HfsPlusSleuthKitOnce, fileAbove4GiB_hasItsSize)
{
    if (!hasProgram(QStringLiteral("fls")))
        GTEST_SKIP() << "sleuthkit is not installed";
    const TemporaryTree tree;
    tree.makeSparseFile("big", (qint64(4) << 30) + 5);
    tree.makeFile("small", "behind it");
    const WrittenImage image(realFolder(tree), optionsFor(15));
    const SleuthKit kit(image.path());
    const QMap<QString, QString> listed = kit.list();
    EXPECT_TRUE(kit.facts(listed[QStringLiteral("big")]).contains("Size:\t4294967301"));
    EXPECT_EQ(kit.contents(listed[QStringLiteral("small")]), "behind it");
}

INSTANTIATE_TEST_SUITE_P(Masks, HfsPlusSleuthKit, ::testing::Range<DRFilesystemMask>(8, 16));

} // namespace Tessaron::Testing
