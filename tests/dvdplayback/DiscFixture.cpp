#include "tests/dvdplayback/DiscFixture.h"

#include "tests/support/RunProgram.h"

#include <QDir>
#include <QFile>

#include <array>

namespace Tessaron::Testing
{

LoopDevice::LoopDevice(const QByteArray &image)
{
    const ProgramRun run = runProgram("losetup", {"--find", "--show", "--read-only", image});
    if (run.status == 0)
        m_path = run.output.trimmed();
}

LoopDevice::~LoopDevice()
{
    if (!m_path.isEmpty()) {
        EXPECT_EQ(runProgram("losetup", {"--detach", m_path}).status, 0);
    }
}

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

QByteArray DiscTest::rawImageOf(const QByteArray &image) const
{
    QFile plain(QString::fromUtf8(image));
    QFile raw(m_tree.pathText("disc.bin"));
    EXPECT_TRUE(plain.open(QIODevice::ReadOnly) && raw.open(QIODevice::WriteOnly));
    constexpr int framesBeforeTheFirst = 150;
    const auto decimal = [](int value) { return char(value / 10 << 4 | value % 10); };
    for (int frame = framesBeforeTheFirst; !plain.atEnd(); ++frame) {
        QByteArray sector = QByteArray(1, '\0') + QByteArray(10, '\xff') + QByteArray(1, '\0');
        sector += decimal(frame / 75 / 60);
        sector += decimal(frame / 75 % 60);
        sector += decimal(frame % 75);
        sector += '\1';
        EXPECT_EQ(raw.write((sector + plain.read(2048)).leftJustified(2352, '\0')), 2352);
    }
    return m_tree.path("disc.bin");
}

QByteArray DiscTest::copyThatForbids() const
{
    QByteArray copy = copyOfDisc();
    const QByteArray tables = m_tree.contents("disc/VIDEO_TS/VTS_01_0.IFO");
    const auto number = [&](qint64 offset) {
        qint64 value = 0;
        for (qint64 byte = offset; byte < offset + 4; ++byte)
            value = value << 8 | std::uint8_t(tables[byte]);
        return value;
    };
    // The prohibitions of its program chain, from the last byte's operations to the first one's.
    const qint64 chains = number(0xcc) * 2048, forbidden = chains + number(chains + 12) + 8;
    const std::array<std::uint8_t, 4> bits = {0x00, 0x38, 0x0b, 0xe8};
    for (std::size_t byte = 0; byte < bits.size(); ++byte)
        patchTable("VTS_01_0", forbidden + qint64(byte), char(bits[byte]));
    return copy;
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
