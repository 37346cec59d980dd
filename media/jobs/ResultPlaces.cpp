#include "media/jobs/ResultPlaces.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRAudioConverter.h>
#include <TessaronClasses/PathHelpers.h>

#include <QDir>

#include <utility>

namespace Tessaron
{

bool isMP3Format(std::int32_t format)
{
    return format != KRAudioConverter::waveFormat && format != KRAudioConverter::aiffFormat;
}

ResultPlaces::ResultPlaces(QByteArray destination, bool isFlat, std::int32_t format)
    : m_destination(std::move(destination))
    , m_isFlat(isFlat)
    , m_format(format)
{
}

NSError ResultPlaces::makeDestination()
{
    const int reason = m_folders.make(m_destination);
    if (reason == 0)
        return {};
    return discJobError(
        DiscJobErrorCode::Destination,
        QStringLiteral("the folder %1 cannot be made: %2").arg(quoted(m_destination), systemText(reason)),
        QStringLiteral("Name another folder, or make it first."), m_destination);
}

QByteArray ResultPlaces::nameOfResult(const QByteArray &source) const
{
    QByteArray name = lastPathComponent(source).toByteArray();
    if (const qsizetype dot = name.lastIndexOf('.'); dot > 0)
        name.truncate(dot);
    if (isMP3Format(m_format))
        return name + ".mp3";
    return name + (m_format == KRAudioConverter::waveFormat ? ".wav" : ".aiff");
}

Result<std::unique_ptr<StagedResult>> ResultPlaces::placeFor(const FoundMediaFile &file)
{
    QByteArray folder =
        fileSystemRepresentation(QDir(stringWithFileSystemRepresentation(m_destination)).absolutePath());
    if (!file.folder.isEmpty() && !m_isFlat)
        folder = childPath(folder, file.folder);
    const QString wanted = stringWithFileSystemRepresentation(childPath(folder, nameOfResult(file.path)));
    const QString path = unusedName(wanted, [this](const QString &one) { return m_promisedPaths.contains(one); });
    m_promisedPaths.insert(path);
    if (m_foldersWithoutRemains.insert(folder).second)
        StagedResult::removeAbandoned(folder);
    return StagedResult::create(fileSystemRepresentation(path), m_folders);
}

} // namespace Tessaron
