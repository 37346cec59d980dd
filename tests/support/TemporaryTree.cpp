#include "tests/support/TemporaryTree.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <time.h>
#include <utility>

namespace Tessaron::Testing
{

namespace
{

void expectSuccess(bool succeeded, const char *operation, const QByteArray &path)
{
    EXPECT_TRUE(succeeded) << operation << " " << path.constData() << ": " << std::strerror(errno);
}

using BirthTime = std::pair<std::int64_t, std::int64_t>;

/// What the system gives to a file that is made now.
BirthTime birthTimeNow()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return {time.tv_sec, time.tv_nsec};
}

void waitUntilPast(BirthTime time)
{
    while (birthTimeNow() <= time)
        std::this_thread::sleep_for(std::chrono::microseconds(500));
}

} // namespace

TemporaryTree::TemporaryTree() = default;

TemporaryTree::TemporaryTree(const QString &parentFolder)
    : m_folder(parentFolder + QStringLiteral("/tessaron-test-XXXXXX"))
{
}

TemporaryTree::~TemporaryTree()
{
    // QTemporaryDir cannot remove names that are not UTF-8.
    m_folder.setAutoRemove(false);
    std::error_code ignored;
    std::filesystem::remove_all(path().toStdString(), ignored);
}

QByteArray TemporaryTree::path(const QByteArray &relative) const
{
    const QByteArray root = fileSystemRepresentation(m_folder.path());
    return relative.isEmpty() ? root : root + '/' + relative;
}

QString TemporaryTree::pathText(const QByteArray &relative) const
{
    return stringWithFileSystemRepresentation(path(relative));
}

void TemporaryTree::makeParents(const QByteArray &relative) const
{
    for (qsizetype slash = relative.indexOf('/'); slash > 0; slash = relative.indexOf('/', slash + 1))
        ::mkdir(path(relative.left(slash)).constData(), 0755);
}

QByteArray TemporaryTree::makeFolder(const QByteArray &relative) const
{
    makeParents(relative);
    QByteArray result = path(relative);
    expectSuccess(::mkdir(result.constData(), 0755) == 0 || errno == EEXIST, "mkdir", result);
    return result;
}

QByteArray TemporaryTree::makeFile(const QByteArray &relative, const QByteArray &contents) const
{
    makeParents(relative);
    QByteArray result = path(relative);
    const UniqueDescriptor file(::open(result.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    expectSuccess(file.isValid()
                      && ::write(file.get(), contents.constData(), size_t(contents.size())) == contents.size(),
                  "write", result);
    return result;
}

QByteArray TemporaryTree::makeSymbolicLink(const QByteArray &relative, const QByteArray &target) const
{
    makeParents(relative);
    QByteArray result = path(relative);
    expectSuccess(::symlink(target.constData(), result.constData()) == 0, "symlink", result);
    return result;
}

QByteArray TemporaryTree::makeHardLink(const QByteArray &relative, const QByteArray &existing) const
{
    makeParents(relative);
    QByteArray result = path(relative);
    expectSuccess(::link(path(existing).constData(), result.constData()) == 0, "link", result);
    return result;
}

QByteArray TemporaryTree::makeFifo(const QByteArray &relative) const
{
    makeParents(relative);
    QByteArray result = path(relative);
    expectSuccess(::mkfifo(result.constData(), 0644) == 0, "mkfifo", result);
    return result;
}

QByteArray TemporaryTree::makeSparseFile(const QByteArray &relative, qint64 size) const
{
    QByteArray result = makeFile(relative);
    expectSuccess(::truncate(result.constData(), size) == 0, "truncate", result);
    return result;
}

void TemporaryTree::letBirthTimesPass()
{
    waitUntilPast(birthTimeNow());
}

void TemporaryTree::remove(const QByteArray &relative) const
{
    const QByteArray target = path(relative);
    struct statx facts = {};
    if (::statx(AT_FDCWD, target.constData(), AT_SYMLINK_NOFOLLOW, STATX_BTIME, &facts) == 0)
        waitUntilPast({facts.stx_btime.tv_sec, facts.stx_btime.tv_nsec});
    expectSuccess(std::remove(target.constData()) == 0, "remove", target);
}

void TemporaryTree::setModificationTime(const QByteArray &relative, qint64 secondsSinceEpoch) const
{
    const QByteArray target = path(relative);
    const timespec times[2] = {{0, UTIME_OMIT}, {time_t(secondsSinceEpoch), 0}};
    expectSuccess(::utimensat(AT_FDCWD, target.constData(), times, AT_SYMLINK_NOFOLLOW) == 0, "utimensat", target);
}

void TemporaryTree::setMode(const QByteArray &relative, unsigned int mode) const
{
    const QByteArray target = path(relative);
    expectSuccess(::chmod(target.constData(), mode) == 0, "chmod", target);
}

void TemporaryTree::setExtendedAttribute(const QByteArray &relative, const QByteArray &name,
                                         const QByteArray &value) const
{
    const QByteArray target = path(relative);
    expectSuccess(::lsetxattr(target.constData(), name.constData(), value.constData(), size_t(value.size()), 0) == 0,
                  "setxattr", target);
}

QByteArray TemporaryTree::contents(const QByteArray &relative) const
{
    const QByteArray source = path(relative);
    const UniqueDescriptor file(::open(source.constData(), O_RDONLY | O_CLOEXEC));
    expectSuccess(file.isValid(), "open", source);
    QByteArray result;
    char buffer[65536];
    for (ssize_t got = 0; (got = ::read(file.get(), buffer, sizeof buffer)) > 0;)
        result.append(buffer, got);
    return result;
}

bool TemporaryTree::exists(const QByteArray &relative) const
{
    struct stat status;
    return ::lstat(path(relative).constData(), &status) == 0;
}

WithoutRootRights::WithoutRootRights()
    : m_wasRoot(::geteuid() == 0)
{
    if (m_wasRoot) {
        constexpr uid_t nobody = 65534;
        EXPECT_EQ(::seteuid(nobody), 0);
    }
}

WithoutRootRights::~WithoutRootRights()
{
    if (m_wasRoot) {
        EXPECT_EQ(::seteuid(0), 0);
    }
}

} // namespace Tessaron::Testing
