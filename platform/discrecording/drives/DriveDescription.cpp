#include "platform/discrecording/drives/DriveDescription.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace Tessaron
{

namespace
{

QString factOf(const QString &folder, const char *name)
{
    QFile file(folder + u'/' + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

/// The system's lasting name of the device; of several, that with the serial number, which is the first one.
QByteArray identityOf(const QString &device, const QByteArray &identities)
{
    QDir folder(QFile::decodeName(identities));
    const QStringList names = folder.entryList(QDir::System | QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        if (QFileInfo(folder.filePath(name)).symLinkTarget().section(u'/', -1) == device)
            return QFile::encodeName(name);
    }
    return {};
}

} // namespace

std::vector<DriveDescription> allDrives(const QByteArray &blockDevices, const QByteArray &identities)
{
    std::vector<DriveDescription> drives;
    QStringList names = QDir(QFile::decodeName(blockDevices)).entryList({QStringLiteral("sr*")}, QDir::Dirs);
    std::sort(names.begin(), names.end(), [](const QString &one, const QString &other) {
        return one.size() != other.size() ? one.size() < other.size() : one < other;
    });
    for (const QString &name : names) {
        const QString facts = QFile::decodeName(blockDevices) + u'/' + name + QStringLiteral("/device");
        DriveDescription drive;
        drive.path = "/dev/" + QFile::encodeName(name);
        drive.identity = identityOf(name, identities);
        drive.vendor = factOf(facts, "vendor");
        drive.product = factOf(facts, "model");
        drive.revision = factOf(facts, "rev");
        drives.push_back(std::move(drive));
    }
    return drives;
}

DiscFamily discFamily(std::uint32_t profile)
{
    switch (profile) {
    case 0x00:
        return DiscFamily::None;
    case 0x09:
        return DiscFamily::CDR;
    case 0x0A:
        return DiscFamily::CDRW;
    case 0x11:
    case 0x15:
        return DiscFamily::DVDMinusR;
    case 0x14:
        return DiscFamily::DVDMinusRW;
    case 0x1B:
    case 0x2B:
        return DiscFamily::DVDPlusR;
    case 0x41:
        return DiscFamily::BDR;
    case 0x12:
    case 0x13:
    case 0x1A:
    case 0x43:
        return DiscFamily::Overwritable;
    case 0xFFFF:
        return DiscFamily::File;
    default:
        return DiscFamily::ReadOnly;
    }
}

bool isCDFamily(DiscFamily family)
{
    return family == DiscFamily::CDR || family == DiscFamily::CDRW;
}

bool isOverwritten(DiscFamily family)
{
    return family == DiscFamily::Overwritable || family == DiscFamily::File;
}

bool isRewritable(DiscFamily family)
{
    return family == DiscFamily::CDRW || family == DiscFamily::DVDMinusRW || family == DiscFamily::Overwritable
        || family == DiscFamily::File;
}

std::uint32_t singleSpeed(std::uint32_t profile)
{
    constexpr std::uint32_t ofCD = 176'400;
    constexpr std::uint32_t ofDVD = 1'385'000;
    constexpr std::uint32_t ofBD = 4'496'000;
    if (profile == 0xFFFF)
        return 0;
    if (profile >= 0x40)
        return ofBD;
    return profile >= 0x10 ? ofDVD : ofCD;
}

} // namespace Tessaron
