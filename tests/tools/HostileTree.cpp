#include "tests/tools/HostileTree.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr std::size_t longestName = 255;

/// Runs of characters that some filesystem changes, or takes for the same as another.
const char *const awkwardPieces[] = {
    "*",
    "?",
    ":",
    ";",
    "\\",
    "<",
    ">",
    "|",
    "\"",
    "'",
    "\x01",
    "\x07",
    "\t",
    "\n",
    "\r",
    "\x1b[2J",
    "\x7f",
    "\xff",
    "\xe4",
    "\x80",
    "\xc3",
    " ",
    ".",
    "..",
    "_",
    "__",
    "_1",
    "~1",
    ";1",
    "%",
    "$",
    "\xc3\xa9" /* é */,
    "e\xcc\x81",
    "\xe2\x84\xab" /* ångström */,
    "A\xcc\x8a",
    "\xc3\x85",
    "\xe2\x84\xa6" /* ohm */,
    "\xce\xa9",
    "\xea\xb0\x81" /* Hangul */,
    "\xe1\x84\x80\xe1\x85\xa1\xe1\x86\xa8",
    "\xc7\x96",
    "u\xcc\x88\xcc\x84",
    "\xef\xac\x81" /* fi */,
    "\xef\xa4\x80",
    "\xe8\xb1\x88",
    "\xf0\x9f\x98\x80",
    "\xf0\x9d\x85\x9e",
    "\xe2\x80\x8c",
    "\xe2\x80\xae",
    "\xef\xbb\xbf",
    "\xef\xbf\xbe",
    "\xef\xbf\xbf",
    "\xef\xbf\xbd",
    "\xc4\xb0",
    "\xc4\xb1",
    "\xc3\x9f",
    "\xe1\xba\x9e",
    "\xcc\x81",
    "\xed\xa0\x80",
};

const char *const knownNames[] = {
    "readme.txt",
    "README.TXT",
    "ReadMe.txt",
    "readme",
    "conf.d",
    "CONF_D",
    "conf_d",
    "a",
    "A",
    "a.b",
    "a_b",
    "A.B",
    "a.b.c.d",
    "x.tar.gz",
    ".hidden",
    "..dots",
    "...",
    "_",
    "__",
    "_1",
    "CON",
    "NUL",
    "aux.txt",
    "COM1",
    "LPT1.log",
    "Icon\r",
    "._a",
    ".DS_Store",
    "rr_moved",
    "RR_MOVED",
    ".rr_moved",
    "lost+found",
    "VIDEO_TS",
    "name.",
    "name..",
    "name ",
    "name. ",
    "name",
    " name",
    "NAME",
    "mr. smith goes to washington",
    "1",
    "12345678.123",
    "123456789.1234",
    "file with blanks.txt",
    "-rf",
};

} // namespace

HostileTree::HostileTree(std::uint64_t seed)
    : m_random(seed * 0x9E3779B97F4A7C15u + 1)
{
}

void HostileTree::fill(const QByteArray &folder)
{
    m_folders.push_back({folder, 0, {}});
    const std::uint64_t count = 1 + below(below(4) == 0 ? 60 : 15);
    for (std::uint64_t number = 0; number < count; ++number)
        addObject(below(m_folders.size()));
    if (below(40) == 0)
        addChain(below(m_folders.size()));
    // What is made in a folder changes its time: those that were made last come first.
    for (auto made = m_made.rbegin(); made != m_made.rend(); ++made)
        setTime(made->first);
    setTime(folder);
}

void HostileTree::addObject(std::size_t folder)
{
    const QByteArray name = newName(m_folders[folder]);
    if (name.isEmpty())
        return;
    const QByteArray path = m_folders[folder].path + '/' + name;
    const std::uint64_t kind = below(20);
    if (kind < 5 && m_folders[folder].depth < 6) {
        addFolder(folder, name);
        return;
    }
    m_folders[folder].names.append(name);
    if (kind < 8)
        addLink(path);
    else if (kind == 8)
        EXPECT_EQ(::mkfifo(path.constData(), 0644), 0);
    else if (kind < 11 && !m_files.isEmpty())
        EXPECT_EQ(::linkat(AT_FDCWD, oneOf(m_files).constData(), AT_FDCWD, path.constData(), 0), 0);
    else
        addFile(path);
    m_made.emplace_back(path, false);
}

void HostileTree::addFolder(std::size_t parent, const QByteArray &name)
{
    const QByteArray path = m_folders[parent].path + '/' + name;
    EXPECT_EQ(::mkdir(path.constData(), 0700 | mode_t(below(0100))), 0) << path.constData();
    m_folders[parent].names.append(name);
    m_folders.push_back({path, m_folders[parent].depth + 1, {}});
    m_made.emplace_back(path, true);
}

/// Many folders, one in the other.
void HostileTree::addChain(std::size_t parent)
{
    const std::uint64_t depth = 5 + below(60);
    for (std::uint64_t level = 0; level < depth; ++level) {
        const QByteArray name = QByteArray(1, char('a' + below(3)));
        if (m_folders[parent].names.contains(name))
            return;
        addFolder(parent, name);
        parent = m_folders.size() - 1;
    }
    addFile(m_folders[parent].path + "/deep");
}

