#pragma once

#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/discrecording/planning/DiscImagePlan.h"
#include "tests/support/RunProgram.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron::Testing
{

/// A disc image planned and written into a file of its own, piece by piece as a burn does it. Blocks of zeros are holes
/// in the file, so that huge images of sparse files are quick.
class WrittenImage
{
public:
    explicit WrittenImage(const std::shared_ptr<DRFolder> &root, const PlanOptions &options = {},
                          std::uint32_t blocksPerPiece = 512);

    /// The null error when all went well.
    [[nodiscard]] const NSError &error() const { return m_error; }
    [[nodiscard]] const DiscImagePlan &plan() const { return m_plan; }
    [[nodiscard]] QString path() const;
    [[nodiscard]] std::uint64_t size() const;
    [[nodiscard]] QByteArray bytes(std::uint64_t offset, std::uint64_t length) const;

    /// The report's items of a kind in a tree.
    [[nodiscard]] std::vector<DRStorageReportItem> items(DRDiscTree tree, DRStorageReportItem::Kind kind) const;

private:
    void write(std::uint32_t blocksPerPiece);

    QTemporaryDir m_folder;
    DiscImagePlan m_plan;
    NSError m_error;
};

/// The bytes of a whole image without a file, in pieces of the given size.
[[nodiscard]] QByteArray imageBytes(const BlockImage &image, std::uint32_t blocksPerPiece);

/// Runs a program to its end; `folder` is its working folder.
[[nodiscard]] ProgramRun runProgram(const QString &program, const QStringList &arguments, const QString &folder = {});
/// Lets xorriso extract the image that begins at `firstBlock` of a file into a folder that it makes.
[[nodiscard]] ProgramRun extractWithXorriso(const QString &path, const QString &folder, std::uint32_t firstBlock = 0);
/// True when the program is installed; tests that need one that is not are skipped.
[[nodiscard]] bool hasProgram(const QString &program);

} // namespace Tessaron::Testing
