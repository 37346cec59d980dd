#include "imaging/StagedFile.h"

#include "imaging/AbandonedEntries.h"
#include "imaging/EmergencyRemoval.h"

#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr qsizetype longestName = 255;
constexpr int nameAttempts = 100;

constexpr const char *variableLetters = "XXXXXX";
constexpr const char *temporaryEnd = ".part";

/// ".NAME.", with as much of the name as leaves room for the rest.
QByteArray temporaryBeginningFor(const QByteArray &finalName)
{
    const qsizetype others = 2 + qsizetype(std::strlen(variableLetters)) + qsizetype(std::strlen(temporaryEnd));
    return '.' + finalName.left(longestName - others) + '.';
}

QByteArray temporaryNameFor(const QByteArray &finalName)
{
    static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray variable(variableLetters);
    for (char &letter : variable)
        letter = letters[QRandomGenerator::system()->bounded(int(sizeof letters) - 1)];
    return temporaryBeginningFor(finalName) + variable + temporaryEnd;
}

QByteArray descriptorPath(int descriptor)
{
    return "/proc/self/fd/" + QByteArray::number(descriptor);
}

} // namespace

StagedFile::StagedFile(int folder, const QByteArray &folderPath, const QByteArray &finalName)
    : m_folder(folder)
    , m_folderPath(folderPath)
    , m_finalName(finalName)
{
}

StagedFile::~StagedFile()
{
    removeTemporaryName();
}

std::unique_ptr<StagedFile> StagedFile::create(int folder, const QByteArray &folderPath, const QByteArray &finalName,
                                               int *errnoValue, Naming naming)
{
    std::unique_ptr<StagedFile> result(new StagedFile(folder, folderPath, finalName));
    const bool isMade = (naming == Naming::NamelessIfPossible && result->createNameless()) || result->createHidden();
    if (isMade)
        return result;
    *errnoValue = errno;
    return nullptr;
}

void StagedFile::removeAbandoned(int folder, const QByteArray &finalName)
{
    const QByteArray beginning = temporaryBeginningFor(finalName);
    forEachAbandoned(
        folder, [&beginning](QByteArrayView name) { return isTemporaryName(name, beginning, temporaryEnd); },
        [folder](const QByteArray &name, int) { ::unlinkat(folder, name.constData(), 0); });
}

bool StagedFile::createNameless()
{
    UniqueDescriptor file(::openat(m_folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0666));
    // The writer opens the file by a path, and publishing links it by one: both need /proc.
    if (!file || ::access(descriptorPath(file.get()).constData(), W_OK) != 0)
        return false;
    m_file = std::move(file);
    // For the moment in which it has a temporary name.
    (void)::flock(m_file.get(), LOCK_EX | LOCK_NB);
    return hideFromOthers();
}

bool StagedFile::createHidden()
{
    for (int attempt = 0; attempt < nameAttempts; ++attempt) {
        const QByteArray name = temporaryNameFor(m_finalName);
        m_file.reset(::openat(m_folder, name.constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0666));
        if (!m_file && errno != EEXIST)
            return false;
        if (m_file && lockNewEntry(m_file.get())) {
            setTemporaryName(name);
            return hideFromOthers();
        }
    }
    return false;
}

/// The system has made the file as umask and the folder's own rules want it: that is what it will have in the end.
bool StagedFile::hideFromOthers()
{
    struct stat status;
    if (::fstat(m_file.get(), &status) != 0)
        return false;
    m_finalMode = status.st_mode & 07777;
    return ::fchmod(m_file.get(), 0600) == 0;
}