void HostileTree::addFile(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0) << path.constData();
    const QByteArray bytes = contents();
    EXPECT_EQ(::write(file, bytes.constData(), std::size_t(bytes.size())), bytes.size());
    if (below(10) == 0) { // a hole, and sometimes something behind it
        const auto length = off_t(below(5) * 50000 + below(3));
        if (below(2) == 0)
            EXPECT_EQ(::pwrite(file, "end", 3, bytes.size() + length), 3);
        else
            EXPECT_EQ(::ftruncate(file, bytes.size() + length), 0);
    }
    EXPECT_EQ(::fchmod(file, mode_t(0400 | below(010000))), 0);
    ::close(file);
    m_files.append(path);
}

/// Few different contents: files of the same name on disc must be told apart by something else, or may be exchanged.
QByteArray HostileTree::contents()
{
    static constexpr qsizetype sizes[] = {0, 0, 0, 1, 1, 3, 10, 2047, 2048, 2049, 5000, 70000};
    QByteArray bytes(oneOf(sizes), char('a' + below(3)));
    if (!bytes.isEmpty() && below(3) == 0)
        bytes.back() = char('a' + below(3));
    return bytes;
}

void HostileTree::addLink(const QByteArray &path)
{
    EXPECT_EQ(::symlink(linkTarget().constData(), path.constData()), 0) << path.constData();
}

QByteArray HostileTree::linkTarget()
{
    static const char *const targets[] = {"a",       "readme.txt", ".",         "..",           "/",
                                          "//",      "./a",        "../a",      "a/",           "a//b",
                                          "a/.",     "/..",        "/etc",      "../../",       "././",
                                          "missing", "\xff/b",     "a/\ufeffb", "\xef\xbf\xbe", "e\xcc\x81\xff",
                                          "\xc3\xa9"};
    switch (below(5)) {
    case 0:
        return freshName();
    case 1:
        return freshName() + '/' + freshName() + '/' + freshName();
    case 2: {
        QByteArray target;
        for (std::uint64_t count = below(400); count > 0; --count)
            target += "a/";
        return target.isEmpty() ? QByteArray("x") : target;
    }
    default:
        return oneOf(targets);
    }
}

/// A name that the folder does not have; often one that comes near to one that it has. Empty when none was found.
QByteArray HostileTree::newName(const Folder &folder)
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        QByteArray name = folder.names.isEmpty() || below(2) == 0 ? freshName() : relativeOf(oneOf(folder.names));
        name.truncate(longestName);
        const bool isUsable = !name.isEmpty() && name != "." && name != "..";
        // Folders of this name have rules of their own, which other tests cover.
        if (isUsable && name != "VIDEO_TS" && !folder.names.contains(name))
            return name;
    }
    return {};
}

QByteArray HostileTree::freshName()
{
    static constexpr qsizetype lengths[] = {30, 31, 32, 63, 64, 65, 98, 102, 103, 104, 126, 127, 128, 253, 254, 255};
    switch (below(6)) {
    case 0:
    case 1:
        return oneOf(knownNames);
    case 2: { // long
        QByteArray name(oneOf(lengths), char('x' + below(2)));
        if (below(2) == 0)
            name.replace(name.size() - 4, 4, ".txt");
        if (below(3) == 0)
            name.replace(int(below(std::uint64_t(name.size()))), 1, oneOf(awkwardPieces));
        return name;
    }
    case 3: { // long in characters of several bytes
        QByteArray name = QByteArray(oneOf(awkwardPieces)).repeated(128);
        name.truncate(oneOf(lengths));
        return name;
    }
    default: {
        QByteArray name;
        for (std::uint64_t count = 1 + below(4); count > 0; --count)
            name += below(2) == 0 ? QByteArray(1, char('a' + below(3))) : QByteArray(oneOf(awkwardPieces));
        return name;
    }
    }
}

QByteArray HostileTree::relativeOf(const QByteArray &name)
{
    const qsizetype dot = std::max<qsizetype>(name.lastIndexOf('.'), 0);
    switch (below(7)) {
    case 0:
        return name.toUpper();
    case 1:
        return name.toLower();
    case 2:
        return name + oneOf(awkwardPieces);
    case 3:
        return QByteArray(name).insert(dot, "_" + QByteArray::number(1 + qulonglong(below(3))));
    case 4: { // what filesystems replace is an underscore already
        QByteArray other = name;
        for (char &byte : other)
            byte = byte < ' ' || QByteArray("*?:;\\").contains(byte) ? '_' : byte;
        return other;
    }
    case 5:
        return QByteArray(name).replace('_', "?");
    default:
        return QByteArray(name).insert(int(below(std::uint64_t(name.size()) + 1)), oneOf(awkwardPieces));
    }
}

void HostileTree::setTime(const QByteArray &path)
{
    static constexpr std::int64_t times[] = {0,
                                             1,
                                             -1,
                                             -300'000'000,
                                             315'532'800,
                                             1'000'000'000,
                                             951'782'400,
                                             1'700'000'000,
                                             2'000'000'000,
                                             2'147'483'647,
                                             4'102'444'800};
    if (below(4) == 0)
        return;
    timespec time{oneOf(times), below(3) == 0 ? long(below(1'000'000'000)) : 0};
    const timespec both[2] = {time, time};
    EXPECT_EQ(::utimensat(AT_FDCWD, path.constData(), both, AT_SYMLINK_NOFOLLOW), 0);
}

void emptyFolder(const QByteArray &folder)
{
    for (const auto &entry : std::filesystem::directory_iterator(folder.toStdString()))
        std::filesystem::remove_all(entry.path());
}

} // namespace Tessaron::Testing
