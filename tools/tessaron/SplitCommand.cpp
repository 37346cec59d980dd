#include "tools/tessaron/SplitCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/ImageReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

SplitCommand::SplitCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus SplitCommand::run()
{
    work();
    const double seconds = m_run.seconds();
    printUnreadable(m_scan.unreadable);
    printEnd();
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), status());
}

void SplitCommand::work()
{
    const std::shared_ptr<KRFileHierarchyItem> tree = scannedTree();
    if (!m_problem)
        split(tree);
    for (std::size_t disc = 0; disc < m_split.discs.size() && !m_problem; ++disc)
        makeImage(m_split.discs[disc], disc + 1);
}

/// The root of the disc: the only folder, or one that holds all that was named.
std::shared_ptr<KRFileHierarchyItem> SplitCommand::scannedTree()
{
    const Result<std::vector<DiscSource>> sources = discSourcesAtPaths(m_arguments.paths);
    m_problem = problemOf(sources ? errorOfSourcesSideBySide(*sources) : sources.error());
    if (m_problem)
        return nullptr;
    ScanJob job(m_arguments.paths);
    m_scan = m_run.resultOf(job);
    m_problem = problemOf(m_scan.error);
    if (m_problem)
        return nullptr;
    if (sources->size() == 1 && sources->front().isFolder)
        return m_scan.sources.front().tree;
    std::shared_ptr<KRFileHierarchyItem> root =
        KRFileHierarchyItem::initWithFileReference(KRFileReference::virtualFolderWithName(volumeName()));
    for (std::size_t index = 0; index < sources->size(); ++index) {
        const DiscSource &source = (*sources)[index];
        // A link has its own name, not that of what it leads to.
        if (source.name != lastComponent(source.path))
            m_scan.sources[index].tree->fileReference()->setDesiredName(
                stringWithFileSystemRepresentation(source.name));
        root->addItem(m_scan.sources[index].tree);
    }
    return root;
}

/// A file that no disc holds is found before anything is written.
void SplitCommand::split(const std::shared_ptr<KRFileHierarchyItem> &tree)
{
    DiscSplitOrder order;
    order.tree = tree;
    order.capacity = m_arguments.splitCapacity;
    order.volumeName = volumeName();
    order.filesystems = m_arguments.filesystems;
    order.relocatesDeepFolders = m_arguments.relocatesDeepFolders;
    DiscSplitJob job(order);
    m_split = m_run.resultOf(job);
    m_problem = problemOf(m_split.error);
    if (m_problem || m_split.tooLarge.empty())
        return;
    for (const DiscSplitResult::TooLargeFile &file : m_split.tooLarge)
        printDiagnostic(QStringLiteral("%1 takes %2").arg(file.path, sizeText(file.bytes)));
    m_problem = {Problem::Kind::NotStored,
                 QStringLiteral("%1 for discs of %2")
                     .arg(counted(m_split.tooLarge.size(), "file is too large", "files are too large"),
                          sizeText(m_arguments.splitCapacity)),
                 QStringLiteral("Name larger discs, or leave these files out: no file is cut."),
                 fileSystemRepresentation(m_split.tooLarge.front().path)};
}

void SplitCommand::makeImage(const DiscShare &disc, std::size_t number)
{
    Arguments arguments = m_arguments; // what reports on an image speak of
    arguments.output = outputOf(number);
    arguments.volumeName = m_arguments.volumeName.isEmpty() ? QString() : disc.volumeName;
    DiscImageOrder order;
    order.tree = disc.tree;
    order.output = arguments.output;
    order.format = m_arguments.format;
    order.volumeName = disc.volumeName;
    order.filesystems = m_arguments.filesystems;
    order.relocatesDeepFolders = m_arguments.relocatesDeepFolders;
    order.isStrict = m_arguments.strict;
    order.isSynchronized = m_arguments.isSynchronized;
    DiscImageJob job(order);
    DiscImageResult result = m_run.resultOf(job);
    // Only a name that was given can be lost.
    result.isVolumeNameLost = result.isVolumeNameLost && !m_arguments.volumeName.isEmpty();
    m_problem = problemOf(result.error);
    printImageReport(arguments, result, m_problem, m_run.seconds());
    if (!m_problem)
        m_images.push_back(std::move(result));
}

/// "photos-1.iso" for "photos.iso".
QByteArray SplitCommand::outputOf(std::size_t number) const
{
    const QByteArray &output = m_arguments.output;
    const qsizetype name = output.lastIndexOf('/') + 1;
    const qsizetype dot = output.lastIndexOf('.');
    const qsizetype end = dot > name ? dot : output.size();
    return output.first(end) + '-' + QByteArray::number(number) + output.mid(end);
}

QString SplitCommand::volumeName() const
{
    if (!m_arguments.volumeName.isEmpty())
        return m_arguments.volumeName;
    const QByteArray output = lastComponent(m_arguments.output);
    const qsizetype dot = output.lastIndexOf('.');
    const QByteArray name = m_arguments.paths.size() == 1 ? lastComponent(m_arguments.paths.first()) : QByteArray();
    const bool isName = !name.isEmpty() && name != "." && name != ".." && name != "/";
    return stringWithFileSystemRepresentation(isName ? name : dot > 0 ? output.first(dot) : output);
}

ExitStatus SplitCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    const bool isComplete = m_scan.unreadable.empty()
        && std::ranges::all_of(m_images, [](const DiscImageResult &image) { return image.isComplete(); });
    return isComplete ? ExitStatus::Done : ExitStatus::Incomplete;
}

void SplitCommand::printEnd() const
{
    // That of an image has been told with the image.
    const bool isOfAnImage = !m_split.discs.empty() && m_split.tooLarge.empty() && !m_split.error;
    if (m_problem && !isOfAnImage)
        printProblem(m_problem);
    if (m_problem && !m_images.empty())
        printDiagnostic(
            counted(m_images.size(), "image was made before and stays", "images were made before and stay"));
    else if (!m_problem && m_arguments.verbosity != Verbosity::Quiet)
        printDiagnostic(QStringLiteral("made %1 for discs of %2")
                            .arg(counted(m_images.size(), "image", "images"), sizeText(m_arguments.splitCapacity)));
}

bool SplitCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("image"), status());
    writer.pathMember("output", m_arguments.output);
    writer.member("format", nameOfDiscFormat(m_arguments.format));
    writer.member("capacity", m_arguments.splitCapacity);
    writer.key("images");
    writer.beginArray();
    for (std::size_t index = 0; index < m_images.size(); ++index) {
        const DiscImageResult &image = m_images[index];
        writer.beginObject();
        writer.pathMember("output", image.imagePath);
        if (!image.cueSheetPath.isEmpty())
            writer.pathMember("cueSheet", image.cueSheetPath);
        writer.member("volumeName", image.volumeName);
        writer.member("bytes", image.bytes);
        writer.member("files", image.files);
        writer.member("folders", image.folders);
        writer.textsMember("paths", m_split.discs[index].paths);
        writeStorageMembers(writer, image);
        writer.endObject();
    }
    writer.endArray();
    writer.key("tooLarge");
    writer.beginArray();
    for (const DiscSplitResult::TooLargeFile &file : m_split.tooLarge) {
        writer.beginObject();
        writer.pathMember("path", fileSystemRepresentation(file.path));
        writer.member("bytes", file.bytes);
        writer.endObject();
    }
    writer.endArray();
    writeUnreadableMember(writer, m_scan.unreadable);
    writer.key("seconds");
    writer.value(seconds, 3);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
