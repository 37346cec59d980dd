#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QString>

#include <memory>

class QImage;

namespace Tessaron
{

/// The icon of a file or a picture in all sizes, as the bytes of an 'icns' file. Immutable. The operations may be
/// called on any thread; only on the main thread of a program with windows are the icons those of the user's theme.
class TESSARON_EXPORT KRIconFamily
{
public:
    /// The icon that a file manager shows for the item: its own, else that of its type. Null when there is no such
    /// item.
    [[nodiscard]] static std::shared_ptr<KRIconFamily> initWithFSRef(const FSRef &ref);
    [[nodiscard]] static std::shared_ptr<KRIconFamily> iconFamilyForFSRef(const FSRef &ref);
    /// Also null when nothing is at the path. A symbolic link at its end is followed.
    [[nodiscard]] static std::shared_ptr<KRIconFamily> iconFamilyForFile(const QString &path);

    /// The picture as an icon: it is given to a new file "myicon%d" in the temporary folder as the file's own icon, and
    /// read back from there. The file stays. Null for a null picture and when the icon cannot be set.
    [[nodiscard]] static std::shared_ptr<KRIconFamily> initWithImage(const QImage &image);
    [[nodiscard]] static std::shared_ptr<KRIconFamily> iconFamilyForImage(const QImage &image);

    /// Never empty.
    [[nodiscard]] QByteArray data() const { return m_data; }

    /// Writes the bytes to the path, not atomically. False when there are no bytes or the file cannot be written.
    [[nodiscard]] bool writeToFile(const QString &path) const;

private:
    explicit KRIconFamily(const QByteArray &data);

    const QByteArray m_data;
};

} // namespace Tessaron
