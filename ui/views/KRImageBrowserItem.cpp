#include <TessaronClasses/KRFileReference.h>

#include <TessaronClassesUI/KRImageBrowserItem.h>
#include <atomic>

namespace Tessaron
{

const QString IKImageBrowserPathRepresentationType = QStringLiteral("IKImageBrowserPathRepresentationType");

namespace
{

/// Addresses would be taken again by later items, while a browser may still ask for a thumbnail of the earlier one.
std::uint32_t nextIdentifier()
{
    static std::atomic<std::uint32_t> last = 0;
    return ++last;
}

} // namespace

std::shared_ptr<KRImageBrowserItem> KRImageBrowserItem::initWithPath(const QString &path)
{
    std::shared_ptr<KRFileReference> fileRef = KRFileReference::initWithPath(path);
    return fileRef ? std::make_shared<KRImageBrowserItem>(ConstructionKey(), std::move(fileRef)) : nullptr;
}

KRImageBrowserItem::KRImageBrowserItem(ConstructionKey, std::shared_ptr<KRFileReference> fileRef)
    : m_fileRef(std::move(fileRef))
    , m_identifier(nextIdentifier())
{
}

QString KRImageBrowserItem::imageTitle() const
{
    return m_name.isNull() ? m_fileRef->displayName() : m_name;
}

QString KRImageBrowserItem::imageUID() const
{
    return QString::number(m_identifier);
}

QString KRImageBrowserItem::imageRepresentation() const
{
    return m_fileRef->path();
}

} // namespace Tessaron