bool StagedFile::giveTemporaryName()
{
    if (!isNameless())
        return true;
    const QByteArray source = descriptorPath(m_file.get());
    for (int attempt = 0; attempt < nameAttempts; ++attempt) {
        const QByteArray name = temporaryNameFor(m_finalName);
        if (::linkat(AT_FDCWD, source.constData(), m_folder, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
            setTemporaryName(name);
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

void StagedFile::setTemporaryName(const QByteArray &name)
{
    m_temporaryName = name;
    m_emergencyNumber = noteForEmergencyRemoval(m_folder, name);
}

void StagedFile::forgetTemporaryName()
{
    forgetEmergencyRemoval(m_emergencyNumber);
    m_emergencyNumber = -1;
    m_temporaryName.clear();
}

void StagedFile::removeTemporaryName()
{
    if (isNameless())
        return;
    ::unlinkat(m_folder, m_temporaryName.constData(), 0);
    forgetTemporaryName();
}

QByteArray StagedFile::pathForWriting() const
{
    if (isNameless())
        return descriptorPath(m_file.get());
    return m_folderPath.endsWith('/') ? m_folderPath + m_temporaryName : m_folderPath + '/' + m_temporaryName;
}

/// Moves staged files to their final names and can take that back.
class Publisher
{
public:
    explicit Publisher(const std::vector<StagedFile *> &files)
        : m_files(files)
        , m_steps(files.size(), Step::Pending)
    {
    }

    int publish();

private:
    enum class Step : std::uint8_t {
        Pending,
        Created, ///< there was nothing under the final name
        Exchanged, ///< the older file has the temporary name now
        Replaced, ///< the older file is gone
    };

    [[nodiscard]] static mode_t finalModeOf(const StagedFile &file);
    bool prepare(StagedFile &file) const;
    bool place(const StagedFile &file, Step *step) const;
    void takeBack();

    const std::vector<StagedFile *> &m_files;
    std::vector<Step> m_steps;
};

/// A file that replaces one of the same owner gets its permissions, as if that one were written anew.
mode_t Publisher::finalModeOf(const StagedFile &file)
{
    struct stat older;
    struct stat own;
    const bool replaces = ::fstatat(file.m_folder, file.m_finalName.constData(), &older, AT_SYMLINK_NOFOLLOW) == 0
        && ::fstat(file.descriptor(), &own) == 0 && S_ISREG(older.st_mode) && older.st_uid == own.st_uid;
    return replaces ? older.st_mode & 0777 : file.m_finalMode;
}

bool Publisher::prepare(StagedFile &file) const
{
    if (::fchmod(file.descriptor(), finalModeOf(file)) != 0)
        return false;
    return file.giveTemporaryName();
}

bool Publisher::place(const StagedFile &file, Step *step) const
{
    const int folder = file.m_folder;
    const char *const from = file.m_temporaryName.constData();
    const char *const to = file.m_finalName.constData();
    if (m_files.size() > 1) {
        if (::renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0) {
            *step = Step::Created;
            return true;
        }
        struct stat status;
        const bool isFolder = ::fstatat(folder, to, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
        if (isFolder) { // exchanging would move it aside
            errno = EISDIR;
            return false;
        }
        if (::renameat2(folder, from, folder, to, RENAME_EXCHANGE) == 0) {
            *step = Step::Exchanged;
            return true;
        }
    }
    *step = Step::Replaced;
    return ::renameat(folder, from, folder, to) == 0;
}

void Publisher::takeBack()
{
    for (std::size_t index = 0; index < m_files.size(); ++index) {
        const StagedFile &file = *m_files[index];
        const char *const temporary = file.m_temporaryName.constData();
        const char *const final = file.m_finalName.constData();
        if (m_steps[index] == Step::Created)
            ::renameat(file.m_folder, final, file.m_folder, temporary);
        else if (m_steps[index] == Step::Exchanged)
            ::renameat2(file.m_folder, final, file.m_folder, temporary, RENAME_EXCHANGE);
    }
}

int Publisher::publish()
{
    for (StagedFile *const file : m_files) {
        if (!prepare(*file))
            return errno;
    }
    for (std::size_t index = 0; index < m_files.size(); ++index) {
        if (!place(*m_files[index], &m_steps[index])) {
            const int reason = errno;
            m_steps[index] = Step::Pending;
            takeBack();
            return reason;
        }
    }
    for (std::size_t index = 0; index < m_files.size(); ++index) {
        if (m_steps[index] == Step::Exchanged)
            m_files[index]->removeTemporaryName(); // the older file
        else
            m_files[index]->forgetTemporaryName();
    }
    return 0;
}

int publishTogether(const std::vector<StagedFile *> &files)
{
    return Publisher(files).publish();
}

namespace
{

/// Moves a name to one that is not taken; an `errno` value or 0.
int renameUnlessTaken(int folder, const char *from, const char *to)
{
    if (::renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A filesystem that cannot do that in one step may have links; where it has none either, the last look decides.
    if (::linkat(folder, from, folder, to, 0) == 0)
        return ::unlinkat(folder, from, 0) == 0 ? 0 : errno;
    if (errno == EEXIST)
        return EEXIST;
    struct stat status;
    if (::fstatat(folder, to, &status, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    return ::renameat(folder, from, folder, to) == 0 ? 0 : errno;
}

} // namespace

int publishUnlessTaken(StagedFile &file, const QByteArray &name, std::optional<mode_t> mode)
{
    // Whom the umask lets read, it lets execute.
    const mode_t allowed = file.m_finalMode | ((file.m_finalMode & 0444) >> 2);
    if (::fchmod(file.descriptor(), mode ? (*mode & allowed & 0777) | 0600 : file.m_finalMode) != 0)
        return errno;
    if (file.isNameless()) {
        const QByteArray source = descriptorPath(file.descriptor());
        return ::linkat(AT_FDCWD, source.constData(), file.m_folder, name.constData(), AT_SYMLINK_FOLLOW) == 0 ? 0
                                                                                                               : errno;
    }
    const int failure = renameUnlessTaken(file.m_folder, file.m_temporaryName.constData(), name.constData());
    if (failure == 0)
        file.forgetTemporaryName();
    return failure;
}

} // namespace Tessaron
