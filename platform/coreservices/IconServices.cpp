#include "platform/coreservices/IconServices.h"

#include "platform/coreservices/CustomIcon.h"
#include "platform/coreservices/GenericIcons.h"
#include "platform/coreservices/LaunchServices.h"
#include "platform/foundation/MainThread.h"

#include <QGuiApplication>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>
#include <QMutex>

namespace Tessaron
{

class IconSource
{
public:
    QString name; ///< in the theme; empty for a plain drawing
    bool isFolder = false;
    QByteArray customFamily; ///< the file's own icon; null for one of its type
};

namespace
{

bool mayUseTheme()
{
    return isMainThread() && qobject_cast<QGuiApplication *>(QCoreApplication::instance());
}

QString themeNameFor(const QString &iconName, const QString &genericName)
{
    if (!mayUseTheme())
        return {};
    for (const QString &name : {iconName, genericName}) {
        if (!name.isEmpty() && QIcon::hasThemeIcon(name))
            return name;
    }
    return {};
}

std::vector<QImage> picturesOf(const IconSource &source)
{
    std::vector<QImage> images;
    const QIcon icon = source.name.isEmpty() || !mayUseTheme() ? QIcon() : QIcon::fromTheme(source.name);
    for (const int side : {16, 32, 48, 128, 256}) {
        QImage image = icon.isNull() ? QImage() : icon.pixmap(QSize(side, side), 1.0).toImage();
        // A theme without this size gives the next smaller one.
        if (!image.isNull() && (image.width() != side || image.height() != side))
            image = image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation).copy(0, 0, side, side);
        images.push_back(image.isNull() ? drawnIcon(source.isFolder, side) : image);
    }
    return images;
}

} // namespace

OSErr GetIconRefFromFileInfo(const FSRef *ref, QStringView fileName, IconRef *icon)
{
    if (!icon)
        return paramErr;
    QString iconName;
    QString genericName;
    auto source = std::make_shared<IconSource>();
    if (LSCopyIconNamesForRef(ref, &iconName, &genericName) == noErr) {
        source->isFolder = iconName == QLatin1String("folder");
    } else if (!fileName.isEmpty()) {
        const QMimeType type = QMimeDatabase().mimeTypeForFile(fileName.toString(), QMimeDatabase::MatchExtension);
        iconName = type.iconName();
        genericName = type.genericIconName();
    } else {
        return fnfErr;
    }
    source->name = themeNameFor(iconName, genericName);
    source->customFamily = ref ? customIconFamily(*ref) : QByteArray();
    *icon = std::move(source);
    return noErr;
}

OSErr IconRefToIconFamily(const IconRef &icon, std::uint32_t selectors, QByteArray *family)
{
    static QMutex mutex;
    static auto *const families = new QHash<QString, QByteArray>; // guarded by the mutex
    if (!icon || !family)
        return paramErr;
    if (!icon->customFamily.isEmpty()) {
        *family = selectors == kSelectorAllAvailableData
            ? icon->customFamily
            : iconFamilyFromImages(imagesFromIconFamily(icon->customFamily), selectors);
        return family->isEmpty() ? fnfErr : noErr;
    }
    // Off the main thread a themed icon is drawn plainly, and kept as what it is.
    const QString drawnName = mayUseTheme() ? icon->name : QString();
    const QString key =
        drawnName + QLatin1Char('/') + QString::number(icon->isFolder) + QLatin1Char('/') + QString::number(selectors);
    {
        const QMutexLocker lock(&mutex);
        *family = families->value(key);
    }
    if (family->isEmpty()) {
        *family = iconFamilyFromImages(picturesOf(*icon), selectors);
        const QMutexLocker lock(&mutex);
        families->insert(key, *family);
    }
    return family->isEmpty() ? fnfErr : noErr;
}

QByteArray genericFolderIconFamily()
{
    const auto icon = std::make_shared<IconSource>();
    icon->isFolder = true;
    icon->name = themeNameFor(QStringLiteral("folder"), QStringLiteral("inode-directory"));
    QByteArray family;
    (void)IconRefToIconFamily(icon, kSelectorAllAvailableData, &family);
    return family;
}

} // namespace Tessaron
