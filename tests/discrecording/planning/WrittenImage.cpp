#include "tests/discrecording/planning/WrittenImage.h"

#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

bool isZero(std::span<const std::uint8_t> bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

/// True for a hole of the source file: nothing has to be read there.
bool isHole(const FileContents &file, std::uint64_t offset, std::uint64_t length)
{
    const QByteArray path = lastKnownPath(file.ref);
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    const off_t data = ::lseek(descriptor, static_cast<off_t>(offset), SEEK_DATA);
    const bool result = data < 0 ? errno == ENXIO : static_cast<std::uint64_t>(data) >= offset + length;
    ::close(descriptor);
    return result;
}

} // namespace

WrittenImage::WrittenImage(const std::shared_ptr<DRFolder> &root, const PlanOptions &options,
                           std::uint32_t blocksPerPiece)
{
    m_plan = planDiscImage(root, options, {}, {}, &m_error);
    if (m_plan.image)
        write(blocksPerPiece);
}

void WrittenImage::write(std::uint32_t blocksPerPiece)
{
    const int descriptor = ::open(QFile::encodeName(path()).constData(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    std::vector<std::uint8_t> buffer;
    const BlockImage &image = *m_plan.image;
    for (std::uint32_t at = 0; at < image.blockCount() && !m_error;) {
        const ImagePiece piece = image.pieceAt(BlockAddress(at), blocksPerPiece);
        const std::uint32_t start = at;
        at += piece.blockCount;
        if (piece.isFileRun && isHole(image.fileContents(piece.run.fileIndex), piece.run.offset, piece.run.length))
            continue;
        buffer.assign(std::size_t{piece.blockCount} * logicalBlockSize, 0xA5);
        m_error = image.fillPiece(BlockAddress(start), buffer, {});
        if (!isZero(buffer)
            && ::pwrite(descriptor, buffer.data(), buffer.size(), static_cast<off_t>(start) * logicalBlockSize)
                != static_cast<ssize_t>(buffer.size()))
            m_error = NSError::errorWithErrno(errno, path());
    }
    if (::ftruncate(descriptor, static_cast<off_t>(image.blockCount()) * logicalBlockSize) != 0)
        m_error = NSError::errorWithErrno(errno, path());
    ::close(descriptor);
}

QString WrittenImage::path() const
{
    return m_folder.filePath(QStringLiteral("image.iso"));
}

std::uint64_t WrittenImage::size() const
{
    return static_cast<std::uint64_t>(QFile(path()).size());
}

QByteArray WrittenImage::bytes(std::uint64_t offset, std::uint64_t length) const
{
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly) || !file.seek(static_cast<qint64>(offset)))
        return {};
    return file.read(static_cast<qint64>(length));
}

std::vector<DRStorageReportItem> WrittenImage::items(DRDiscTree tree, DRStorageReportItem::Kind kind) const
{
    std::vector<DRStorageReportItem> result;
    for (std::size_t index = 0; m_plan.report && index < m_plan.report->count(); ++index) {
        const DRStorageReportItem item = m_plan.report->item(index);
        if (item.tree == tree && item.kind == kind)
            result.push_back(item);
    }
    return result;
}

QByteArray imageBytes(const BlockImage &image, std::uint32_t blocksPerPiece)
{
    QByteArray result(static_cast<qsizetype>(image.blockCount()) * logicalBlockSize, '\x5A');
    for (std::uint32_t at = 0; at < image.blockCount();) {
        const ImagePiece piece = image.pieceAt(BlockAddress(at), blocksPerPiece);
        auto *const bytes = reinterpret_cast<std::uint8_t *>(result.data()) + std::size_t{at} * logicalBlockSize;
        if (image.fillPiece(BlockAddress(at), {bytes, std::size_t{piece.blockCount} * logicalBlockSize}, {}))
            return {};
        at += piece.blockCount;
    }
    return result;
}

ProgramRun runProgram(const QString &program, const QStringList &arguments, const QString &folder)
{
    QList<QByteArray> words;
    for (const QString &argument : arguments)
        words << argument.toUtf8();
    return runProgram(program.toUtf8(), words, folder.toUtf8());
}

ProgramRun extractWithXorriso(const QString &path, const QString &folder, std::uint32_t firstBlock)
{
    QStringList arguments{QStringLiteral("-osirrox"), QStringLiteral("on")};
    if (firstBlock > 0)
        arguments += {QStringLiteral("-load"), QStringLiteral("sbsector"), QString::number(firstBlock)};
    arguments += {QStringLiteral("-indev"), path, QStringLiteral("-extract"), QStringLiteral("/"), folder};
    return runProgram(QStringLiteral("xorriso"), arguments);
}

bool hasProgram(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

} // namespace Tessaron::Testing
