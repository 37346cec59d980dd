#include "imaging/verification/FileExtractor.h"

#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr qsizetype longestName = 255;
constexpr int nameAttempts = 100'000;
constexpr std::size_t bufferSize = std::size_t(1) << 20;
constexpr std::size_t keptLines = 1000;

QByteArray joined(const QByteArray &folderPath, const QByteArray &name)
{
    return folderPath.isEmpty() ? name : folderPath + '/' + name;
}

/// Walks all folders that lead to what is chosen, and tells `chosen` of nothing else. What cannot be listed is told
/// wherever it is.
void walkSelection(const VolumeReader &reader, const PathSelection &selection, const VolumeWalker &chosen)
{
    std::vector<bool> isInside; // of each folder that is being walked
    VolumeWalker walker;
    walker.enterFolder = [&](const QByteArray &path, const VolumeObject &folder) {
        const bool isChosen =
            (!isInside.empty() && isInside.back()) || selection.isNamed(path) || selection.isEverything();
        if (isChosen ? !chosen.enterFolder(path, folder) : !selection.leadsOn(path))
            return false;
        isInside.push_back(isChosen);
        return true;
    };
    walker.object = [&](const QByteArray &folderPath, const VolumeObject &object) {
        if (isInside.back() || selection.isNamed(joined(folderPath, object.name)))
            return chosen.object(folderPath, object);
        return true;
    };
    walker.leaveFolder = [&](const QByteArray &path) {
        if (isInside.back())
            chosen.leaveFolder(path);
        isInside.pop_back();
    };
    walker.failed = chosen.failed;
    walkVolume(reader, walker);
}

std::uint64_t storedBytes(const VolumeObject &file)
{
    std::uint64_t bytes = 0;
    for (const VolumeExtent &extent : file.extents)
        bytes += extent.isHole ? 0 : extent.length;
    return bytes;
}

/// Cut to a number of bytes, but not within a character.
QByteArray shortened(const QByteArray &name, qsizetype most)
{
    if (name.size() <= most)
        return name;
    qsizetype end = most;
    while (end > 0 && (std::uint8_t(name[end]) & 0xC0) == 0x80)
        --end;
    return name.first(end == 0 ? most : end);
}

/// A name that a file of this system can have: images hold any bytes.
QByteArray usableName(const QByteArray &name)
{
    QByteArray usable = name;
    usable.replace('/', '_').replace('\0', '_');
    if (usable.isEmpty() || usable == "." || usable == "..")
        usable = QByteArray(std::max<qsizetype>(usable.size(), 1), '_');
    return usable;
}

/// "letter.txt", "letter 2.txt", "letter 3.txt" …
QByteArray numberedName(const QByteArray &name, bool isFolder, int number)
{
    constexpr qsizetype longestExtension = 16;
    const qsizetype dot = isFolder ? -1 : name.lastIndexOf('.');
    const bool hasExtension = dot > 0 && name.size() - dot <= longestExtension;
    QByteArray end = hasExtension ? name.mid(dot) : QByteArray();
    const QByteArray stem = hasExtension ? name.first(dot) : name;
    if (number > 1)
        end.prepend(' ' + QByteArray::number(number));
    return shortened(stem, longestName - end.size()) + end;
}

/// Nothing else can be written either.
bool isFatal(int errnoValue)
{
    return errnoValue == ENOSPC || errnoValue == EDQUOT || errnoValue == EROFS;
}

NSError writingError(const QByteArray &path, int errnoValue)
{
    const QString reason =
        errnoValue == EPERM ? QStringLiteral("the disk cannot hold this kind of object") : systemText(errnoValue);
    return discJobError(errnoValue == ENOSPC || errnoValue == EDQUOT ? DiscJobErrorCode::Space
                                                                     : DiscJobErrorCode::Destination,
                        QStringLiteral("%1 cannot be written: %2").arg(quoted(path), reason),
                        isLackOfDescriptors(errnoValue) ? adviceOnDescriptors() : QString(), path);
}

std::array<timespec, 2> timesOf(const VolumeObject &object)
{
    timespec modified = {};
    modified.tv_sec = object.modified->seconds;
    modified.tv_nsec = object.modified->nanoseconds;
    timespec accessed = {};
    accessed.tv_nsec = UTIME_OMIT;
    return {accessed, modified};
}

} // namespace

