#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/coreservices/IconFamily.h"

#include <QByteArray>
#include <QStringView>

#include <memory>

namespace Tessaron
{

/// An icon that pictures can be asked of; shared and immutable.
class IconSource;
using IconRef = std::shared_ptr<const IconSource>;

/// The icon for a file: its own (CustomIcon.h), else that of its type in the user's icon theme when called on the main
/// thread of a program with a QGuiApplication, else a plain drawing of a sheet or a folder (pixmaps belong to the main
/// thread, drawings need no display). `fileName` decides the type of a reference whose file is gone. Thread-safe.
[[nodiscard]] OSErr GetIconRefFromFileInfo(const FSRef *ref, QStringView fileName, IconRef *icon);

/// 'icns' data with the members that the selectors name (IconFamilySelectors). paramErr for no icon; fnfErr when none
/// of the selected members can be made. Thread-safe; families are made once for each icon and selection and kept.
[[nodiscard]] OSErr IconRefToIconFamily(const IconRef &icon, std::uint32_t selectors, QByteArray *family);

/// 'icns' data with all sizes of the icon of a folder in general.
[[nodiscard]] QByteArray genericFolderIconFamily();

} // namespace Tessaron
