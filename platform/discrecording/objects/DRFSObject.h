#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRFilesystems.h"
#include "platform/foundation/Export.h"

#include <QString>
#include <QVariantMap>

#include <memory>
#include <vector>

namespace Tessaron
{

class DRFolder;

/// A file or folder of a disc to be made. Not thread-safe: one thread at a time works on a tree; while a burn prepares,
/// it must not change. Owned by its parent folder and by all who hold the pointer; a parent that goes clears the
/// link to it.
///
/// A layout of a million files is a million of these: members are few and rare things live in one optional record.
class TESSARON_EXPORT DRFSObject
{
public:
    virtual ~DRFSObject();
    DRFSObject(const DRFSObject &) = delete;
    DRFSObject &operator=(const DRFSObject &) = delete;

    [[nodiscard]] virtual bool isFolder() const = 0;
    /// True for an object that takes neither name nor content from a file on disk.
    [[nodiscard]] bool isVirtual() const { return m_isVirtual; }

    /// The file that the object was made from; the zero reference for a virtual object without one. A virtual folder
    /// may carry the reference of the folder it was modelled on: its times and permissions then come from there.
    [[nodiscard]] const FSRef &sourceRef() const { return m_source; }
    void setSourceRef(const FSRef &ref) { m_source = ref; }

    /// The folder that holds the object; null for a root.
    [[nodiscard]] std::shared_ptr<DRFolder> parent() const;

    /// The name that the names in each filesystem are made from: what setBaseName() gave, else the name of the source
    /// file. For a root folder it names the volume.
    [[nodiscard]] QString baseName() const;
    /// The same as bytes, as the disc's byte-based filesystems store it. Where the name is the source's own, no copy is
    /// made: the bytes live as long as the process, but need not end with a NUL.
    [[nodiscard]] QByteArray baseNameBytes() const;
    void setBaseName(const QString &name);
    /// True when the name was given: by setBaseName() or, for a virtual object, when it was made.
    [[nodiscard]] bool hasExplicitBaseName() const { return m_hasBaseName; }

    /// The name that the object gets in one filesystem: legal there and different from its siblings' names. The
    /// siblings that the filesystem holds are considered in the order of their names' bytes, as in an image; a call
    /// takes time for each of them. For DRAllFilesystems it is the base name. Names of ISO 9660 come without version
    /// and, where there is no extension, without a dot.
    [[nodiscard]] QString mangledNameForFilesystem(DRFilesystem filesystem) const;

    /// Properties by filesystem. A value set for DRAllFilesystems holds in each filesystem that has no own value, one
    /// set for DRISO9660 in both of its name levels. Setting an invalid value takes the property out.
    void setProperty(const QVariant &value, const QString &key, DRFilesystem filesystem);
    /// The value for the filesystem, falling back to DRAllFilesystems; invalid when there is none.
    [[nodiscard]] QVariant propertyForKey(const QString &key, DRFilesystem filesystem) const;
    [[nodiscard]] QVariantMap propertiesForFilesystem(DRFilesystem filesystem) const;

    /// The mask set for this object itself; 0 when none was set.
    [[nodiscard]] DRFilesystemMask explicitFilesystemMask() const { return m_explicitMask; }
    void setExplicitFilesystemMask(DRFilesystemMask mask) { m_explicitMask = mask; }
    /// The explicit mask, else the parent's effective mask, else all filesystems.
    [[nodiscard]] DRFilesystemMask effectiveFilesystemMask() const;

protected:
    DRFSObject(const FSRef &source, bool isVirtual);
    /// A virtual object with the given name.
    explicit DRFSObject(const QString &name);

private:
    friend class DRFolder;
    friend class DRFile;
    struct Rare; ///< names, properties and contents that few objects have

    Rare &rare();

    FSRef m_source;
    DRFolder *m_parent = nullptr; ///< cleared by the parent when it goes
    std::unique_ptr<Rare> m_rare;
    DRFilesystemMask m_explicitMask = 0;
    bool m_isVirtual = false;
    bool m_hasBaseName = false;
};

} // namespace Tessaron
