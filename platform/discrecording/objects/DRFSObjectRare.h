#pragma once

#include "platform/discrecording/objects/DRFSObject.h"

#include <QByteArray>
#include <QVariant>

#include <vector>

namespace Tessaron
{

/// What few objects of a layout have.
struct DRFSObject::Rare {
    struct Property {
        QString key;
        QVariant value;
        DRFilesystem filesystem = DRAllFilesystems;
    };

    QByteArray baseName; ///< valid when m_hasBaseName is set
    QByteArray contents; ///< of a virtual file
    std::vector<Property> properties; ///< a handful at most, so searching beats a map
};

} // namespace Tessaron