std::uint64_t bytesOfSelection(const VolumeReader &reader, PathSelection &selection, const std::stop_token &stop)
{
    std::uint64_t bytes = 0;
    VolumeWalker walker;
    walker.enterFolder = [&](const QByteArray &, const VolumeObject &) { return !stop.stop_requested(); };
    walker.object = [&](const QByteArray &folderPath, const VolumeObject &object) {
        if (!selection.isEverything())
            selection.noteFound(joined(folderPath, object.name));
        const std::uint64_t stored = storedBytes(object);
        bytes = stored > UINT64_MAX - bytes ? UINT64_MAX : bytes + stored;
        return !stop.stop_requested();
    };
    walker.leaveFolder = [](const QByteArray &) {};
    walker.failed = [&](const QByteArray &, const NSError &) { return !stop.stop_requested(); };
    walkSelection(reader, selection, walker);
    return bytes;
}

FileExtractor::FileExtractor(const VolumeReader &reader, const PathSelection &selection, int folder,
                             ExtractFilesResult &result)
    : m_reader(reader)
    , m_selection(selection)
    , m_folder(folder)
    , m_result(result)
    , m_buffer(bufferSize)
{
}

NSError FileExtractor::extract(const Progress &progress, const std::stop_token &stop)
{
    m_progress = progress;
    m_stop = stop;
    const auto goesOn = [this] { return !m_fatal && !m_stop.stop_requested(); };
    VolumeWalker walker;
    walker.enterFolder = [&](const QByteArray &path, const VolumeObject &folder) {
        return goesOn() && enterFolder(path, folder);
    };
    walker.object = [&](const QByteArray &folderPath, const VolumeObject &object) {
        if (goesOn() && object.kind != VolumeObjectKind::Folder)
            take(joined(folderPath, object.name), object);
        return goesOn();
    };
    walker.leaveFolder = [this](const QByteArray &) { leaveFolder(); };
    walker.failed = [&](const QByteArray &path, const NSError &error) {
        fail(path, error);
        return goesOn();
    };
    walkSelection(m_reader, m_selection, walker);
    while (!m_levels.empty()) // a walk that was ended leaves no folder
        leaveFolder();
    return m_fatal;
}

int FileExtractor::folderForNew() const
{
    return !m_levels.empty() && m_levels.back().folder ? m_levels.back().folder.get() : m_folder;
}

bool FileExtractor::enterFolder(const QByteArray &path, const VolumeObject &folder)
{
    if (!path.isEmpty())
        return makeFolder(path, folder);
    m_levels.push_back({UniqueDescriptor(), folder});
    return true;
}

/// Tries names until one is not taken: asking first would leave room for another program in between.
int FileExtractor::giveUnusedName(const QByteArray &path, const VolumeObject &object, const GiveName &give)
{
    const QByteArray usable = usableName(object.name);
    for (int number = 1; number <= nameAttempts; ++number) {
        const QByteArray name = numberedName(usable, object.kind == VolumeObjectKind::Folder, number);
        const int failure = give(name);
        if (failure == EEXIST)
            continue;
        if (failure == 0 && name != object.name) {
            ++m_result.renamingCount;
            if (m_result.renamings.size() < keptLines)
                m_result.renamings.push_back({path, name});
        }
        return failure;
    }
    return EEXIST;
}

