#include "app/DiscWords.h"

#include "app/Words.h"

#include <QCoreApplication>
#include <QLocale>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::uint64_t blockSize = 2048;

struct DiscWords {
    Q_DECLARE_TR_FUNCTIONS(DiscWords)
};

QString blankDiscText(const DiscDescription &disc, const QString &kind, bool isAddedTo)
{
    const QString room = sizeText(disc.freeBlocks * blockSize);
    if (disc.family == DiscFamily::File)
        return DiscWords::tr("A file in the place of a disc, room for %1").arg(room);
    if (disc.family == DiscFamily::Overwritable && isAddedTo)
        return DiscWords::tr("%1, room for %2 in all").arg(kind, room);
    if (disc.family == DiscFamily::Overwritable)
        return DiscWords::tr("%1, room for %2. What is on it will be replaced.").arg(kind, room);
    return DiscWords::tr("%1, blank, %2 free").arg(kind, room);
}

} // namespace

QString driveText(const DriveDescription &drive)
{
    const QString path = displayableText(stringWithFileSystemRepresentation(drive.path));
    const QString name = QStringList({drive.vendor, drive.product}).join(u' ').simplified();
    return name.isEmpty() ? path : QStringLiteral("%1 (%2)").arg(name, path);
}

QString discText(const DiscDescription &disc, bool isAddedTo)
{
    const QString kind = disc.profileName.isEmpty() ? DiscWords::tr("Disc") : disc.profileName;
    switch (disc.state) {
    case DiscState::NoDisc:
        return DiscWords::tr("There is no disc in the drive.");
    case DiscState::Blank:
        return blankDiscText(disc, kind, isAddedTo);
    case DiscState::Appendable:
        return DiscWords::tr("%1, written in part, %2 free").arg(kind, sizeText(disc.freeBlocks * blockSize));
    case DiscState::Closed:
        return disc.isErasable ? DiscWords::tr("%1, full. It can be erased.").arg(kind)
                               : DiscWords::tr("%1: nothing can be added to it.").arg(kind);
    case DiscState::Unsuitable:
        return DiscWords::tr("%1: this drive can neither read nor write it.").arg(kind);
    case DiscState::Unknown:
        break;
    }
    return DiscWords::tr("The drive does not say what is in it.");
}

QString speedText(std::uint32_t speed, std::uint32_t profile)
{
    const double bytes = double(speed) * 1000;
    const QString rate = DiscWords::tr("%1/s").arg(sizeText(std::uint64_t(bytes)));
    const std::uint32_t single = singleSpeed(profile);
    return single == 0 ? rate : QStringLiteral("%1× (%2)").arg(QLocale().toString(bytes / single, 'g', 3), rate);
}

QString spoiledText(DiscFamily family)
{
    switch (family) {
    case DiscFamily::CDRW:
    case DiscFamily::DVDMinusRW:
        return DiscWords::tr("The disc has to be erased before it can be written again.");
    case DiscFamily::Overwritable:
    case DiscFamily::File:
        return DiscWords::tr("What is on the disc then is worth nothing, but it can be written again.");
    default:
        return DiscWords::tr("The disc cannot be used any more then.");
    }
}

} // namespace Tessaron::Desktop
