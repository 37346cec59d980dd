#pragma once

#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/hfsplus/HfsPlusImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>

namespace Tessaron::Testing
{

inline constexpr DRFilesystemMask hfsPlusOnly = DRFilesystemInclusionMaskHFSPlus;

/// Options for the filesystems, with a fixed time so that tests know it.
inline PlanOptions optionsFor(DRFilesystemMask filesystems)
{
    PlanOptions options;
    options.filesystems = filesystems;
    options.sourceDateEpoch = std::nullopt;
    return options;
}

inline std::shared_ptr<DRFolder> realFolder(const TemporaryTree &tree, const QByteArray &relative = {})
{
    return DRFolder::folderWithPath(tree.pathText(relative));
}

/// True when files of the tree can have Finder information and resource forks.
inline bool keepsAttributes(const TemporaryTree &tree)
{
    tree.makeFile("probe");
    const bool keeps = ::setxattr(tree.path("probe").constData(), "user.probe", "x", 1, 0) == 0;
    tree.remove("probe");
    return keeps;
}

/// An image of a root with what the reader made of its HFS+ volume; every problem fails the test.
struct ReadHfsImage {
    explicit ReadHfsImage(const std::shared_ptr<DRFolder> &root, const PlanOptions &options = optionsFor(hfsPlusOnly))
        : written(root, options)
        , reader(written.path())
    {
        EXPECT_FALSE(written.error()) << qPrintable(written.error().localizedDescription());
        EXPECT_EQ(reader.problems(), QStringList());
    }

    [[nodiscard]] const HfsObject &at(const QString &path) const
    {
        static const HfsObject none;
        const HfsObject *const object = reader.objectAt(path);
        EXPECT_TRUE(object) << qPrintable(path);
        return object ? *object : none;
    }
    [[nodiscard]] const HfsObject &at(const char *path) const { return at(QString::fromUtf8(path)); }
    /// The contents of a file, links followed.
    [[nodiscard]] QByteArray contents(const char *path) const
    {
        const HfsObject *const file = reader.resolved(at(path));
        EXPECT_TRUE(file) << path;
        return file ? reader.contents(file->data) : QByteArray();
    }

    WrittenImage written;
    HfsPlusImageReader reader;
};

} // namespace Tessaron::Testing
