#include "tests/dvdplayback/DiscFixture.h"

#include "tests/support/RunProgram.h"

#include <QDir>
#include <QFile>

namespace Tessaron::Testing
{

DiscTest::DiscTest()
{
    qputenv("XDG_RUNTIME_DIR", m_tree.makeFolder("runtime"));
    qputenv("SDL_AUDIODRIVER", "dummy");
}

QByteArray DiscTest::disc(const QByteArray &standard)
{
    return QByteArray(TESSARON_DVD_DISCS "/") + standard;
}

QByteArray DiscTest::copyOfDisc() const
{
    m_tree.makeFolder("disc/VIDEO_TS");
    const QDir folder(QString::fromUtf8(disc() + "/VIDEO_TS"));
    for (const QString &name : folder.entryList(QDir::Files)) {
        const QString copy = m_tree.pathText("disc/VIDEO_TS/" + name.toUtf8());
        EXPECT_TRUE(QFile::copy(folder.filePath(name), copy)) << name.toStdString();
        QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
    }
    return m_tree.path("disc");
}

QByteArray DiscTest::imageOfDisc(const QByteArray &folder) const
{
    QByteArray image = m_tree.path("disc.iso");
    const ProgramRun run = runProgram("genisoimage", {"-quiet", "-dvd-video", "-V", "FILM", "-o", image, folder});
    EXPECT_EQ(run.status, 0) << run.errors.constData();
    return image;
}

void DiscTest::patch(const QByteArray &file, qint64 offset, char value) const
{
    QFile patched(m_tree.pathText("disc/VIDEO_TS/" + file));
    ASSERT_TRUE(patched.open(QIODevice::ReadWrite)) << file.constData();
    ASSERT_TRUE(patched.seek(offset) && patched.putChar(value));
}

void DiscTest::patchTable(const QByteArray &table, qint64 offset, char value) const
{
    patch(table + ".IFO", offset, value);
    patch(table + ".BUP", offset, value);
}

} // namespace Tessaron::Testing
