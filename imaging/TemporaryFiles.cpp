#include "imaging/PrivateFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/TemporaryFiles.h>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

/// The login name of the user whose rights the process has, or that user's number where the system has no name for it.
QByteArray loginName()
{
    std::vector<char> buffer(1024);
    struct passwd entry;
    struct passwd *found = nullptr;
    int failure = 0;
    while ((failure = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE)
        buffer.resize(buffer.size() * 2);
    const QByteArray name = failure == 0 && found ? QByteArray(found->pw_name) : QByteArray();
    return name.isEmpty() || name.contains('/') ? QByteArray::number(::geteuid()) : name;
}

QByteArray placeOfTemporaryFiles()
{
    constexpr const char *customary = "/private/tmp";
    struct stat status;
    return ::stat(customary, &status) == 0 && S_ISDIR(status.st_mode) ? customary : "/tmp";
}

QByteArray folder()
{
    static PrivateFolder instance(placeOfTemporaryFiles(), "qorvu-" + loginName());
    return instance.path();
}

QByteArray numberOf(const void *object)
{
    return QByteArray::number(std::int32_t(reinterpret_cast<std::uintptr_t>(object)));
}

} // namespace

QString temporaryFilesExtension()
{
    return QStringLiteral("tempFile");
}

QString temporaryFolder()
{
    const QByteArray path = folder();
    return path.isEmpty() ? QString() : stringWithFileSystemRepresentation(path);
}

QString temporaryFolderForObject(const void *object)
{
    const QByteArray parent = folder();
    if (parent.isEmpty())
        return {};
    const QByteArray path = parent + '/' + numberOf(object);
    return PrivateFolder::makeOrTake(path) ? stringWithFileSystemRepresentation(path) : QString();
}

QString temporaryFileForObject(const void *object)
{
    const QByteArray parent = folder();
    if (parent.isEmpty())
        return {};
    return stringWithFileSystemRepresentation(parent + '/' + numberOf(object) + '.') + temporaryFilesExtension();
}

} // namespace Tessaron
