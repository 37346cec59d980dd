#include "tests/tools/ImageFixture.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// Images that go into a stream.
class ImageStream : public ImageTest
{
protected:
    ImageStream() { makeOrdinaryTree(); }

    /// Runs a line of the shell with the command's path in $T and the place in $D.
    ChildResult shell(const QByteArray &line) const
    {
        ChildSettings settings;
        settings.program = "bash";
        settings.arguments = {"-c", "set -o pipefail; " + line};
        settings.environment = {"T=" + tessaron({}).program, "D=" + m_tree.path(), "SOURCE_DATE_EPOCH=1000000000"};
        return runChild(settings);
    }

    void expectSameAsFile(const QByteArray &line) const
    {
        const ChildResult plain = shell("$T image -q -o $D/out/plain.iso $D/source");
        ASSERT_EQ(plain.exitStatus, 0) << plain.errors.constData();
        const ChildResult result = shell(line);
        EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
        // The volume's name is that of the folder in both.
        EXPECT_EQ(m_tree.contents("out/streamed.iso"), m_tree.contents("out/plain.iso"));
    }

    void expectRefusal(const QByteArray &line, int status, const char *text) const
    {
        const ChildResult result = shell(line);
        EXPECT_EQ(result.exitStatus, status) << line.constData();
        EXPECT_TRUE(result.errors.contains(text)) << result.errors.constData();
    }
};

TEST_F(ImageStream, pipe_getsTheImage)
{
    expectSameAsFile("$T image -q -o - $D/source | cat >$D/out/streamed.iso");
}

TEST_F(ImageStream, pipe_getsTheImage_byTheNameOfTheDevice)
{
    expectSameAsFile("$T image -q -o /dev/stdout $D/source | cat >$D/out/streamed.iso");
}

TEST_F(ImageStream, emptyFile_getsTheImage)
{
    expectSameAsFile("$T image -q -o - $D/source >$D/out/streamed.iso");
    expectSameAsFile("rm $D/out/streamed.iso; $T image -q -o - $D/source >>$D/out/streamed.iso");
}

TEST_F(ImageStream, namedPipe_getsTheImage)
{
    expectSameAsFile("mkfifo $D/pipe; cat $D/pipe >$D/out/streamed.iso & $T image -q -o $D/pipe $D/source && wait $!");
}

TEST_F(ImageStream, trailer_followsTheImage)
{
    const ChildResult result = shell("$T image -q --format vant -o - $D/source | cat >$D/out/streamed.vant; "
                                     "$T image -q -o $D/out/plain.vant $D/source");
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(m_tree.contents("out/streamed.vant"), m_tree.contents("out/plain.vant"));
}

TEST_F(ImageStream, outputThatCannotTakeAnImage_isRefusedInOneTrueSentence)
{
    m_tree.makeFile("full", "something");
    expectRefusal("$T image -o - $D/source >>$D/full", 1, "holds something already");
    EXPECT_EQ(m_tree.contents("full"), "something");
    expectRefusal("$T image -o - --format bin $D/source | cat", 2, "a BIN image cannot go into a stream");
    expectRefusal("$T image -o - --json $D/source | cat", 2, "cannot both go to standard output");
    expectRefusal("$T image -o /dev/stdout --json $D/source | cat", 2, "cannot both go to standard output");
    expectRefusal("$T image -o - $D/source >&-", 1, "is not open for writing");
}

TEST_F(ImageStream, brokenPipe_failsTheRun)
{
    makeBigFile("source/big", 4 << 20);
    expectRefusal("$T image -o - $D/source | head -c 1000 >/dev/null", 1, "Broken pipe");
}

TEST_F(ImageStream, file_isEmptyAgain_afterAFailure)
{
    ChildSettings settings;
    makeBigFile("source/big", 8 << 20);
    settings.program = "bash";
    settings.arguments = {"-c", "ulimit -f 3000; $T image -o - $D/source >$D/out/streamed.iso"};
    settings.environment = {"T=" + tessaron({}).program, "D=" + m_tree.path()};
    EXPECT_EQ(runChild(settings).exitStatus, 1);
    EXPECT_EQ(m_tree.contents("out/streamed.iso"), "");
}

} // namespace

} // namespace Tessaron::Testing
