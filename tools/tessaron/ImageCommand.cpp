#include "tools/tessaron/ImageCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/ImageReport.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VantTrailer.h"
#include <TessaronClasses/CueSheets.h>
#include <TessaronClasses/DiscNames.h>

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

/// How often progress is fetched; the display limits itself further.
constexpr std::chrono::milliseconds progressInterval(50);

/// A name without its extension, unless it is all extension.
QByteArray withoutExtension(const QByteArray &name)
{
    const qsizetype dot = name.lastIndexOf('.');
    return dot > 0 ? name.left(dot) : name;
}

} // namespace

ImageCommand::ImageCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_start(std::chrono::steady_clock::now())
    , m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
{
}

ImageCommand::~ImageCommand() = default;

ExitStatus ImageCommand::run()
{
    m_signalWatcher = std::make_unique<SignalWatcher>([this] {
        if (m_maker)
            m_maker->interrupt();
    });
    m_outcome.problem = prepare();
    if (!m_outcome.problem)
        makeImage();
    if (!m_outcome.problem)
        m_outcome.problem = publish();
    // What is not published goes before anybody is told, so that a script finds the place as it was.
    m_image.reset();
    m_cueSheet.reset();
    return report();
}

/// Who sets the variable wants reproducible bytes: a value that means nothing must not pass in silence.
Problem ImageCommand::checkEnvironment()
{
    const QByteArray value = qgetenv("SOURCE_DATE_EPOCH");
    bool isNumber = value.isEmpty();
    (void)(isNumber ? 0 : value.toLongLong(&isNumber));
    if (isNumber)
        return {};
    return {Problem::Kind::Usage,
            QStringLiteral("SOURCE_DATE_EPOCH is %1, which is no number of seconds").arg(quoted(value)),
            QStringLiteral("Set it to the seconds since 1970, or unset it."),
            {}};
}

Problem ImageCommand::prepare()
{
    if (Problem problem = checkEnvironment())
        return problem;
    if (Problem problem = inspectSources(m_arguments.paths, &m_sources))
        return problem;
    if (Problem problem = checkSideBySide(m_sources))
        return problem;
    if (Problem problem = openDestination(m_arguments.output, m_arguments.format, &m_destination))
        return problem;
    if (Problem problem = checkOutside(m_destination, m_sources))
        return problem;
    return stageFiles();
}

Problem ImageCommand::stageFiles()
{
    int reason = 0;
    const int folder = m_destination.folder.get();
    const QByteArray &folderPath = m_destination.folderPath;
    m_image = StagedFile::create(folder, folderPath, m_destination.name, &reason);
    if (m_image && !m_destination.cueName.isEmpty())
        m_cueSheet = StagedFile::create(folder, folderPath, m_destination.cueName, &reason);
    if (m_image && (m_cueSheet || m_destination.cueName.isEmpty()))
        return {};
    return {
        Problem::Kind::Destination,
        QStringLiteral("no file can be made in the output's folder %1: %2").arg(quoted(folderPath), systemText(reason)),
        QStringLiteral("Choose another place for the output."), folderPath};
}

/// True when a player will take the disc for DVD-Video.
bool ImageCommand::isDvdVideo() const
{
    const QByteArray folderName = QByteArrayLiteral("VIDEO_TS");
    struct stat status;
    if (m_sources.size() == 1 && m_sources.front().isFolder)
        return ::lstat((m_sources.front().path + '/' + folderName).constData(), &status) == 0
            && S_ISDIR(status.st_mode);
    return std::any_of(m_sources.begin(), m_sources.end(),
                       [&folderName](const Source &source) { return source.isFolder && source.name == folderName; });
}

QString ImageCommand::volumeName() const
{
    if (!m_arguments.volumeName.isEmpty())
        return m_arguments.volumeName;
    const bool isOneFolder = m_sources.size() == 1 && m_sources.front().isFolder && m_sources.front().name != "/";
    return stringWithFileSystemRepresentation(isOneFolder ? m_sources.front().name
                                                          : withoutExtension(m_destination.name));
}

void ImageCommand::makeImage()
{
    ImageOrder order;
    order.sources = m_sources;
    order.rootIsOnlySource = m_sources.size() == 1 && m_sources.front().isFolder;
    m_volumeName = volumeName();
    if (isDvdVideo())
        m_volumeName = dvdName(m_volumeName);
    order.volumeName = m_volumeName;
    order.filesystems = m_arguments.filesystems;
    order.isStrict = m_arguments.strict;
    order.path = m_image->pathForWriting();
    order.descriptor = m_image->descriptor();

    m_maker = std::make_unique<ImageMaker>(std::move(order));
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        m_maker->lookAhead();
        m_display->update(m_maker->progress());
    });
    timer.start(progressInterval);
    m_display->update(m_maker->progress());
    m_maker->start([&loop] { loop.quit(); });
    loop.exec();
    m_outcome = m_maker->outcome();
    m_maker.reset();
    nameImageInProblem();
}

