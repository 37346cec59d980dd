#pragma once

#include "tests/support/TemporaryTree.h"
#include "tests/tools/ChildProcess.h"

#include <QJsonObject>

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// A place with a folder "source" to make images of and a folder "out" to make them in.
class ImageTest : public testing::Test
{
protected:
    ImageTest();

    /// Arguments of an image of "source" at "out/disc.iso", with further words before the path.
    [[nodiscard]] QList<QByteArray> imageArguments(const QList<QByteArray> &options = {}) const;
    [[nodiscard]] QByteArray image() const { return m_tree.path("out/disc.iso"); }
    /// Makes "source" the sample tree of tools/sample-tree.
    void makeSampleTree() const;
    /// What --filesystems calls the bits of a mask.
    [[nodiscard]] static QList<QByteArray> filesystemsOfMask(int mask);
    /// A few folders and files.
    void makeOrdinaryTree() const;
    /// `count` files of some bytes in folders of a hundred.
    void makeManyFiles(int count) const;
    /// A file with contents that do not repeat; not sparse.
    void makeBigFile(const QByteArray &relative, qint64 size) const;
    /// What is in "out", hidden files included.
    [[nodiscard]] std::set<std::string> outNames() const;
    /// Takes the image apart with an independent program into the folder "extracted"; its path.
    [[nodiscard]] QByteArray extracted() const;

    const TemporaryTree m_tree;
};

/// The only line of the output as JSON object; fails the test when it is none.
[[nodiscard]] QJsonObject jsonOf(const QByteArray &output);
/// Each line of the text that is a JSON object.
[[nodiscard]] std::vector<QJsonObject> jsonLinesOf(const QByteArray &text);

} // namespace Tessaron::Testing
