#include "filemodel/FileAttributeCache.h"
#include "platform/coreservices/Aliases.h"
#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/LaunchServices.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/KRFileReference.h>

#include <QDateTime>
#include <QUrl>

#include <array>

namespace Tessaron
{

namespace
{

/// Room for a path with its NUL.
constexpr std::uint32_t pathBufferSize = 1024;

QString textOf(const char *bytes)
{
    return bytes ? stringWithFileSystemRepresentation(bytes) : QString();
}

/// The time in UTC.
QDateTime dateOf(FileTime time)
{
    return QDateTime::fromMSecsSinceEpoch(time.seconds * 1000 + time.nanoseconds / 1'000'000, Qt::UTC);
}

} // namespace

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

QString KRFileReference::displayName()
{
    if (m_isVirtual)
        return m_givenNames->virtualFolderName;
    dropWhatIsTooOld();
    if (!isFilled() || !m_cache || !m_cache->text(Cache::DisplayName))
        _copyLSAttributes();
    return textOf(cache().text(Cache::DisplayName));
}

QString KRFileReference::extension()
{
    dropWhatIsTooOld();
    if (!m_isVirtual && (!isFilled() || !m_cache || !m_cache->text(Cache::Extension)))
        _copyLSAttributes();
    return m_cache ? textOf(m_cache->text(Cache::Extension)) : QString();
}

QString KRFileReference::displayKind()
{
    dropWhatIsTooOld();
    if (!m_isVirtual && (!isFilled() || !m_cache || !m_cache->text(Cache::DisplayKind))) {
        _copyLSAttributes();
        copyDisplayKind();
    }
    return m_cache ? textOf(m_cache->text(Cache::DisplayKind)) : QString();
}

QString KRFileReference::name()
{
    if (m_isVirtual)
        return displayName();
    dropWhatIsTooOld();
    if (isFilled() && m_cache && m_cache->text(Cache::Name))
        return textOf(m_cache->text(Cache::Name));
    const QString whole = path();
    if (whole.isNull())
        return {};
    if (m_cache->pathNode != 0) {
        const std::string_view last = NodeTable::shared().nameOf(m_cache->pathNode);
        m_cache->refer(Cache::Name, {last.data(), static_cast<qsizetype>(last.size())});
    } else {
        QByteArrayView bytes(m_cache->path.get());
        while (bytes.size() > 1 && bytes.endsWith('/'))
            bytes.chop(1);
        m_cache->own(Cache::Name, mallocCopy(bytes.size() == 1 ? bytes : lastPathComponent(bytes)));
    }
    m_empty = 0;
    return textOf(m_cache->text(Cache::Name));
}

QString KRFileReference::path()
{
    if (m_isVirtual)
        return {};
    dropWhatIsTooOld();
    if (m_empty != 0 || !m_cache || !m_cache->hasPath()) {
        std::array<char, pathBufferSize> buffer;
        const bool isMade = FSRefMakePath(&m_fileRef, buffer.data(), pathBufferSize) == noErr;
        if (!isMade && !m_cache)
            return {};
        cache().path.reset();
        // The place stands for the path: a number where a copy would cost a hundred bytes per file.
        cache().pathNode = isMade ? FilePlaces::shared().currentNode(m_fileRef) : 0;
    }
    if (m_cache->path)
        return textOf(m_cache->path.get());
    return m_cache->pathNode != 0 ? stringWithFileSystemRepresentation(pathOfNode(m_cache->pathNode)) : QString();
}

QString KRFileReference::kind()
{
    if (m_isVirtual)
        return NSBundle::mainBundle()->localizedString(QStringLiteral("virtual folder"));
    QString kind;
    return LSCopyKindStringForRef(&m_fileRef, &kind) == noErr ? kind : QString();
}

QUrl KRFileReference::url() const
{
    QByteArray path;
    if (m_isVirtual || locateFile(m_fileRef, 0, nullptr, &path) != 0)
        return {};
    return QUrl::fromEncoded(QByteArray("file://").append(path.toPercentEncoding("/")), QUrl::StrictMode);
}

QDateTime KRFileReference::creationDate() const
{
    FSCatalogInfo info;
    const bool isThere = !m_isVirtual && FSGetCatalogInfo(&m_fileRef, kFSCatInfoDates, &info) == noErr;
    // The zero time stands for a file system that keeps no times of birth.
    const bool hasDate = isThere && info.createDate != FileTime();
    return hasDate ? dateOf(info.createDate) : QDateTime();
}

QDateTime KRFileReference::modificationDate() const
{
    FSCatalogInfo info;
    const bool isThere = !m_isVirtual && FSGetCatalogInfo(&m_fileRef, kFSCatInfoDates, &info) == noErr;
    return isThere ? dateOf(info.contentModDate) : QDateTime();
}

std::uint64_t KRFileReference::dataPhysicalSize()
{
    if (isContainer())
        return 0;
    if (!isFilled() || m_dataSizeIsKnown == 1)
        _copyCatAttributes();
    return m_dataSize;
}

std::uint64_t KRFileReference::rsrcPhysicalSize()
{
    if (isContainer())
        return 0;
    if (!isFilled() || m_rsrcSizeIsKnown == 1)
        _copyCatAttributes();
    return m_rsrcSize;
}

std::uint64_t KRFileReference::physicalSize()
{
    return dataPhysicalSize() + rsrcPhysicalSize();
}

QByteArray KRFileReference::aliasData() const
{
    QByteArray data;
    return !m_isVirtual && FSNewAliasMinimal(&m_fileRef, &data) == noErr ? data : QByteArray();
}

void KRFileReference::_copyLSAttributes()
{
    LSItemAttributes attributes;
    if (LSCopyItemAttributes(&m_fileRef, kLSRolesViewer, {kLSItemDisplayName}, &attributes) == noErr) {
        if (attributes.ownedDisplayName.isEmpty())
            cache().refer(Cache::DisplayName, attributes.displayName);
        else
            cache().own(Cache::DisplayName, mallocCopy(attributes.ownedDisplayName));
        cache().clear(Cache::DisplayKind); // asked for when it is wanted
    }
    LSItemInfoRecord info;
    if (LSCopyItemInfoForRef(&m_fileRef, &info) == noErr) {
        const auto flag = [&info](std::uint32_t mask) { return static_cast<char>(info.flags & mask ? 0 : 1); };
        m_bundle = flag(kLSItemInfoIsPackage);
        m_symLink = flag(kLSItemInfoIsSymlink);
        m_alias = flag(kLSItemInfoIsAliasFile);
        m_invisible = flag(kLSItemInfoIsInvisible);
        m_extensionHidden = flag(kLSItemInfoExtensionIsHidden);
        m_directory = flag(kLSItemInfoIsContainer);
        cache().refer(Cache::Extension, info.extension);
    }
    m_empty = 0;
    startAging();
}

/// Apart from the other attributes: to tell the kind of a file without an extension, its contents are read.
void KRFileReference::copyDisplayKind()
{
    LSItemAttributes attributes;
    if (LSCopyItemAttributes(&m_fileRef, kLSRolesViewer, {kLSItemDisplayKind}, &attributes) == noErr)
        cache().refer(Cache::DisplayKind, attributes.displayKind);
}

void KRFileReference::_copyCatAttributes()
{
    // A file that cannot be asked has no size; it is not asked again.
    m_dataSize = m_rsrcSize = 0;
    m_dataSizeIsKnown = m_rsrcSizeIsKnown = 0;
    FSCatalogInfo info;
    if (FSGetCatalogInfo(&m_fileRef, kFSCatInfoDataSizes | kFSCatInfoRsrcSizes, &info) != noErr)
        return;
    m_dataSize = info.dataPhysicalSize;
    m_rsrcSize = info.rsrcPhysicalSize;
    m_empty = 0;
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
