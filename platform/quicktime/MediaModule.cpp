#include "platform/quicktime/MediaModule.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/NSBundle.h"
#include "platform/quicktime/MediaErrors.h"

#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <mutex>

namespace Tessaron
{

namespace
{

struct CloseLibrary {
    void operator()(void *library) const { ::dlclose(library); }
};
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

std::atomic<const MediaService *> loadedService = nullptr;

NSError moduleError(const QString &reason, const QString &suggestion)
{
    return mediaError(noMediaModule, {}, reason, suggestion);
}

NSError otherVersionError(const QByteArray &path, const QString &version)
{
    return moduleError(
        QStringLiteral("the module that reads sound and movies, %1, belongs to %2, and this is TessaronClasses %3")
            .arg(quoted(path), version, QStringLiteral(TESSARON_VERSION)),
        QStringLiteral("Install the library and the module of TessaronClasses from the same build."));
}

} // namespace

Result<const MediaService *> loadMediaModule(const QByteArray &modulePath)
{
    if (modulePath.isEmpty())
        return moduleError(
            QStringLiteral("the module of TessaronClasses that reads sound and movies, TessaronMedia.so, "
                           "is not installed"),
            QStringLiteral("Install TessaronClasses with its media module: a build with "
                           "TESSARON_BUILD_MEDIA=ON and FFmpeg's libraries has it."));
    LibraryHandle library(::dlopen(modulePath.constData(), RTLD_NOW | RTLD_LOCAL));
    if (!library) {
        const char *const what = ::dlerror();
        return moduleError(QStringLiteral("the module that reads sound and movies cannot be loaded: %1")
                               .arg(stringWithFileSystemRepresentation(what ? what : "no reason is known")),
                           QStringLiteral("Install FFmpeg's libraries (libavformat, libavcodec, libavutil and "
                                          "libswresample) of the version that TessaronClasses was built with."));
    }
    auto *const entry = reinterpret_cast<MediaModuleEntry *>(::dlsym(library.get(), mediaModuleEntryName));
    const MediaModuleDescription *const description = entry ? entry() : nullptr;
    if (!description)
        return otherVersionError(modulePath, QStringLiteral("no version that is known"));
    // What follows the number can be read only where the number is this one.
    if (description->interfaceNumber != mediaInterfaceNumber || description->sizeOfService != sizeof(MediaService))
        return otherVersionError(modulePath, QStringLiteral("another build"));
    if (std::strcmp(description->version, TESSARON_VERSION) != 0)
        return otherVersionError(modulePath,
                                 QStringLiteral("TessaronClasses %1").arg(QString::fromUtf8(description->version)));
    // Its code and that of the libraries stays to the end of the process, which may come while threads are in it.
    static_cast<void>(library.release());
    return description->service;
}

void useMediaService(const MediaService &service)
{
    loadedService = &service;
}

Result<const MediaService *> mediaService(const QByteArray &path)
{
    if (const MediaService *const service = loadedService)
        return service;
    static std::mutex loading;
    const std::lock_guard lock(loading);
    if (const MediaService *const service = loadedService)
        return service;
    const QString module =
        NSBundle::mainBundle()->pathForResource(QStringLiteral("TessaronMedia"), QStringLiteral("so"));
    Result<const MediaService *> service = loadMediaModule(fileSystemRepresentation(module));
    if (!service)
        return mediaError(noMediaModule, path, service.error().localizedFailureReason(),
                          service.error().localizedRecoverySuggestion());
    loadedService = *service;
    return service;
}

} // namespace Tessaron
