#include "platform/discrecording/objects/DRFilesystems.h"

namespace Tessaron
{

const QString DRInvisible = QStringLiteral("DRInvisible");
const QString DRMacFinderFlags = QStringLiteral("DRMacFinderFlags");
const QString DRMacFinderHideExtension = QStringLiteral("DRMacFinderHideExtension");
const QString DRPosixFileMode = QStringLiteral("DRPosixFileMode");
const QString DRPosixUID = QStringLiteral("DRPosixUID");
const QString DRPosixGID = QStringLiteral("DRPosixGID");
const QString DRCreationDate = QStringLiteral("DRCreationDate");
const QString DRContentModificationDate = QStringLiteral("DRContentModificationDate");
const QString DRAttributeModificationDate = QStringLiteral("DRAttributeModificationDate");
const QString DRAccessDate = QStringLiteral("DRAccessDate");

const QString DRISOLevel = QStringLiteral("DRISOLevel");
const QString DRRelocatesDeepFolders = QStringLiteral("DRRelocatesDeepFolders");
const QString DRVolumeSet = QStringLiteral("DRVolumeSet");
const QString DRPublisher = QStringLiteral("DRPublisher");
const QString DRDataPreparer = QStringLiteral("DRDataPreparer");
const QString DRApplicationIdentifier = QStringLiteral("DRApplicationIdentifier");
const QString DRSystemIdentifier = QStringLiteral("DRSystemIdentifier");
const QString DRVolumeCreationDate = QStringLiteral("DRVolumeCreationDate");

} // namespace Tessaron
