#include "filemodel/FileAttributeCache.h"
#include "platform/coreservices/LaunchServices.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRFileReference.h>

namespace Tessaron
{

std::shared_ptr<KRFileReference> KRFileReference::initWithFSRef(const FSRef &ref)
{
    return initWithFSRef(ref, ZelFileAttributeNone_fct());
}

std::shared_ptr<KRFileReference> KRFileReference::initWithFSRef(const FSRef &ref, _ZelFileAttribute knownAttributes)
{
    return std::make_shared<KRFileReference>(ConstructionKey(), ref, std::move(knownAttributes), false);
}

std::shared_ptr<KRFileReference> KRFileReference::initWithPath(const QString &path)
{
    return initWithPath(path, ZelFileAttributeNone_fct());
}

std::shared_ptr<KRFileReference> KRFileReference::initWithPath(const QString &path, _ZelFileAttribute knownAttributes)
{
    if (path.isNull())
        return nullptr;
    FSRef ref;
    bool isDirectory = false;
    const QByteArray bytes = fileSystemRepresentation(path);
    if (FSPathMakeRefWithOptions(bytes, kFSPathMakeRefDoNotFollowLeafSymlink, &ref, &isDirectory) != noErr)
        return nullptr;
    knownAttributes.directory = isDirectory ? 0 : 1;
    knownAttributes.empty = 0;
    return initWithFSRef(ref, std::move(knownAttributes));
}

std::shared_ptr<KRFileReference> KRFileReference::fileReferenceWithPath(const QString &path)
{
    return initWithPath(path);
}

std::shared_ptr<KRFileReference> KRFileReference::fileReferenceWithPath(const QString &path,
                                                                        _ZelFileAttribute knownAttributes)
{
    return initWithPath(path, std::move(knownAttributes));
}

std::shared_ptr<KRFileReference> KRFileReference::initWithVirtualFolderName(const QString &name)
{
    if (name.isEmpty())
        return nullptr;
    _ZelFileAttribute attributes = ZelFileAttributeNone_fct();
    attributes.empty = 0;
    auto folder = std::make_shared<KRFileReference>(ConstructionKey(), FSRef(), std::move(attributes), true);
    folder->m_givenNames = std::make_unique<GivenNames>();
    folder->m_givenNames->virtualFolderName = name;
    return folder;
}

std::shared_ptr<KRFileReference> KRFileReference::virtualFolderWithName(const QString &name)
{
    return initWithVirtualFolderName(name);
}

KRFileReference::KRFileReference(ConstructionKey, const FSRef &ref, _ZelFileAttribute &&known, bool isVirtual)
    : m_fileRef(ref)
    , m_isVirtual(isVirtual)
{
    adopt(std::move(known));
}

KRFileReference::~KRFileReference() = default;

KRFileReference::Cache &KRFileReference::cache()
{
    if (!m_cache)
        m_cache = std::make_unique<Cache>();
    return *m_cache;
}

void KRFileReference::adopt(_ZelFileAttribute &&record)
{
    m_empty = record.empty;
    m_directory = record.directory;
    m_nameBeginsWithADot = record.nameBeginsWithADot;
    m_dataSizeIsKnown = record.dataSizeIsKnown;
    m_rsrcSizeIsKnown = record.rsrcSizeIsKnown;
    m_dataSize = record.dataSize;
    m_rsrcSize = record.rsrcSize;
    m_bundle = record.bundle;
    m_symLink = record.symLink;
    m_alias = record.alias;
    m_invisible = record.invisible;
    m_extensionHidden = record.extensionHidden;
    m_cache.reset();
    if (record.extension || record.displayName || record.name || record.displayKind || record.path) {
        cache().own(Cache::Extension, std::move(record.extension));
        cache().own(Cache::DisplayName, std::move(record.displayName));
        cache().own(Cache::Name, std::move(record.name));
        cache().own(Cache::DisplayKind, std::move(record.displayKind));
        cache().path = std::move(record.path);
    }
    if (record.smallIcon || record.largeIcon) {
        cache().icons = std::make_unique<Cache::Icons>();
        cache().icons->small = {std::move(record.smallIcon), record.smallIconDataLength};
        cache().icons->large = {std::move(record.largeIcon), record.largeIconDataLength};
    }
}

bool KRFileReference::isContainer()
{
    return m_isVirtual || knownOrAsked(m_directory);
}

bool KRFileReference::isBundle()
{
    return !m_isVirtual && knownOrAsked(m_bundle);
}

bool KRFileReference::isSymbolicLink()
{
    return !m_isVirtual && knownOrAsked(m_symLink);
}

bool KRFileReference::isAlias()
{
    return !m_isVirtual && knownOrAsked(m_alias);
}

bool KRFileReference::isInvisible()
{
    return !m_isVirtual && knownOrAsked(m_invisible);
}

bool KRFileReference::isExtensionHidden()
{
    return !m_isVirtual && knownOrAsked(m_extensionHidden);
}

bool KRFileReference::knownOrAsked(const char &flag)
{
    dropWhatIsTooOld();
    if (!isFilled() || flag == 2)
        _copyLSAttributes();
    return flag == 0;
}

bool KRFileReference::hasDesiredName() const
{
    return m_givenNames && !m_givenNames->desiredName.isNull();
}

QString KRFileReference::desiredName() const
{
    return m_givenNames ? m_givenNames->desiredName : QString();
}

bool KRFileReference::setDesiredName(const QString &name)
{
    if (!m_givenNames && name.isNull())
        return true;
    if (!m_givenNames)
        m_givenNames = std::make_unique<GivenNames>();
    m_givenNames->desiredName = name;
    return true;
}

bool KRFileReference::isExtensionHiddenIsDesiredName()
{
    if (!hasDesiredName())
        return false;
    const QString own = extension();
    if (own.isNull())
        return false;
    const QByteArray desired = fileSystemRepresentation(desiredName());
    return fileSystemRepresentation(own) != extensionOfName(desired);
}

QString KRFileReference::desiredNameWithExtensionEvenIfHidden(bool even)
{
    if (m_isVirtual)
        return hasDesiredName() ? desiredName() : displayName();
    if (even)
        return isExtensionHiddenIsDesiredName() ? QString(desiredName() + QLatin1Char('.') + extension())
                                                : desiredName();
    if (hasDesiredName())
        return desiredName();
    const QString shown = displayName();
    return shown.isNull() ? name() : shown;
}

void KRFileReference::resetAllGettableAttributes()
{
    if (!m_cache)
        return;
    if (!m_cache->hasLargeIcon()) {
        m_cache.reset();
        return;
    }
    for (const Cache::Text text : {Cache::Extension, Cache::DisplayName, Cache::Name, Cache::DisplayKind})
        m_cache->clear(text);
    m_cache->path.reset();
    m_cache->pathNode = 0;
    m_cache->filledAt = 0;
    m_cache->icons->small = {};
}

void KRFileReference::resetAllAttributes()
{
    adopt(ZelFileAttributeNone_fct());
}

/// Starts the five seconds, unless they run already.
void KRFileReference::startAging()
{
    if (cache().filledAt == 0)
        cache().filledAt = Cache::ticks();
}

/// The reset when its time has come. A timer could do it only behind the back of the thread that uses the reference
/// just then.
void KRFileReference::dropWhatIsTooOld()
{
    if (m_cache && m_cache->filledAt != 0 && Cache::ticks() - m_cache->filledAt >= 5 * Cache::ticksPerSecond)
        resetAllGettableAttributes();
}

} // namespace Tessaron