/// The image's errors name the staged file, which means nothing to people: they know the file by its final name.
void ImageCommand::nameImageInProblem()
{
    const QByteArray finalPath = m_destination.path;
    for (const QByteArray &stagedPath : {m_image->pathForTheSystem(), m_image->pathForWriting()}) {
        m_outcome.problem.message.replace(stringWithFileSystemRepresentation(stagedPath),
                                          stringWithFileSystemRepresentation(finalPath));
        if (m_outcome.problem.path == stagedPath)
            m_outcome.problem.path = finalPath;
    }
}

Problem ImageCommand::checkLength() const
{
    struct stat status;
    if (::fstat(m_image->descriptor(), &status) == 0 && std::uint64_t(status.st_size) == m_outcome.bytes)
        return {};
    return {Problem::Kind::Write,
            QStringLiteral("the image has another length than it must have; something else wrote to it"),
            {},
            m_destination.path};
}

Problem ImageCommand::writeCueSheet() const
{
    const QString sheet = standardCueSheetForFile(stringWithFileSystemRepresentation(m_destination.path));
    // The name stands in the sheet as the bytes that it has on disk.
    if (writeAll(m_cueSheet->descriptor(), fileSystemRepresentation(sheet)))
        return {};
    return {Problem::Kind::Write,
            QStringLiteral("the cue sheet cannot be written: %1").arg(systemText(errno)),
            {},
            m_destination.cueName};
}

Problem ImageCommand::appendTrailer()
{
    const QByteArray trailer = vantTrailerForImage(m_outcome.bytes);
    if (::lseek(m_image->descriptor(), 0, SEEK_END) >= 0 && writeAll(m_image->descriptor(), trailer)) {
        m_outcome.bytes += std::uint64_t(trailer.size());
        return {};
    }
    return {
        Problem::Kind::Write,
        QStringLiteral("the description of the tracks cannot be written behind the image: %1").arg(systemText(errno)),
        {},
        m_destination.path};
}

Problem ImageCommand::publish()
{
    if (m_signalWatcher->isInterrupted())
        return interruption();
    if (Problem problem = checkLength())
        return problem;
    if (m_arguments.format == ImageFormat::Vant) {
        if (Problem problem = appendTrailer())
            return problem;
    }
    std::vector<StagedFile *> files = {m_image.get()};
    if (m_cueSheet) {
        if (Problem problem = writeCueSheet())
            return problem;
        files.push_back(m_cueSheet.get());
    }
    const int reason = publishTogether(files);
    if (reason == 0)
        return {};
    return {Problem::Kind::Destination,
            QStringLiteral("the image is made, but cannot get its name %1: %2")
                .arg(quoted(m_destination.path), systemText(reason)),
            QStringLiteral("Choose another place for the output."), m_destination.path};
}

ExitStatus ImageCommand::report()
{
    if (!m_outcome.problem) {
        ProgressState done;
        done.phase = ProgressState::Phase::Done;
        done.files = m_outcome.files;
        done.folders = m_outcome.folders;
        done.bytesWritten = m_outcome.bytes;
        done.bytesTotal = m_outcome.bytes;
        m_display->update(done);
    }
    m_display->clear();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    const bool isNameChanged = !m_outcome.problem && !m_arguments.volumeName.isEmpty()
        && m_volumeName != m_arguments.volumeName && m_arguments.verbosity != Verbosity::Quiet;
    if (isNameChanged)
        printDiagnostic(QStringLiteral("the volume is named “%1”, since it holds DVD-Video").arg(m_volumeName));
    printImageReport(m_arguments, m_outcome, time.count());
    if (!m_arguments.json)
        return exitStatusFor(m_outcome);
    const QByteArray cuePath = m_destination.cueName.isEmpty()
        ? QByteArray()
        : m_destination.path.left(m_destination.path.lastIndexOf('/') + 1) + m_destination.cueName;
    const QByteArray output = m_destination.path.isEmpty() ? m_arguments.output : m_destination.path;
    if (writeImageJson(m_arguments, output, cuePath, m_volumeName, m_outcome, time.count()))
        return exitStatusFor(m_outcome);
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

} // namespace Tessaron::Tool
