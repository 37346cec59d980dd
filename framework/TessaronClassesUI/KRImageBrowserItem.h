#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace Tessaron
{

class KRFileReference;

/// The kind of an image that is given as the path of a file.
TESSARON_EXPORT extern const QString IKImageBrowserPathRepresentationType;

/// A picture in an image browser. KRImageBrowserModel shows a list of them. On the main thread.
class TESSARON_EXPORT KRImageBrowserItem
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    /// The picture in the file at a path. Null for a null path and when nothing is there. The file is not read.
    [[nodiscard]] static std::shared_ptr<KRImageBrowserItem> initWithPath(const QString &path);

    /// For the factory only.
    KRImageBrowserItem(ConstructionKey, std::shared_ptr<KRFileReference> fileRef);

    /// A null name takes the present one away.
    void setName(const QString &name) { m_name = name; }
    /// The name, or the display name of the file while no name is set; null once the file is gone as well.
    [[nodiscard]] QString imageTitle() const;
    /// A number in text that no other item of this process has.
    [[nodiscard]] QString imageUID() const;
    [[nodiscard]] QString imageRepresentationType() const { return IKImageBrowserPathRepresentationType; }
    /// The path of the file, which follows it when it is moved, within the five seconds for which a KRFileReference
    /// keeps names; null once it is gone.
    [[nodiscard]] QString imageRepresentation() const;

    /// A copy of the picture as JPEG that the client has made for the browser. The item does not look after the file.
    [[nodiscard]] QString temporaryConvertedJpegPath() const { return m_temporaryConvertedJpegPath; }
    void setTemporaryConvertedJpegPath(const QString &path) { m_temporaryConvertedJpegPath = path; }
    /// The client has taken the picture from a library of photographs.
    [[nodiscard]] bool comesFromiPhoto() const { return m_comesFromiPhoto; }
    void setComesFromiPhoto(bool comes) { m_comesFromiPhoto = comes; }

private:
    const std::shared_ptr<KRFileReference> m_fileRef;
    const std::uint32_t m_identifier;
    QString m_name;
    QString m_temporaryConvertedJpegPath;
    bool m_comesFromiPhoto = false;
};

} // namespace Tessaron
