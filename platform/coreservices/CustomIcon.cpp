#include "platform/coreservices/CustomIcon.h"

#include "platform/coreservices/AppleDouble.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/IconFamily.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/coreservices/ResourceFork.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/PathBytes.h"

#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t iconFamilyType = 0x69636E73; // 'icns'
constexpr std::int16_t customIconId = -16455;
constexpr std::uint16_t kFinderHasCustomIcon = 0x0400;
constexpr const char *folderIconName = "Icon\r";
/// A family of all sizes takes less than half a megabyte; more is not read.
constexpr qsizetype forkLimit = qsizetype(16) << 20;

/// The Finder information and the resource fork of a file, and where they lie.
struct Forks {
    AppleDouble contents;
    bool isInAttributes = false;
    bool isInAppleDouble = false;
};

QByteArray appleDoublePath(const QByteArray &path)
{
    const QByteArrayView name = lastPathComponent(path);
    QByteArray beside = path;
    return beside.insert(path.size() - name.size(), "._");
}

QByteArray readFile(const QByteArray &path, qsizetype limit)
{
    int failure = 0;
    const UniqueDescriptor file = openPath(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, &failure);
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > limit)
        return {};
    QByteArray bytes(qsizetype(status.st_size), '\0');
    std::size_t got = 0;
    if (readFully(file.get(), 0, bytes.data(), std::size_t(bytes.size()), &got) != 0)
        got = 0;
    bytes.truncate(qsizetype(got));
    return bytes;
}

/// Writes the whole file under a new name first, so that a reader never sees half of it.
bool replaceFile(const QByteArray &path, const QByteArray &bytes)
{
    QByteArray pattern = path + ".XXXXXX";
    UniqueDescriptor file(::mkostemp(pattern.data(), O_CLOEXEC));
    if (!file)
        return false;
    const int failure = writeFully(file.get(), bytes.constData(), std::size_t(bytes.size()));
    const bool isWhole = file.closeAndReport() && failure == 0;
    if (isWhole && std::rename(pattern.constData(), path.constData()) == 0)
        return true;
    ::unlink(pattern.constData());
    return false;
}

Forks readForks(const QByteArray &path)
{
    const PathAccess file(path);
    Forks forks;
    forks.contents = {readFinderInfo(file), readResourceFork(file, forkLimit)};
    forks.isInAttributes = !forks.contents.resourceFork.isEmpty();
    if (forks.isInAttributes)
        return forks;
    if (const auto beside = appleDoubleFromBytes(readFile(appleDoublePath(path), forkLimit))) {
        forks.contents = *beside;
        forks.isInAppleDouble = true;
    }
    return forks;
}

bool writeForks(const QByteArray &path, const Forks &forks)
{
    const PathAccess file(path);
    if (!forks.isInAppleDouble) {
        const FinderInfoBytes before = readFinderInfo(file);
        if (writeFinderInfo(file, forks.contents.finderInfo) == noErr) {
            if (writeResourceFork(file, forks.contents.resourceFork) == noErr)
                return true;
            (void)writeFinderInfo(file, before);
        }
    }
    // A fork that programs find in the attributes is not moved to where they do not look.
    if (forks.isInAttributes)
        return false;
    return replaceFile(appleDoublePath(path), bytesOfAppleDouble(forks.contents));
}

void setCustomIconFlag(FinderInfoBytes *info, bool isSet)
{
    const std::uint16_t flags = finderFlagsOf(info->data());
    setFinderFlags(info->data(), std::uint16_t(isSet ? flags | kFinderHasCustomIcon : flags & ~kFinderHasCustomIcon));
}

bool isCustomIcon(const Resource &resource)
{
    return resource.type == iconFamilyType && resource.id == customIconId;
}

/// The picture at each size of a family, centred where it is not square.
QByteArray familyOfPicture(const QImage &picture)
{
    std::vector<QImage> images;
    for (const int side : {16, 32, 48, 128, 256}) {
        const QImage scaled = picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QImage image(side, side, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.drawImage((side - scaled.width()) / 2, (side - scaled.height()) / 2, scaled);
        painter.end();
        images.push_back(image);
    }
    return iconFamilyFromImages(images, kSelectorAllAvailableData);
}

} // namespace

QByteArray customIconFamily(const FSRef &ref)
{
    struct statx facts;
    if (statFSRef(ref, STATX_TYPE, &facts) != 0)
        return {};
    QByteArray path = lastKnownPath(ref);
    bool hasFlag = true;
    if (S_ISDIR(facts.stx_mode)) {
        hasFlag = finderFlagsOf(readFinderInfo(PathAccess(path)).data()) & kFinderHasCustomIcon;
        path += QByteArray("/") + folderIconName;
    } else if (!S_ISREG(facts.stx_mode)) {
        return {};
    }
    if (!hasFlag)
        return {};
    const Forks forks = readForks(path);
    if (!S_ISDIR(facts.stx_mode) && !(finderFlagsOf(forks.contents.finderInfo.data()) & kFinderHasCustomIcon))
        return {};
    const auto resources = resourcesOfFork(forks.contents.resourceFork);
    if (!resources)
        return {};
    const auto icon = std::find_if(resources->begin(), resources->end(), isCustomIcon);
    return icon != resources->end() ? icon->data : QByteArray();
}

bool setCustomIcon(const FSRef &ref, const QImage &picture)
{
    struct statx facts;
    if (statFSRef(ref, STATX_TYPE, &facts) != 0 || !S_ISREG(facts.stx_mode))
        return false;
    const QByteArray path = lastKnownPath(ref);
    Forks forks = readForks(path);
    auto resources = resourcesOfFork(forks.contents.resourceFork);
    // A fork that cannot be read is not thrown away for an icon.
    if (!resources)
        return false;
    const bool hadIcon = std::erase_if(*resources, isCustomIcon) > 0;
    if (picture.isNull() && !hadIcon)
        return true;
    if (!picture.isNull()) {
        Resource icon;
        icon.type = iconFamilyType;
        icon.id = customIconId;
        icon.data = familyOfPicture(picture);
        if (icon.data.isEmpty())
            return false;
        resources->push_back(icon);
    }
    setCustomIconFlag(&forks.contents.finderInfo, !picture.isNull());
    forks.contents.resourceFork = resources->empty() ? QByteArray() : forkWithResources(*resources);
    if (!resources->empty() && forks.contents.resourceFork.isEmpty())
        return false;
    return writeForks(path, forks);
}

} // namespace Tessaron
