#include "fuzz/FuzzTarget.h"

#include "platform/coreservices/AliasRecord.h"
#include "platform/coreservices/IconFamily.h"
#include "platform/coreservices/MimeGlobs.h"
#include "platform/coreservices/Mounts.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/StringsTable.h"

#include <QImage>

/// The same bytes to every parser of foreign data that needs no more than bytes.
int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const QByteArray data(reinterpret_cast<const char *>(bytes), qsizetype(size));
    require(fileSystemRepresentation(stringWithFileSystemRepresentation(data)) == data, "a name comes back as it was");
    if (const auto record = aliasRecordFromData(data, AliasChecksum::Ignored)) {
        const auto again = aliasRecordFromData(aliasDataFromRecord(*record));
        require(again && again->path == record->path && again->inode == record->inode, "an alias reads the same");
    }
    for (const QImage &image : imagesFromIconFamily(data))
        require(!image.isNull() && image.width() <= 1024 && image.height() <= 1024, "an icon has a size of icons");
    (void)mountsFromText(data);
    (void)parseStringsTable(data);
    MimeGlobs globs;
    globs.addFile(data);
    (void)globs.typeOfName(data);
    return 0;
}
