#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/ZelFileAttribute.h>

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>

class QDateTime;
class QImage;
class QUrl;

namespace Tessaron
{

/// A file or folder that goes into a disc project, or a virtual folder that exists in the project alone. It holds the
/// reference to the file, remembers for a while what the system says about it, and carries the name and the options
/// that the item is to have on the disc.
///
/// Answers of the system are kept: sizes and flags until a reset, names and kind for five seconds. Where there is no
/// text, a QString is null.
///
/// Not thread-safe: even getters may be called on one thread at a time only, since they fill the cache and drop values
/// older than five seconds from it.
///
/// A reference that has been asked nothing costs about 180 bytes, cached names and kind some 60 more.
class TESSARON_EXPORT KRFileReference
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    /// A reference that knows nothing yet. It does not look at the disk.
    [[nodiscard]] static std::shared_ptr<KRFileReference> initWithFSRef(const FSRef &ref);
    /// A reference that takes over the record with its buffers.
    [[nodiscard]] static std::shared_ptr<KRFileReference> initWithFSRef(const FSRef &ref,
                                                                        _ZelFileAttribute knownAttributes);
    /// The file at a path; a symbolic link at its end is not followed. Null for a null path and when nothing is there.
    /// Whether it is a folder is known from the start.
    [[nodiscard]] static std::shared_ptr<KRFileReference> initWithPath(const QString &path);
    [[nodiscard]] static std::shared_ptr<KRFileReference> initWithPath(const QString &path,
                                                                       _ZelFileAttribute knownAttributes);
    [[nodiscard]] static std::shared_ptr<KRFileReference> fileReferenceWithPath(const QString &path);
    [[nodiscard]] static std::shared_ptr<KRFileReference> fileReferenceWithPath(const QString &path,
                                                                                _ZelFileAttribute knownAttributes);
    /// A folder that exists on no disk; null for a null or empty name.
    [[nodiscard]] static std::shared_ptr<KRFileReference> initWithVirtualFolderName(const QString &name);
    [[nodiscard]] static std::shared_ptr<KRFileReference> virtualFolderWithName(const QString &name);

    /// For the factories only.
    KRFileReference(ConstructionKey, const FSRef &ref, _ZelFileAttribute &&known, bool isVirtual);
    ~KRFileReference();
    KRFileReference(const KRFileReference &) = delete;
    KRFileReference &operator=(const KRFileReference &) = delete;

    /// The name as the file manager shows it, without an extension that is to be hidden; null when the file is gone.
    /// For a virtual folder the name it was made with.
    [[nodiscard]] QString displayName();
    /// The last component of path(), null when there is no path; for a virtual folder the same as displayName().
    [[nodiscard]] QString name();
    /// Without the dot; null when the name has none, and for a virtual folder.
    [[nodiscard]] QString extension();
    /// The kind of file in the user's language, from the cache; null for a virtual folder.
    [[nodiscard]] QString displayKind();
    /// The kind of file in the user's language, asked anew; null when the file is gone. For a virtual folder the main
    /// bundle's text for the key "virtual folder".
    [[nodiscard]] QString kind();

    /// True for real and virtual folders.
    [[nodiscard]] bool isContainer();
    [[nodiscard]] bool isBundle();
    [[nodiscard]] bool isSymbolicLink();
    [[nodiscard]] bool isAlias();
    [[nodiscard]] bool isInvisible();
    [[nodiscard]] bool isExtensionHidden();
    [[nodiscard]] bool isVirtual() const { return m_isVirtual; }

    /// The object's own reference; the zero reference for a virtual folder. Never null.
    [[nodiscard]] const FSRef *fileRef() const { return &m_fileRef; }
    /// The path; null when the file is gone, when the path is longer than 1023 bytes (lastKnownPath() has longer ones),
    /// and for a virtual folder.
    [[nodiscard]] QString path();
    /// The path as a "file" URL; invalid where the file is gone, and for a virtual folder.
    [[nodiscard]] QUrl url() const;
    /// When the file was made; invalid when it is gone or its filesystem does not know. For a symbolic link, its own.
    [[nodiscard]] QDateTime creationDate() const;
    [[nodiscard]] QDateTime modificationDate() const;

    /// Allocated bytes of the file's forks; 0 for a folder and for a file that is gone.
    [[nodiscard]] std::uint64_t dataPhysicalSize();
    [[nodiscard]] std::uint64_t rsrcPhysicalSize();
    /// The sum of both.
    [[nodiscard]] std::uint64_t physicalSize();

    /// The reference in its persistent form; null when the file is gone.
    [[nodiscard]] QByteArray aliasData() const;

    /// 16×16. Null without an icon.
    [[nodiscard]] QImage smallIcon();
    /// In the largest size there is. Null without an icon.
    [[nodiscard]] QImage largeIcon();

    /// The object's own record, to be read and changed in place. Never null; lives as long as the reference.
    [[nodiscard]] _TessaronAttributes *tessaronAttributes() { return &m_tessaronAttributes; }
    [[nodiscard]] const _TessaronAttributes *tessaronAttributes() const { return &m_tessaronAttributes; }

    /// The name that the user wants the item to have on the disc; null when none was set.
    [[nodiscard]] QString desiredName() const;
    [[nodiscard]] bool hasDesiredName() const;
    /// Null takes the name away again. Always true.
    bool setDesiredName(const QString &name);
    /// True only when there is a desired name, the file has an extension, and the desired name's extension is another:
    /// the name was typed without it.
    [[nodiscard]] bool isExtensionHiddenIsDesiredName();
    /// The name for the disc. Virtual folder: the desired name, else its own. Otherwise, with `even` false: the desired
    /// name, else the display name, else the name. With `even` true: the desired name, with the file's extension
    /// appended where it was typed without it; null when there is no desired name.
    [[nodiscard]] QString desiredNameWithExtensionEvenIfHidden(bool even);

    /// Forgets names, kind, path and small icon. Keeps the large icon, the sizes and the flags.
    void resetAllGettableAttributes();
    /// Forgets everything cached. The name of a virtual folder is kept, since it is not a cached value.
    void resetAllAttributes();

private:
    struct Cache; ///< values that few references hold at a time
    struct GivenNames; ///< names that few references are given

    void _copyLSAttributes();
    void copyDisplayKind();
    void _copyCatAttributes();
    void _getIcon();
    void _getLargeIcon();

    Cache &cache();
    void adopt(_ZelFileAttribute &&record);
    void startAging();
    void dropWhatIsTooOld();
    [[nodiscard]] bool isFilled() const { return m_empty != 1; }
    [[nodiscard]] bool knownOrAsked(const char &flag);

    FSRef m_fileRef;
    _TessaronAttributes m_tessaronAttributes;
    std::unique_ptr<Cache> m_cache; ///< null while nothing is cached
    std::unique_ptr<GivenNames> m_givenNames; ///< null until a name is given
    // The members of a _ZelFileAttribute that are not buffers.
    std::uint64_t m_dataSize = 0;
    std::uint64_t m_rsrcSize = 0;
    char m_empty = 1;
    char m_directory = 2;
    char m_nameBeginsWithADot = 2;
    char m_dataSizeIsKnown = 1;
    char m_rsrcSizeIsKnown = 1;
    char m_bundle = 2;
    char m_symLink = 2;
    char m_alias = 2;
    char m_invisible = 2;
    char m_extensionHidden = 2;
    const bool m_isVirtual;
};

} // namespace Tessaron
