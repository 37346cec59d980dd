#include "tests/discimage/SampleImages.h"

#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

QByteArray sampleImage(DRFilesystemMask filesystems, std::optional<std::int64_t> time)
{
    const TemporaryTree tree;
    tree.makeFile("a.txt", "hello\n");
    tree.makeFile("folder/Gr\xC3\xBC\xC3\x9F"
                  "e",
                  QByteArray(5'000, 'g'));
    tree.makeFile("folder/empty");
    tree.makeFile("folder/in/a/folder/deep.data", QByteArray(70'000, 'd'));
    tree.makeFile(QByteArray(100, 'n'), "long");
    tree.makeHardLink("other name of a", "a.txt");
    tree.makeSymbolicLink("link", "folder/in/../empty");
    tree.makeFifo("pipe");
    for (int number = 0; number < 60; ++number)
        tree.makeFile("many/file " + QByteArray::number(number), QByteArray::number(number));
    tree.setModificationTime("a.txt", 1'000'000'001);
    tree.setMode("a.txt", 0640);
    PlanOptions options;
    options.filesystems = filesystems;
    options.sourceDateEpoch = time;
    const WrittenImage written(DRFolder::folderWithPath(tree.pathText()), options);
    EXPECT_FALSE(written.error()) << qPrintable(written.error().localizedFailureReason());
    return written.bytes(0, written.size());
}

std::vector<DRFilesystemMask> sampleFilesystems()
{
    constexpr DRFilesystemMask iso = DRFilesystemInclusionMaskISO9660;
    constexpr DRFilesystemMask joliet = DRFilesystemInclusionMaskJoliet;
    constexpr DRFilesystemMask udf = DRFilesystemInclusionMaskUDF;
    constexpr DRFilesystemMask hfsPlus = DRFilesystemInclusionMaskHFSPlus;
    return {iso, udf, hfsPlus, iso | joliet, iso | udf, iso | hfsPlus, udf | hfsPlus, iso | joliet | udf | hfsPlus};
}

QStringList problemsOf(const QByteArray &image)
{
    return problemsOf(DiscImageSource::sourceWithBytes(image));
}

QStringList problemsOf(const std::shared_ptr<const DiscImageSource> &source)
{
    QStringList problems;
    (void)checkDiscImage(source, [&problems](const VolumeProblem &problem) {
        problems.append(volumeProblemText(problem));
        return problems.size() < 100;
    });
    return problems;
}

} // namespace Tessaron::Testing