bool FileExtractor::makeFolder(const QByteArray &path, const VolumeObject &folder)
{
    const int parent = folderForNew();
    UniqueDescriptor made;
    const int failure = giveUnusedName(path, folder, [&](const QByteArray &name) {
        if (::mkdirat(parent, name.constData(), 0777) != 0)
            return errno;
        made.reset(::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        return made ? 0 : errno == EEXIST ? EIO : errno;
    });
    if (failure != 0) {
        failWriting(path, failure);
        return false;
    }
    ++m_result.folders;
    m_progress(0);
    m_levels.push_back({std::move(made), folder});
    return true;
}

/// Dates and permissions come last: what is put into a folder changes the first and needs the second.
void FileExtractor::leaveFolder()
{
    const Level &level = m_levels.back();
    struct stat status;
    const int folder = level.folder.get();
    if (level.folder && level.object.mode && ::fstat(folder, &status) == 0)
        (void)::fchmod(folder, (*level.object.mode & status.st_mode & 0777) | 0700);
    if (level.folder && level.object.modified && ::futimens(folder, timesOf(level.object).data()) != 0)
        ++m_result.unsetTimes;
    m_levels.pop_back();
}

void FileExtractor::take(const QByteArray &path, const VolumeObject &object)
{
    switch (object.kind) {
    case VolumeObjectKind::File:
        takeFile(path, object);
        break;
    case VolumeObjectKind::SymbolicLink:
        takeLink(path, object);
        break;
    case VolumeObjectKind::Other:
        fail(path,
             discJobError(
                 DiscJobErrorCode::Source,
                 QStringLiteral("%1 is a named pipe, a socket or a device, which is not taken out").arg(quoted(path)),
                 {}, path));
        break;
    case VolumeObjectKind::Folder:
        break; // made when it is walked
    }
}

void FileExtractor::takeFile(const QByteArray &path, const VolumeObject &file)
{
    int failure = 0;
    const std::unique_ptr<StagedFile> staged = StagedFile::create(folderForNew(), {}, usableName(file.name), &failure);
    if (!staged) {
        failWriting(path, failure);
        return;
    }
    if (!fill(path, file, staged->descriptor()))
        return;
    if (file.modified && ::futimens(staged->descriptor(), timesOf(file).data()) != 0)
        ++m_result.unsetTimes;
    failure = giveUnusedName(path, file, [&](const QByteArray &name) {
        return publishUnlessTaken(*staged, name, file.mode ? std::optional<mode_t>(*file.mode) : std::nullopt);
    });
    if (failure != 0) {
        failWriting(path, failure);
        return;
    }
    ++m_result.files;
    m_result.bytes += file.size;
    m_progress(0);
}

/// False when the file is not whole.
bool FileExtractor::fill(const QByteArray &path, const VolumeObject &file, int descriptor)
{
    std::uint64_t place = 0; // in the file
    for (const VolumeExtent &extent : file.extents) {
        std::uint64_t done = 0;
        while (!extent.isHole && done < extent.length) {
            const std::size_t length = std::size_t(std::min<std::uint64_t>(m_buffer.size(), extent.length - done));
            if (m_stop.stop_requested())
                return false;
            if (const NSError error = m_reader.source().read(extent.offset + done, m_buffer.data(), length)) {
                fail(path, error);
                return false;
            }
            if (const int failure = writeFully(descriptor, m_buffer.data(), length)) {
                failWriting(path, failure);
                return false;
            }
            done += length;
            m_progress(length);
        }
        place += extent.length;
        // A hole stays one: an image may claim any size for it.
        if (extent.isHole
            && (::ftruncate(descriptor, off_t(place)) != 0 || ::lseek(descriptor, off_t(place), SEEK_SET) < 0)) {
            failWriting(path, errno);
            return false;
        }
    }
    return true;
}

void FileExtractor::takeLink(const QByteArray &path, const VolumeObject &link)
{
    if (link.linkTarget.isEmpty() || link.linkTarget.contains('\0')) {
        fail(path,
             discJobError(DiscJobErrorCode::Source,
                          QStringLiteral("%1 is a symbolic link that leads nowhere").arg(quoted(path)), {}, path));
        return;
    }
    const int folder = folderForNew();
    QByteArray given;
    const int failure = giveUnusedName(path, link, [&](const QByteArray &name) {
        given = name;
        return ::symlinkat(link.linkTarget.constData(), folder, name.constData()) == 0 ? 0 : errno;
    });
    if (failure != 0) {
        failWriting(path, failure);
        return;
    }
    if (link.modified && ::utimensat(folder, given.constData(), timesOf(link).data(), AT_SYMLINK_NOFOLLOW) != 0)
        ++m_result.unsetTimes;
    ++m_result.symbolicLinks;
    m_progress(0);
}

void FileExtractor::fail(const QByteArray &path, const NSError &error)
{
    ++m_result.failureCount;
    if (m_result.failures.size() < keptLines)
        m_result.failures.push_back({path, error});
}

void FileExtractor::failWriting(const QByteArray &path, int errnoValue)
{
    const NSError error = writingError(path, errnoValue);
    if (isFatal(errnoValue))
        m_fatal = error;
    else
        fail(path, error);
}

} // namespace Tessaron
