#include "imaging/jobs/ImageStage.h"

#include "imaging/ImageFinisher.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

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
    StagedFile::removeAbandoned(folder, m_destination.name);
    m_image = StagedFile::create(folder, folderPath, m_destination.name, &reason);
    if (m_image && !m_destination.cueName.isEmpty()) {
        StagedFile::removeAbandoned(folder, m_destination.cueName);
        m_cueSheet = StagedFile::create(folder, folderPath, m_destination.cueName, &reason);
    }
    return m_image && (m_cueSheet || m_destination.cueName.isEmpty()) ? NSError() : creationError(reason);
}

NSError ImageStage::creationError(int reason) const
{
    const QByteArray &folderPath = m_destination.folderPath;
    return discJobError(
        DiscJobErrorCode::Destination,
        QStringLiteral("no file can be made in the output's folder %1: %2").arg(quoted(folderPath), systemText(reason)),
        isLackOfDescriptors(reason) ? adviceOnDescriptors() : QStringLiteral("Choose another place for the output."),
        folderPath);
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
    return m_destination.cueName.isEmpty() ? QByteArray() : pathBeside(m_destination.cueName);
}

QByteArray ImageStage::cdTextPath() const
{
    return m_cdTextFile ? pathBeside(m_cdTextFile->finalName()) : QByteArray();
}

QByteArray ImageStage::pathBeside(const QByteArray &name) const
{
    return m_destination.path.left(m_destination.path.lastIndexOf('/') + 1) + name;
}

NSError ImageStage::makeCDTextFile(const QList<QByteArray> &sources)
{
    const QByteArray name = pathOfCDTextFile(m_destination.name);
    std::optional<DeviceAndInode> existing;
    if (NSError error = inspectBeside(m_destination, name, QStringLiteral("file of CD-TEXT"), &existing))
        return error;
    for (const QByteArray &source : sources) {
        struct stat status;
        if (existing && ::stat(source.constData(), &status) == 0
            && existing == DeviceAndInode{status.st_dev, status.st_ino})
            return discJobError(
                DiscJobErrorCode::Destination,
                QStringLiteral("the file of CD-TEXT %1 would replace the source %2").arg(quoted(name), quoted(source)),
                QStringLiteral("Give the output another name."), source);
    }
    int reason = 0;
    StagedFile::removeAbandoned(m_destination.folder.get(), name);
    m_cdTextFile = StagedFile::create(m_destination.folder.get(), m_destination.folderPath, name, &reason);
    return m_cdTextFile ? NSError() : creationError(reason);
}

NSError ImageStage::finish(const DiscImageOrder &order, const TableOfContents &contents, std::uint64_t *written,
                           const std::stop_token &stop)
{
    if (stop.stop_requested())
        return discJobCancellation();
    ImageFinisher finisher(TessaronDiscImageFormat(order.format), contents);
    finisher.setWaitsForDisk(order.isSynchronized);
    UnfinishedImage image;
    image.path = m_destination.path;
    image.descriptor = descriptor();
    image.cueSheet = m_cueSheet ? m_cueSheet->descriptor() : -1;
    image.cdTextFile = m_cdTextFile ? m_cdTextFile->descriptor() : -1;
    image.folder = m_image ? m_destination.folder.get() : -1;
    if (m_image)
        image.giveNames = [this] { return giveNames(); };
    if (const NSError error = finisher.finish(image))
        return discJobError(DiscJobErrorCode::Write, error.localizedDescription(), error.localizedRecoverySuggestion(),
                            m_destination.path, error.code());
    struct stat status;
    *written = ::fstat(descriptor(), &status) == 0 && S_ISREG(status.st_mode) ? std::uint64_t(status.st_size)
                                                                              : contents.storedBytes();
    return m_image ? NSError() : closeStream();
}

int ImageStage::giveNames()
{
    std::vector<StagedFile *> files = {m_image.get()};
    if (m_cueSheet)
        files.push_back(m_cueSheet.get());
    if (m_cdTextFile)
        files.push_back(m_cdTextFile.get());
    return publishTogether(files);
}

NSError ImageStage::closeStream()
{
    (void)::lseek(m_stream.get(), 0, SEEK_END); // what the shell writes next goes behind the image
    if (m_stream.closeAndReport())
        return {};
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the image cannot be written: %1").arg(systemText(errno)), {},
                        m_destination.path);
}

void ImageStage::close()
{
    m_image.reset();
    m_cueSheet.reset();
    m_cdTextFile.reset();
    struct stat status;
    // A stream that is a file is not left with half an image in it.
    if (m_stream && ::fstat(m_stream.get(), &status) == 0 && S_ISREG(status.st_mode))
        (void)!::ftruncate(m_stream.get(), 0);
    m_stream.reset();
}

} // namespace Tessaron
