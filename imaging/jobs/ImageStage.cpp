#include "imaging/jobs/ImageStage.h"

#include "imaging/jobs/VantTrailer.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/CueSheets.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The name that the system has for an open file; for a pipe a text such as "pipe:[42]". Empty when it has none.
QByteArray systemNameOfDescriptor(int descriptor)
{
    QByteArray target(PATH_MAX, '\0');
    const ssize_t length =
        ::readlink(pathOfDescriptor(descriptor).constData(), target.data(), std::size_t(target.size()));
    return target.left(std::max<ssize_t>(length, 0));
}

} // namespace

NSError ImageStage::open(const DiscImageOrder &order, const std::vector<DiscSource> &sources,
                         const std::stop_token &stop)
{
    if (order.outputDescriptor >= 0 || isStream(order.output))
        return openStream(order, stop);
    if (NSError error = openDestination(order.output, order.format, &m_destination))
        return error;
    if (NSError error = checkOutside(m_destination, sources))
        return error;
    return makeFiles();
}

NSError ImageStage::openStream(const DiscImageOrder &order, const std::stop_token &stop)
{
    if (order.format == DiscFormat::BIN)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("a BIN image cannot go into a stream: its cue sheet names a file"),
                            QStringLiteral("Name a file for it, or choose the format iso or vant."), order.output);
    m_destination.path = order.outputDescriptor >= 0 ? QByteArray() : order.output;
    m_destination.name = QByteArrayLiteral("disc"); // what a volume without another name is called
    Result<UniqueDescriptor> stream =
        order.outputDescriptor >= 0 ? streamWithDescriptor(order.outputDescriptor) : streamAtPath(order.output, stop);
    if (!stream)
        return stream.error();
    m_stream = std::move(*stream);
    return {};
}

NSError ImageStage::makeFiles()
{
    int reason = 0;
    const int folder = m_destination.folder.get();
    const QByteArray &folderPath = m_destination.folderPath;
    m_image = StagedFile::create(folder, folderPath, m_destination.name, &reason);
    if (m_image && !m_destination.cueName.isEmpty())
        m_cueSheet = StagedFile::create(folder, folderPath, m_destination.cueName, &reason);
    if (m_image && (m_cueSheet || m_destination.cueName.isEmpty()))
        return {};
    return discJobError(
        DiscJobErrorCode::Destination,
        QStringLiteral("no file can be made in the output's folder %1: %2").arg(quoted(folderPath), systemText(reason)),
        QStringLiteral("Choose another place for the output."), folderPath);
}

QByteArray ImageStage::pathForWriting() const
{
    return m_image ? m_image->pathForWriting() : pathOfDescriptor(m_stream.get());
}

int ImageStage::descriptor() const
{
    return m_image ? m_image->descriptor() : m_stream.get();
}

QByteArray ImageStage::cueSheetPath() const
{
    if (m_destination.cueName.isEmpty())
        return {};
    return m_destination.path.left(m_destination.path.lastIndexOf('/') + 1) + m_destination.cueName;
}

NSError ImageStage::withFinalNames(const NSError &error) const
{
    const QString finalName = m_image || !m_destination.path.isEmpty()
        ? stringWithFileSystemRepresentation(m_destination.path)
        : QStringLiteral("the output");
    const QByteArray systemPath = m_image ? m_image->pathForTheSystem() : systemNameOfDescriptor(m_stream.get());
    QVariantMap userInfo = error.userInfo();
    for (const QByteArray &stagedPath : {systemPath, pathForWriting()}) {
        const QString text = stringWithFileSystemRepresentation(stagedPath);
        if (text.isEmpty())
            continue;
        for (QVariant &value : userInfo) {
            if (value.userType() == QMetaType::QString)
                value = value.toString().replace(text, finalName);
        }
    }
    return NSError(error.domain(), error.code(), userInfo);
}

NSError ImageStage::checkLength(std::uint64_t bytes) const
{
    struct stat status;
    const bool isKnown = ::fstat(descriptor(), &status) == 0;
    if (isKnown && (!S_ISREG(status.st_mode) || std::uint64_t(status.st_size) == bytes))
        return {};
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the image has another length than it must have; something else wrote to it"),
                        {}, m_destination.path);
}

NSError ImageStage::writeCueSheet() const
{
    const QString sheet = standardCueSheetForFile(stringWithFileSystemRepresentation(m_destination.path));
    // The name stands in the sheet as the bytes that it has on disk.
    const QByteArray bytes = fileSystemRepresentation(sheet);
    if (const int failure = writeFully(m_cueSheet->descriptor(), bytes.constData(), std::size_t(bytes.size())))
        return discJobError(DiscJobErrorCode::Write,
                            QStringLiteral("the cue sheet cannot be written: %1").arg(systemText(failure)), {},
                            m_destination.cueName);
    return {};
}

NSError ImageStage::appendTrailer(std::uint64_t *bytes)
{
    const QByteArray trailer = vantTrailerForImage(*bytes);
    const bool isAtEnd = ::lseek(descriptor(), 0, SEEK_END) >= 0 || errno == ESPIPE;
    const int failure = isAtEnd ? writeFully(descriptor(), trailer.constData(), std::size_t(trailer.size())) : errno;
    if (failure != 0)
        return discJobError(DiscJobErrorCode::Write,
                            QStringLiteral("the description of the tracks cannot be written behind the image: %1")
                                .arg(systemText(failure)),
                            {}, m_destination.path);
    *bytes += std::uint64_t(trailer.size());
    return {};
}

NSError ImageStage::finish(const DiscImageOrder &order, std::uint64_t bytes, std::uint64_t *written,
                           const std::stop_token &stop)
{
    if (NSError error = checkLength(bytes))
        return error;
    *written = bytes;
    if (order.format == DiscFormat::VANT) {
        if (NSError error = appendTrailer(written))
            return error;
    }
    if (m_cueSheet) {
        if (NSError error = writeCueSheet())
            return error;
    }
    if (stop.stop_requested())
        return discJobCancellation();
    return m_image ? publish(order.isSynchronized) : finishStream(order.isSynchronized);
}

NSError ImageStage::publish(bool isSynchronized)
{
    std::vector<StagedFile *> files = {m_image.get()};
    if (m_cueSheet)
        files.push_back(m_cueSheet.get());
    const int reason = publishTogether(files, isSynchronized ? Synchronization::Wait : Synchronization::DoNotWait);
    if (reason == 0)
        return {};
    return discJobError(DiscJobErrorCode::Destination,
                        QStringLiteral("the image is made, but cannot get its name %1: %2")
                            .arg(quoted(m_destination.path), systemText(reason)),
                        QStringLiteral("Choose another place for the output."), m_destination.path);
}

NSError ImageStage::finishStream(bool isSynchronized)
{
    struct stat status;
    const bool isFile = ::fstat(m_stream.get(), &status) == 0 && S_ISREG(status.st_mode);
    (void)::lseek(m_stream.get(), 0, SEEK_END); // what the shell writes next goes behind the image
    const bool isSafe = !isFile || !isSynchronized || ::fsync(m_stream.get()) == 0;
    if (isSafe && m_stream.closeAndReport())
        return {};
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the image cannot be written: %1").arg(systemText(errno)), {},
                        m_destination.path);
}

void ImageStage::close()
{
    m_image.reset();
    m_cueSheet.reset();
    struct stat status;
    // A stream that is a file is not left with half an image in it.
    if (m_stream && ::fstat(m_stream.get(), &status) == 0 && S_ISREG(status.st_mode))
        (void)!::ftruncate(m_stream.get(), 0);
    m_stream.reset();
}

} // namespace Tessaron
