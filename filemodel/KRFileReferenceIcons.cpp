#include "filemodel/FileAttributeCache.h"
#include "platform/coreservices/IconFamily.h"
#include "platform/coreservices/IconServices.h"
#include <TessaronClasses/KRFileReference.h>

#include <QImage>

namespace Tessaron
{

namespace
{

/// A family longer than this holds more than a small icon, so that its picture is brought to the small size.
constexpr std::int32_t longestSmallFamily = 990;
constexpr int smallIconSide = 16;

QImage scaledSmall(const QImage &image)
{
    return image.isNull() ? image
                          : image.scaled(smallIconSide, smallIconSide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage genericFolderIcon()
{
    static const QImage icon = imageFromIconFamily(genericFolderIconFamily(), 0);
    return icon;
}

QImage smallGenericFolderIcon()
{
    static const QImage icon = scaledSmall(genericFolderIcon());
    return icon;
}

/// The family with the selected members, else with all that the icon has; empty when the file has no icon.
QByteArray familyOf(const FSRef &ref, const QString &fileName, std::uint32_t selectors)
{
    IconRef icon;
    QByteArray family;
    if (GetIconRefFromFileInfo(&ref, fileName, &icon) != noErr)
        return family;
    if (IconRefToIconFamily(icon, selectors, &family) != noErr || family.isEmpty())
        (void)IconRefToIconFamily(icon, kSelectorAllAvailableData, &family);
    return family;
}

} // namespace

void KRFileReference::_getIcon()
{
    const QByteArray family =
        m_isVirtual ? QByteArray() : familyOf(m_fileRef, name(), kSelectorSmall32Bit | kSelectorSmall8BitMask);
    if (family.isEmpty())
        return;
    if (!cache().icons)
        cache().icons = std::make_unique<Cache::Icons>();
    cache().icons->small = {mallocCopy(family), static_cast<std::int32_t>(family.size())};
}

void KRFileReference::_getLargeIcon()
{
    const QByteArray family = m_isVirtual ? QByteArray() : familyOf(m_fileRef, name(), kSelectorAllLargeData);
    if (family.isEmpty())
        return;
    if (!cache().icons)
        cache().icons = std::make_unique<Cache::Icons>();
    cache().icons->large = {mallocCopy(family), static_cast<std::int32_t>(family.size())};
}

QImage KRFileReference::smallIcon()
{
    if (m_isVirtual)
        return smallGenericFolderIcon();
    dropWhatIsTooOld();
    if (!isFilled() || !m_cache || !m_cache->icons || !m_cache->icons->small.data)
        _getIcon();
    if (!m_cache || !m_cache->icons || !m_cache->icons->small.data)
        return {};
    const Cache::Icon &icon = m_cache->icons->small;
    const QImage image = imageFromIconFamily(QByteArrayView(icon.data.get(), icon.length), smallIconSide);
    return icon.length > longestSmallFamily ? scaledSmall(image) : image;
}

QImage KRFileReference::largeIcon()
{
    if (m_isVirtual)
        return genericFolderIcon();
    dropWhatIsTooOld();
    if (!isFilled() || !m_cache || !m_cache->hasLargeIcon())
        _getLargeIcon();
    if (!m_cache || !m_cache->hasLargeIcon())
        return {};
    const Cache::Icon &icon = m_cache->icons->large;
    return imageFromIconFamily(QByteArrayView(icon.data.get(), icon.length), 0);
}

} // namespace Tessaron
