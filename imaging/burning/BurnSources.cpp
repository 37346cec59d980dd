#include "imaging/burning/BurnSources.h"

#include "platform/disctracks/DiscDescription.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

bool hasNameOfImage(const QByteArray &path)
{
    static constexpr std::array<const char *, 8> endings = {".iso", ".bin", ".img", ".vant",
                                                            ".udf", ".cdr", ".raw", ".cue"};
    const QByteArray name = path.toLower();
    return std::any_of(endings.begin(), endings.end(), [&name](const char *ending) { return name.endsWith(ending); })
        || discDescriptionKind(path) != DiscDescriptionKind::None;
}

QByteArray realPath(const QByteArray &path)
{
    std::array<char, PATH_MAX> buffer{};
    return ::realpath(path.constData(), buffer.data()) != nullptr ? QByteArray(buffer.data()) : QByteArray();
}

/// The real path of a file that need not be there yet.
QByteArray realPathOfOutput(const QByteArray &path)
{
    if (QByteArray there = realPath(path); !there.isEmpty())
        return there;
    const qsizetype slash = path.lastIndexOf('/');
    const QByteArray folder = realPath(slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : path.left(slash));
    return folder.isEmpty() ? QByteArray() : folder + '/' + path.mid(slash + 1);
}

NSError cannotBeImage(const QByteArray &path, const NSError &error)
{
    return discJobError(DiscJobErrorCode::Source, error.localizedDescription(), error.localizedRecoverySuggestion(),
                        path);
}

/// The files that an image lies in.
QList<QByteArray> filesOf(const BurnSources &sources)
{
    QList<QByteArray> files;
    for (const DiscSource &source : sources.sources)
        files << source.path;
    if (sources.image) {
        files << sources.image->description;
        for (const CueFile &file : sources.image->disc.files)
            files << file.path;
    }
    return files;
}

} // namespace

Result<BurnSources> burnSourcesAtPaths(const QList<QByteArray> &paths, const std::stop_token &stop)
{
    BurnSources result;
    Result<std::vector<DiscSource>> sources = discSourcesAtPaths(paths);
    if (!sources)
        return sources.error();
    if (NSError error = errorOfSourcesSideBySide(*sources))
        return error;
    result.sources = *std::move(sources);
    if (result.sources.size() != 1 || result.sources.front().isFolder)
        return result;
    const QByteArray &path = paths.front();
    const bool isNamed = hasNameOfImage(path);
    const Result<OpenedDiscImage> opened = openDiscImage(path);
    if (!opened)
        return isNamed ? Result<BurnSources>(cannotBeImage(path, opened.error())) : Result<BurnSources>(result);
    const bool hasVolumes = !opened->volumes.empty()
        || std::any_of(opened->parts.begin(), opened->parts.end(),
                       [](const DiscImagePart &part) { return !part.volumes.empty(); });
    if (!isNamed && !hasVolumes && opened->layout == DiscImageLayout::Blocks)
        return result;
    Result<DescribedDisc> described = describedDisc(path, stop);
    if (!described)
        return cannotBeImage(path, described.error());
    result.notes = described->notes;
    if (!hasVolumes && !described->isDescribed)
        result.notes
            << QStringLiteral("no filesystem was found in %1; its blocks are written as they are").arg(quoted(path));
    result.image = *std::move(described);
    result.sources.clear();
    return result;
}

NSError errorOfDriveAmongSources(const BurnSources &sources, const QByteArray &drive)
{
    constexpr char prefix[] = "stdio:";
    if (!drive.startsWith(prefix))
        return {};
    const QByteArray file = drive.mid(qsizetype(sizeof prefix) - 1);
    const QByteArray output = realPathOfOutput(file);
    for (const QByteArray &path : filesOf(sources)) {
        const QByteArray source = realPath(path);
        if (source.isEmpty() || output.isEmpty() || (output != source && !output.startsWith(source + '/')))
            continue;
        return discJobError(
            DiscJobErrorCode::Destination,
            output == source
                ? QStringLiteral("%1 is what is to be written, and would be written over").arg(quoted(file))
                : QStringLiteral("%1 lies in %2, which is to be written").arg(quoted(file), quoted(path)),
            QStringLiteral("Choose another place for it."), file);
    }
    return {};
}

} // namespace Tessaron
