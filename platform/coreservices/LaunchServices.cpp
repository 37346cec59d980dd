#include "platform/coreservices/LaunchServices.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/MimeGlobs.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/coreservices/VolumeFacts.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSError.h"

#include <QHash>
#include <QMimeDatabase>
#include <QMutex>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <set>
#include <string>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// As much of a file as the MIME database looks at.
constexpr qsizetype sniffedBytes = 16384;

/// An item that was found, and its name where it is now.
struct FoundItem {
    struct statx facts = {};
    QByteArray path;
    QByteArrayView name;
};

OSStatus findItem(const FSRef *ref, FoundItem *item)
{
    if (!ref)
        return paramErr;
    if (const int error = locateFile(*ref, STATX_MODE | STATX_SIZE, &item->facts, &item->path))
        return statusForErrno(error);
    const std::string_view name = NodeTable::shared().nameOf(FilePlaces::shared().currentNode(*ref));
    item->name = QByteArrayView(name.data(), static_cast<qsizetype>(name.size()));
    return noErr;
}

FinderInfoBytes finderInfoOf(const FoundItem &item)
{
    const bool mayHave = S_ISREG(item.facts.stx_mode) || S_ISDIR(item.facts.stx_mode);
    const std::uint64_t device = deviceOf(item.facts);
    FinderInfoBytes info = {};
    if (!mayHave || !volumeKeepsAttributes(device))
        return info;
    const PathAccess access(item.path);
    bool isSupported = true;
    if (access.error() == 0)
        info = readFinderInfo(access.folder(), access.path(), {}, &isSupported);
    if (!isSupported)
        noteVolumeKeepsNoAttributes(device);
    return info;
}

bool hidesExtension(const FoundItem &item, std::uint16_t finderFlags)
{
    return (finderFlags & kFinderHasHiddenExtension) && !extensionOfName(item.name).isEmpty();
}

QString typeNameOfMode(std::uint32_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return QStringLiteral("inode/directory");
    case S_IFLNK:
        return QStringLiteral("inode/symlink");
    case S_IFIFO:
        return QStringLiteral("inode/fifo");
    case S_IFSOCK:
        return QStringLiteral("inode/socket");
    case S_IFCHR:
        return QStringLiteral("inode/chardevice");
    case S_IFBLK:
        return QStringLiteral("inode/blockdevice");
    default:
        return {};
    }
}

QByteArray beginningOf(const QByteArray &path)
{
    int error = 0;
    const UniqueDescriptor file = openPath(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, &error);
    QByteArray bytes(sniffedBytes, Qt::Uninitialized);
    const ssize_t length = file ? ::read(file.get(), bytes.data(), static_cast<std::size_t>(bytes.size())) : 0;
    bytes.truncate(qMax(ssize_t(0), length));
    return bytes;
}

/// By the name alone, which needs no access to the file; by its contents where the name has no extension to tell.
QString typeNameOf(const FoundItem &item)
{
    QString special = typeNameOfMode(item.facts.stx_mode);
    if (!special.isEmpty())
        return special;
    if (!MimeGlobs::shared().isEmpty()) {
        const QByteArray byName = MimeGlobs::shared().typeOfName(item.name);
        if (!byName.isEmpty())
            return QString::fromLatin1(byName);
    } else {
        const QString name = displayableText(stringWithFileSystemRepresentation(item.name));
        const QMimeType byName = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
        if (!byName.isDefault())
            return byName.name();
    }
    if (!extensionOfName(item.name).isEmpty())
        return QStringLiteral("application/octet-stream");
    return QMimeDatabase().mimeTypeForData(beginningOf(item.path)).name();
}

/// The kind in words, kept once for each type.
QByteArrayView kindOf(const QString &typeName)
{
    static QMutex mutex;
    static auto *const kinds = new QHash<QString, QByteArray>; // guarded by the mutex; views of it live for ever
    const QMutexLocker lock(&mutex);
    QByteArray &kind = (*kinds)[typeName];
    if (kind.isNull()) {
        const QByteArray comment = QMimeDatabase().mimeTypeForName(typeName).comment().toUtf8();
        kind = comment.isEmpty() ? typeName.toUtf8() : comment;
    }
    return kind;
}

} // namespace

