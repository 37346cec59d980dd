#include "platform/coreservices/CustomIcon.h"
#include "platform/coreservices/IconServices.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/KRIconFamily.h>
#include <TessaronClasses/TemporaryFiles.h>

#include <QImage>
#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

/// Makes an empty file with a name that was free and returns its path; empty when that fails.
QByteArray makeScratchFile()
{
    const QByteArray folder = fileSystemRepresentation(temporaryFolder());
    if (folder.isEmpty())
        return {};
    for (;;) {
        const quint32 number = QRandomGenerator::global()->generate() & 0x7FFFFFFF;
        QByteArray path = folder + "/myicon" + QByteArray::number(number);
        const UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (file)
            return path;
        if (errno != EEXIST)
            return {};
    }
}

} // namespace

KRIconFamily::KRIconFamily(const QByteArray &data)
    : m_data(data)
{
}

std::shared_ptr<KRIconFamily> KRIconFamily::initWithFSRef(const FSRef &ref)
{
    IconRef icon;
    QByteArray family;
    if (GetIconRefFromFileInfo(&ref, {}, &icon) != noErr
        || IconRefToIconFamily(icon, kSelectorAllAvailableData, &family) != noErr)
        return nullptr;
    return std::shared_ptr<KRIconFamily>(new KRIconFamily(family));
}

std::shared_ptr<KRIconFamily> KRIconFamily::iconFamilyForFSRef(const FSRef &ref)
{
    return initWithFSRef(ref);
}

std::shared_ptr<KRIconFamily> KRIconFamily::iconFamilyForFile(const QString &path)
{
    FSRef ref;
    if (FSPathMakeRef(fileSystemRepresentation(path), &ref, nullptr) != noErr)
        return nullptr;
    return iconFamilyForFSRef(ref);
}

std::shared_ptr<KRIconFamily> KRIconFamily::initWithImage(const QImage &image)
{
    if (image.isNull())
        return nullptr;
    const QByteArray path = makeScratchFile();
    FSRef ref;
    if (path.isEmpty() || FSPathMakeRef(path, &ref, nullptr) != noErr || !setCustomIcon(ref, image))
        return nullptr;
    return initWithFSRef(ref);
}

std::shared_ptr<KRIconFamily> KRIconFamily::iconFamilyForImage(const QImage &image)
{
    return initWithImage(image);
}

bool KRIconFamily::writeToFile(const QString &path) const
{
    if (m_data.isEmpty())
        return false;
    // Made here when it is missing, then cut to nothing: the handle below writes over what is there.
    const UniqueDescriptor made(
        ::open(fileSystemRepresentation(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    const std::shared_ptr<NSFileHandle> file = made ? NSFileHandle::fileHandleForWritingAtPath(path) : nullptr;
    if (!file)
        return false;
    const bool isWritten = !file->writeData(m_data.constData(), std::size_t(m_data.size()));
    return !file->closeFile() && isWritten;
}

} // namespace Tessaron
