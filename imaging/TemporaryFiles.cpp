#include "imaging/PrivateFolder.h"
#include "imaging/ProcessFolder.h"
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

/// The path of the object's number in the folder; empty without a folder. What is made there goes with the process.
QByteArray pathOf(const void *object)
{
    const QByteArray parent = folder();
    if (parent.isEmpty())
        return {};
    const QByteArray number = QByteArray::number(std::int32_t(reinterpret_cast<std::uintptr_t>(object)));
    ProcessFolder::ofThisProcess().noteObject(number);
    return parent + '/' + number;
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
    const QByteArray path = pathOf(object);
    return !path.isEmpty() && PrivateFolder::makeOrTake(path) ? stringWithFileSystemRepresentation(path) : QString();
}

QString temporaryFileForObject(const void *object)
{
    const QByteArray path = pathOf(object);
    return path.isEmpty() ? QString() : stringWithFileSystemRepresentation(path + '.') + temporaryFilesExtension();
}

} // namespace Tessaron
