#pragma once

#include "platform/discrecording/objects/DRFSObject.h"
#include "platform/discrecording/objects/DRFile.h"

#include <QByteArray>
#include <QVariant>

#include <memory>
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
    std::unique_ptr<const DRRecordedObject> recorded; ///< null unless it lies on the disc already
    std::vector<Property> properties; ///< a handful at most, so searching beats a map
};

} // namespace Tessaron
