#include "platform/discrecording/DRFSObjectRare.h"
#include "platform/discrecording/DRFolder.h"
#include "platform/discrecording/filesystems/HfsPlusNames.h"
#include "platform/discrecording/filesystems/Iso9660Names.h"
#include "platform/discrecording/filesystems/JolietNames.h"
#include "platform/discrecording/filesystems/UdfNames.h"
#include "platform/discrecording/filesystems/UniqueNames.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <string_view>

namespace Tessaron
{

namespace
{

DRFilesystemMask maskOf(DRFilesystem filesystem)
{
    switch (filesystem) {
    case DRFilesystem::All:
        return DRFilesystemInclusionMaskAll;
    case DRFilesystem::ISO9660:
    case DRFilesystem::ISO9660LevelOne:
    case DRFilesystem::ISO9660LevelTwo:
        return DRFilesystemInclusionMaskISO9660;
    case DRFilesystem::Joliet:
        return DRFilesystemInclusionMaskJoliet;
    case DRFilesystem::UDF:
        return DRFilesystemInclusionMaskUDF;
    case DRFilesystem::HFSPlus:
        return DRFilesystemInclusionMaskHFSPlus;
    }
    return 0;
}

std::string isoName(std::string_view rawName, bool isFolder, Iso9660Level level)
{
    return isFolder ? iso9660FolderName(rawName, level) : iso9660FileName(rawName, level);
}

/// The object's own name once all the siblings' names have been made with `makeName` and told apart.
template <typename Unit, typename MakeName, typename KeyOf = ExactName<Unit>>
std::basic_string<Unit> ownName(const DRFSObject &object, DRFilesystemMask filesystem, const NameLimits &limits,
                                const MakeName &makeName, const KeyOf &keyOf = {})
{
    const auto nameOf = [&](const DRFSObject &sibling) {
        const QByteArray rawName = sibling.baseNameBytes();
        return makeName(std::string_view(rawName.data(), static_cast<std::size_t>(rawName.size())), sibling.isFolder());
    };
    const std::shared_ptr<DRFolder> parent = object.parent();
    if (!parent)
        return nameOf(object);
    const DRFilesystemMask inherited = parent->effectiveFilesystemMask();
    std::vector<SiblingName<Unit>> names;
    names.reserve(parent->children().size());
    std::size_t own = 0;
    for (const auto &sibling : parent->children()) {
        const DRFilesystemMask mask = sibling->explicitFilesystemMask() ? sibling->explicitFilesystemMask() : inherited;
        if (sibling.get() == &object)
            own = names.size();
        else if (!(mask & filesystem))
            continue;
        names.push_back({nameOf(*sibling), sibling->isFolder()});
    }
    makeNamesUnique<Unit, KeyOf>(names, limits, keyOf);
    return names[own].name;
}

} // namespace

QString DRFSObject::mangledNameForFilesystem(DRFilesystem filesystem) const
{
    const DRFilesystemMask mask = maskOf(filesystem);
    switch (filesystem) {
    case DRFilesystem::All:
        break;
    case DRFilesystem::ISO9660LevelOne:
        return QString::fromStdString(
            ownName<char>(*this, mask, iso9660LevelOneLimits, [](std::string_view name, bool isFolder) {
                return isoName(name, isFolder, Iso9660Level::One);
            }));
    case DRFilesystem::ISO9660:
    case DRFilesystem::ISO9660LevelTwo:
        return QString::fromStdString(
            ownName<char>(*this, mask, iso9660LevelTwoLimits, [](std::string_view name, bool isFolder) {
                return isoName(name, isFolder, Iso9660Level::Two);
            }));
    case DRFilesystem::Joliet:
        return QString::fromStdU16String(ownName<char16_t>(*this, mask, jolietLimits, jolietName));
    case DRFilesystem::UDF:
        return QString::fromStdU16String(ownName<char16_t>(*this, mask, udfLimits, udfName));
    case DRFilesystem::HFSPlus:
        return QString::fromStdU16String(ownName<char16_t>(*this, mask, hfsPlusLimits, hfsPlusName, hfsPlusNameKey));
    }
    return baseName();
}

} // namespace Tessaron
