#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <initializer_list>

namespace Tessaron
{

/// On whose behalf facts are asked for.
enum LSRolesMask : std::uint32_t {
    kLSRolesViewer = 2, ///< for showing the item
    kLSRolesAll = 0xFFFFFFFF,
};

/// Names of the attributes of LSCopyItemAttributes().
enum LSItemAttribute : std::uint8_t {
    kLSItemDisplayName,
    kLSItemDisplayKind,
};

/// Attributes of an item. The bytes stay valid for the life of the process and are followed by a NUL, but for a display
/// name that was made by hiding an extension: its owner is `ownedDisplayName`.
struct LSItemAttributes {
    QByteArrayView displayName; ///< bytes of the name as shown
    QByteArrayView displayKind; ///< UTF-8, in the user's language
    QByteArray ownedDisplayName;
};

enum LSItemInfoFlags : std::uint32_t {
    kLSItemInfoIsPlainFile = 0x00000001, ///< not a container
    kLSItemInfoIsPackage = 0x00000002, ///< a folder that is shown as a file
    kLSItemInfoIsContainer = 0x00000008, ///< a folder, packages included
    kLSItemInfoIsAliasFile = 0x00000010,
    kLSItemInfoIsSymlink = 0x00000020,
    kLSItemInfoIsInvisible = 0x00000040,
    kLSItemInfoExtensionIsHidden = 0x00100000,
};

struct LSItemInfoRecord {
    std::uint32_t flags = 0; ///< LSItemInfoFlags
    QByteArrayView extension; ///< without the dot, empty for none; valid for the life of the process, followed by a NUL
};

/// The name and kind of an item as a file manager shows them; only what is wanted is filled. Errors: fnfErr … as of
/// FSGetCatalogInfo(). Thread-safe.
[[nodiscard]] OSStatus LSCopyItemAttributes(const FSRef *ref, LSRolesMask role,
                                            std::initializer_list<LSItemAttribute> wanted,
                                            LSItemAttributes *attributes);

/// The flags and the extension of an item. A name that begins with a dot is invisible, as is an item whose Finder flags
/// say so; a package is a folder with one of the extensions of isPackageExtension() or with the Finder's bundle flag.
/// Thread-safe.
[[nodiscard]] OSStatus LSCopyItemInfoForRef(const FSRef *ref, LSItemInfoRecord *info);

/// The kind of an item in the user's language: the shared MIME database's comment for its type. Thread-safe.
[[nodiscard]] OSStatus LSCopyKindStringForRef(const FSRef *ref, QString *kind);

/// The name of the type's icon in icon themes, and of the icon to take where a theme lacks it. Thread-safe.
[[nodiscard]] OSStatus LSCopyIconNamesForRef(const FSRef *ref, QString *iconName, QString *genericIconName);

/// True for the extensions of folders that are shown as files: app, bundle, framework, plugin, kext and their like.
[[nodiscard]] bool isPackageExtension(QByteArrayView extension);

/// The extension of a file name, without the dot: what follows the last dot, when something stands before that dot and
/// something behind it, and no blank is in it. Empty for none. It is a part of `name`.
[[nodiscard]] QByteArrayView extensionOfName(QByteArrayView name);

} // namespace Tessaron
