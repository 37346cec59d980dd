#include "platform/discrecording/objects/DRFSObject.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/discrecording/objects/DRFSObjectRare.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// Where a property is looked up after the filesystem itself; `All` ends the chain.
DRFilesystem generalizationOf(DRFilesystem filesystem)
{
    const bool isNameLevel = filesystem == DRISO9660LevelOne || filesystem == DRISO9660LevelTwo;
    return isNameLevel ? DRISO9660 : DRAllFilesystems;
}

} // namespace

DRFSObject::DRFSObject(const FSRef &source, bool isVirtual)
    : m_source(source)
    , m_isVirtual(isVirtual)
{
}

DRFSObject::DRFSObject(const QString &name)
    : m_isVirtual(true)
{
    setBaseName(name);
}

DRFSObject::~DRFSObject() = default;

DRFSObject::Rare &DRFSObject::rare()
{
    if (!m_rare)
        m_rare = std::make_unique<Rare>();
    return *m_rare;
}

std::shared_ptr<DRFolder> DRFSObject::parent() const
{
    return m_parent ? m_parent->weak_from_this().lock() : nullptr;
}

QString DRFSObject::baseName() const
{
    return stringWithFileSystemRepresentation(baseNameBytes());
}

QByteArray DRFSObject::baseNameBytes() const
{
    if (m_hasBaseName)
        return m_rare->baseName;
    const QByteArrayView name = nameOfFSRef(m_source);
    return QByteArray::fromRawData(name.data(), name.size());
}

void DRFSObject::setBaseName(const QString &name)
{
    rare().baseName = fileSystemRepresentation(name);
    m_hasBaseName = true;
}

void DRFSObject::setProperty(const QVariant &value, const QString &key, DRFilesystem filesystem)
{
    auto &properties = rare().properties;
    const auto found = std::ranges::find_if(properties, [&](const Rare::Property &property) {
        return property.filesystem == filesystem && property.key == key;
    });
    if (found != properties.end() && value.isValid())
        found->value = value;
    else if (found != properties.end())
        properties.erase(found);
    else if (value.isValid())
        properties.push_back({key, value, filesystem});
}

QVariant DRFSObject::propertyForKey(const QString &key, DRFilesystem filesystem) const
{
    if (!m_rare)
        return {};
    for (;; filesystem = generalizationOf(filesystem)) {
        for (const Rare::Property &property : m_rare->properties) {
            if (property.filesystem == filesystem && property.key == key)
                return property.value;
        }
        if (filesystem == DRAllFilesystems)
            return {};
    }
}

QVariantMap DRFSObject::propertiesForFilesystem(DRFilesystem filesystem) const
{
    QVariantMap result;
    if (!m_rare)
        return result;
    for (;; filesystem = generalizationOf(filesystem)) {
        for (const Rare::Property &property : m_rare->properties) {
            if (property.filesystem == filesystem && !result.contains(property.key))
                result.insert(property.key, property.value);
        }
        if (filesystem == DRAllFilesystems)
            return result;
    }
}

DRFilesystemMask DRFSObject::effectiveFilesystemMask() const
{
    for (const DRFSObject *object = this; object; object = object->m_parent) {
        if (object->m_explicitMask != 0)
            return object->m_explicitMask;
    }
    return DRFilesystemInclusionMaskAll;
}

} // namespace Tessaron
