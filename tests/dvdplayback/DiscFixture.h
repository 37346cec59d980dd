#pragma once

#include "tests/support/TemporaryTree.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

/// A block device that is an image, while it lives.
class LoopDevice
{
public:
    explicit LoopDevice(const QByteArray &image);
    ~LoopDevice();
    LoopDevice(const LoopDevice &) = delete;
    LoopDevice &operator=(const LoopDevice &) = delete;

    /// Empty where the process may not make one.
    [[nodiscard]] const QByteArray &path() const { return m_path; }

private:
    QByteArray m_path;
};

/// Video DVDs to test with (make-disc says what is on them), and a runtime folder of the test's own, so that sessions
/// of tests that run side by side do not meet. Sound is played by a driver of SDL's that needs no device.
class DiscTest : public testing::Test
{
protected:
    DiscTest();

    /// The folder that holds VIDEO_TS of the disc that all tests share; never to be written.
    [[nodiscard]] static QByteArray disc(const QByteArray &standard = "ntsc");
    /// A copy that may be written: the folder "disc" of the tree.
    [[nodiscard]] QByteArray copyOfDisc() const;
    /// An image of a disc folder, with UDF, by another program: "disc.iso" of the tree.
    [[nodiscard]] QByteArray imageOfDisc(const QByteArray &folder) const;
    /// The same image as sectors of 2352 bytes, mode 1, without the codes against errors: "disc.bin" of the tree.
    [[nodiscard]] QByteArray rawImageOf(const QByteArray &image) const;
    /// The copy, whose title 1 forbids nearly all that users can ask for: to pause, to stop, to go elsewhere but to the
    /// title menu, other streams.
    [[nodiscard]] QByteArray copyThatForbids() const;
    /// Puts a byte into a file of the copy.
    void patch(const QByteArray &file, qint64 offset, char value) const;
    /// The same for a table of the disc and its copy: "VIDEO_TS" or "VTS_01_0".
    void patchTable(const QByteArray &table, qint64 offset, char value) const;

    const TemporaryTree m_tree;
};

} // namespace Tessaron::Testing