OSStatus LSCopyItemAttributes(const FSRef *ref, LSRolesMask, std::initializer_list<LSItemAttribute> wanted,
                              LSItemAttributes *attributes)
{
    FoundItem item;
    if (const OSStatus status = findItem(ref, &item))
        return status;
    for (const LSItemAttribute attribute : wanted) {
        if (attribute == kLSItemDisplayKind) {
            attributes->displayKind = kindOf(typeNameOf(item));
            continue;
        }
        attributes->displayName = item.name;
        if (hidesExtension(item, finderFlagsOf(finderInfoOf(item).data()))) {
            const qsizetype stem = item.name.size() - extensionOfName(item.name).size() - 1;
            attributes->ownedDisplayName = item.name.first(stem).toByteArray();
            attributes->displayName = attributes->ownedDisplayName;
        }
    }
    return noErr;
}

OSStatus LSCopyItemInfoForRef(const FSRef *ref, LSItemInfoRecord *info)
{
    FoundItem item;
    if (const OSStatus status = findItem(ref, &item))
        return status;
    const std::uint16_t finderFlags = finderFlagsOf(finderInfoOf(item).data());
    const bool isFolder = S_ISDIR(item.facts.stx_mode);
    info->extension = extensionOfName(item.name);
    info->flags = isFolder ? kLSItemInfoIsContainer : kLSItemInfoIsPlainFile;
    if (isFolder && (isPackageExtension(info->extension) || (finderFlags & kFinderHasBundle)))
        info->flags |= kLSItemInfoIsPackage;
    if (S_ISLNK(item.facts.stx_mode))
        info->flags |= kLSItemInfoIsSymlink;
    if (!isFolder && (finderFlags & kFinderIsAlias))
        info->flags |= kLSItemInfoIsAliasFile;
    if (item.name.startsWith('.') || (finderFlags & kFinderIsInvisible))
        info->flags |= kLSItemInfoIsInvisible;
    if (hidesExtension(item, finderFlags))
        info->flags |= kLSItemInfoExtensionIsHidden;
    return noErr;
}

OSStatus LSCopyKindStringForRef(const FSRef *ref, QString *kind)
{
    FoundItem item;
    if (const OSStatus status = findItem(ref, &item))
        return status;
    *kind = QString::fromUtf8(kindOf(typeNameOf(item)));
    return noErr;
}

OSStatus LSCopyIconNamesForRef(const FSRef *ref, QString *iconName, QString *genericIconName)
{
    FoundItem item;
    if (const OSStatus status = findItem(ref, &item))
        return status;
    const QMimeType type = QMimeDatabase().mimeTypeForName(typeNameOf(item));
    *iconName = S_ISDIR(item.facts.stx_mode) ? QStringLiteral("folder") : type.iconName();
    *genericIconName = type.genericIconName();
    return noErr;
}

bool isPackageExtension(QByteArrayView extension)
{
    static constexpr std::array<const char *, 14> packageExtensions = {
        "app",         "bundle",     "framework", "plugin", "kext", "component", "prefPane",
        "qlgenerator", "mdimporter", "wdgt",      "rtfd",   "pkg",  "mpkg",      "xcodeproj"};
    return std::any_of(packageExtensions.begin(), packageExtensions.end(),
                       [&](const char *package) { return extension.compare(package, Qt::CaseInsensitive) == 0; });
}

QByteArrayView extensionOfName(QByteArrayView name)
{
    const qsizetype dot = name.lastIndexOf('.');
    if (dot <= 0 || dot + 1 == name.size())
        return {};
    const QByteArrayView extension = name.sliced(dot + 1);
    // Names such as ".…" and ".. x" have no stem, "Dr. No" no extension.
    const bool hasStem = std::any_of(name.begin(), name.begin() + dot, [](char byte) { return byte != '.'; });
    return hasStem && !extension.contains(' ') ? extension : QByteArrayView();
}

} // namespace Tessaron
