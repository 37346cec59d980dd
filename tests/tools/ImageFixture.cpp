#include "tests/tools/ImageFixture.h"

#include <QJsonDocument>

#include <cstring>
#include <filesystem>

namespace Tessaron::Testing
{

ImageTest::ImageTest()
{
    m_tree.makeFolder("source");
    m_tree.makeFolder("out");
    // Tests without root's rights write here, too.
    m_tree.setMode({}, 0755);
    m_tree.setMode("out", 0777);
}

QList<QByteArray> ImageTest::imageArguments(const QList<QByteArray> &options) const
{
    return QList<QByteArray>({"image", "-o", image()}) + options + QList<QByteArray>({m_tree.path("source")});
}

void ImageTest::makeSampleTree() const
{
    std::filesystem::remove(m_tree.path("source").toStdString());
    outputOf(TESSARON_SOURCE_FOLDER "/tools/sample-tree", {m_tree.path("source")});
}

QList<QByteArray> ImageTest::filesystemsOfMask(int mask)
{
    const QList<QByteArray> names = {"iso9660", "joliet", "udf", "hfs+"};
    QList<QByteArray> result;
    for (int bit = 0; bit < names.size(); ++bit) {
        if ((mask & (1 << bit)) != 0)
            result.append(names[bit]);
    }
    return result;
}

void ImageTest::makeOrdinaryTree() const
{
    m_tree.makeFile("source/readme.txt", "read me\n");
    m_tree.makeFile("source/folder/one.txt", QByteArray(100, '1'));
    m_tree.makeFile("source/folder/two.txt", QByteArray(100000, '2'));
    m_tree.makeFile("source/folder/empty");
    m_tree.makeFolder("source/empty folder");
    m_tree.setModificationTime("source/readme.txt", 1234567890);
}

void ImageTest::makeManyFiles(int count) const
{
    for (int number = 0; number < count; ++number)
        m_tree.makeFile("source/" + QByteArray::number(number / 100) + '/' + QByteArray::number(number),
                        QByteArray::number(number));
}

void ImageTest::makeBigFile(const QByteArray &relative, qint64 size) const
{
    QByteArray contents(qsizetype(size), '\0');
    quint64 state = 88172645463325252;
    for (qsizetype offset = 0; offset + qsizetype(sizeof state) <= contents.size(); offset += sizeof state) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(contents.data() + offset, &state, sizeof state);
    }
    m_tree.makeFile(relative, contents);
}

std::set<std::string> ImageTest::outNames() const
{
    std::set<std::string> result;
    for (const auto &entry : std::filesystem::directory_iterator(m_tree.path("out").toStdString()))
        result.insert(entry.path().filename().string());
    return result;
}

QByteArray ImageTest::extracted() const
{
    QByteArray folder = m_tree.makeFolder("extracted");
    outputOf(
        "xorriso",
        {"-abort_on", "FAILURE", "-osirrox", "on", "-hardlinks", "on", "-indev", image(), "-extract", "/", folder});
    return folder;
}

QJsonObject jsonOf(const QByteArray &output)
{
    EXPECT_EQ(output.count('\n'), 1) << output.constData();
    QJsonParseError error;
    QJsonObject result = QJsonDocument::fromJson(output, &error).object();
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << output.constData();
    return result;
}

std::vector<QJsonObject> jsonLinesOf(const QByteArray &text)
{
    std::vector<QJsonObject> result;
    for (const QByteArray &line : text.split('\n')) {
        if (!line.startsWith('{'))
            continue;
        QJsonParseError error;
        result.push_back(QJsonDocument::fromJson(line, &error).object());
        EXPECT_EQ(error.error, QJsonParseError::NoError) << line.constData();
    }
    return result;
}

} // namespace Tessaron::Testing
