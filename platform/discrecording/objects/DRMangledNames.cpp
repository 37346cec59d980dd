#include "platform/discrecording/names/HfsPlusNameRules.h"
#include "platform/discrecording/names/Iso9660NameRules.h"
#include "platform/discrecording/names/JolietNameRules.h"
#include "platform/discrecording/names/UdfNameRules.h"
#include "platform/discrecording/names/UniqueNames.h"
#include "platform/discrecording/objects/DRFSObjectRare.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
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

struct Sibling {
    QByteArray rawName;
    const DRFSObject *object = nullptr;
};

/// The object and those of its siblings that lie in the filesystem, in the order in which an image names them: by the
/// bytes of their names.
std::vector<Sibling> siblingsInImageOrder(const DRFSObject &object, const DRFolder &parent, DRFilesystemMask filesystem)
{
    const DRFilesystemMask inherited = parent.effectiveFilesystemMask();
    std::vector<Sibling> siblings;
    siblings.reserve(parent.children().size());
    for (const auto &sibling : parent.children()) {
        const DRFilesystemMask mask = sibling->explicitFilesystemMask() ? sibling->explicitFilesystemMask() : inherited;
        if (sibling.get() == &object || (mask & filesystem))
            siblings.push_back({sibling->baseNameBytes(), sibling.get()});
    }
    std::ranges::stable_sort(siblings, {}, &Sibling::rawName);
    return siblings;
}

/// The object's own name once all the siblings' names have been made with `makeName` and told apart.
template <typename Unit, typename MakeName, typename KeyOf = ExactName<Unit>>
std::basic_string<Unit> ownName(const DRFSObject &object, DRFilesystemMask filesystem, const NameLimits &limits,
                                const MakeName &makeName, const KeyOf &keyOf = {})
{
    const auto nameOf = [&](const Sibling &sibling) {
        const std::string_view rawName(sibling.rawName.data(), static_cast<std::size_t>(sibling.rawName.size()));
        return makeName(rawName, sibling.object->isFolder());
    };
    const std::shared_ptr<DRFolder> parent = object.parent();
    if (!parent)
        return nameOf({object.baseNameBytes(), &object});
    const std::vector<Sibling> siblings = siblingsInImageOrder(object, *parent, filesystem);
    std::vector<SiblingName<Unit>> names;
    names.reserve(siblings.size());
    std::size_t own = 0;
    for (const Sibling &sibling : siblings) {
        if (sibling.object == &object)
            own = names.size();
        names.push_back({nameOf(sibling), sibling.object->isFolder()});
    }
    makeNamesUnique<Unit, KeyOf>(names, limits, keyOf);
    return names[own].name;
}

/// QString's own conversion takes a byte order mark for one.
QString textOf(const std::u16string &name)
{
    return QStringView(name).toString();
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
        return textOf(ownName<char16_t>(*this, mask, jolietLimits, jolietName, jolietNameKey));
    case DRFilesystem::UDF:
        return textOf(ownName<char16_t>(*this, mask, udfLimits, udfName));
    case DRFilesystem::HFSPlus:
        return textOf(ownName<char16_t>(*this, mask, hfsPlusLimits, hfsPlusName, hfsPlusNameKey));
    }
    return baseName();
}

} // namespace Tessaron
