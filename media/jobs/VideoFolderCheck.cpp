#include "media/jobs/VideoFolderCheck.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <optional>
#include <set>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t blockSize = 2048;
constexpr std::uint64_t longestPart = std::uint64_t(1) << 30; ///< of a VOB file: a gibibyte
constexpr std::uint64_t longestTable = std::uint64_t(64) << 20; ///< far beyond any IFO file
constexpr int mostTitleSets = 99;
constexpr int mostParts = 9;

/// Where the tables of an IFO file say how long things are (VMGI_MAT and VTSI_MAT have these at the same places).
namespace IfoFields
{
constexpr qsizetype identifierSize = 12;
constexpr qsizetype lastBlockOfSet = 0x0C; ///< 32 bits, counted from the first of the IFO file: that of its backup
constexpr qsizetype lastBlockOfTable = 0x1C; ///< 32 bits
constexpr qsizetype titleSets = 0x3E; ///< 16 bits, in VIDEO_TS.IFO alone
constexpr qsizetype end = 0x40;
} // namespace IfoFields

/// "VTS_01_0.IFO"; "VIDEO_TS.IFO" for number 0.
QByteArray tableName(int titleSet, const char *extension)
{
    if (titleSet == 0)
        return QByteArray("VIDEO_TS.") + extension;
    return "VTS_" + QByteArray::number(titleSet).rightJustified(2, '0') + "_0." + extension;
}

QByteArray partName(int titleSet, int part)
{
    return "VTS_" + QByteArray::number(titleSet).rightJustified(2, '0') + '_' + QByteArray::number(part) + ".VOB";
}

/// The title set that a file belongs to by its name; 0 for other files.
int titleSetOf(const QByteArray &name)
{
    constexpr qsizetype length = 12;
    const auto isDigit = [&name](qsizetype at) { return name[at] >= '0' && name[at] <= '9'; };
    const bool isOfSet = name.size() == length && name.startsWith("VTS_") && isDigit(4) && isDigit(5) && name[6] == '_';
    return isOfSet ? (name[4] - '0') * 10 + name[5] - '0' : 0;
}

class VideoFolderCheck
{
public:
    VideoFolderCheck(UniqueDescriptor folder, const std::stop_token &stop)
        : m_folder(std::move(folder))
        , m_stop(stop)
    {
    }

    Result<std::vector<DVDFileProblem>> run()
    {
        if (list())
            check();
        if (m_failure != 0)
            return NSError::errorWithErrno(m_failure, {});
        return m_problems;
    }

private:
    void check()
    {
        const std::optional<QByteArray> manager = checkTable(0);
        const std::optional<std::uint64_t> menus = sizeOf(tableName(0, "VOB"), false);
        if (menus)
            checkLength(tableName(0, "VOB"), *menus);
        std::set<int> sets;
        for (const auto &[name, size] : m_sizes) {
            if (const int set = titleSetOf(name); set > 0)
                sets.insert(set);
        }
        const int stated = manager ? qFromBigEndian<quint16>(manager->constData() + IfoFields::titleSets) : 0;
        for (int set = 1; set <= std::min(stated, mostTitleSets); ++set)
            sets.insert(set);
        for (const int set : sets) {
            if (m_stop.stop_requested())
                return;
            checkTitleSet(set);
            if (manager && set > stated)
                add(tableName(set, "IFO"),
                    QStringLiteral("VIDEO_TS.IFO knows of %1 only, so that it cannot be played")
                        .arg(counted(std::uint64_t(stated), "title set", "title sets")));
        }
        if (sets.empty())
            add(tableName(1, "IFO"), QStringLiteral("is missing: there is no title set"));
        for (const auto &[name, size] : m_sizes) {
            if (!m_known.contains(name))
                add(name, QStringLiteral("is not a file of a video DVD; players pass over it, or stumble over it"));
        }
    }

    void add(const QByteArray &name, const QString &message) { m_problems.push_back({name, message}); }

    bool list()
    {
        const DirectoryStream entries = directoryStream(UniqueDescriptor(::fcntl(m_folder.get(), F_DUPFD_CLOEXEC, 0)));
        if (!entries) {
            m_failure = errno;
            return false;
        }
        for (;;) {
            errno = 0;
            const dirent *const entry = ::readdir(entries.get());
            if (entry == nullptr)
                break;
            const QByteArray name = entry->d_name;
            struct stat status;
            if (name == "." || name == ".." || ::fstatat(m_folder.get(), entry->d_name, &status, 0) != 0)
                continue;
            if (S_ISREG(status.st_mode))
                m_sizes.emplace(name, std::uint64_t(status.st_size));
            else
                add(name, QStringLiteral("is not a file; a video DVD has files alone"));
        }
        if (errno != 0) { // of readdir(): what it did not list would be called missing
            m_failure = errno;
            return false;
        }
        for (const auto &[name, size] : m_sizes) {
            const QByteArray upper = name.toUpper();
            const bool isMeant = upper != name && !m_sizes.contains(upper)
                && (upper.startsWith("VTS_") || upper.startsWith("VIDEO_TS."));
            if (isMeant)
                add(name, QStringLiteral("has to be called %1").arg(quoted(upper)));
        }
        return true;
    }

    /// Its size; absent, and told, where it is not there.
    std::optional<std::uint64_t> sizeOf(const QByteArray &name, bool isNeeded)
    {
        m_known.insert(name);
        const auto found = m_sizes.find(name);
        if (found != m_sizes.end())
            return found->second;
        if (isNeeded)
            add(name, QStringLiteral("is missing"));
        return std::nullopt;
    }

    std::optional<QByteArray> read(const QByteArray &name, std::uint64_t size)
    {
        if (size > longestTable) {
            add(name, QStringLiteral("is %1 bytes long, which no table is").arg(size));
            return std::nullopt;
        }
        // A pipe that has taken the place of a file since must not be waited for.
        const UniqueDescriptor file(::openat(m_folder.get(), name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        QByteArray bytes(qsizetype(size), '\0');
        std::size_t got = 0;
        const int failure = file ? readFully(file.get(), 0, bytes.data(), std::size_t(size), &got) : errno;
        if (isLackOfDescriptors(failure))
            m_failure = failure; // of this process, and not of the file
        else if (failure != 0)
            add(name, QStringLiteral("cannot be read: %1").arg(systemText(failure)));
        if (failure != 0)
            return std::nullopt;
        return bytes.first(qsizetype(got));
    }

    /// The table of a title set, or of the disc for 0, where it can be understood.
    std::optional<QByteArray> checkTable(int titleSet)
    {
        const QByteArray name = tableName(titleSet, "IFO");
        const QByteArray backupName = tableName(titleSet, "BUP");
        const std::optional<std::uint64_t> size = sizeOf(name, true);
        const std::optional<std::uint64_t> backupSize = sizeOf(backupName, true);
        std::optional<QByteArray> table = size ? read(name, *size) : std::nullopt;
        const std::optional<QByteArray> backup = backupSize ? read(backupName, *backupSize) : std::nullopt;
        if (table && backup && *table != *backup)
            add(backupName, QStringLiteral("differs from %1, whose backup it is to be").arg(QString::fromLatin1(name)));
        if (!table)
            return std::nullopt;
        const QByteArray identifier = titleSet == 0 ? "DVDVIDEO-VMG" : "DVDVIDEO-VTS";
        if (table->size() < IfoFields::end || table->first(IfoFields::identifierSize) != identifier) {
            add(name, QStringLiteral("is not a table of a video DVD"));
            return std::nullopt;
        }
        const std::uint64_t stated =
            (std::uint64_t(qFromBigEndian<quint32>(table->constData() + IfoFields::lastBlockOfTable)) + 1) * blockSize;
        if (stated != *size)
            add(name, QStringLiteral("is %1 bytes long, and says that it has %2").arg(*size).arg(stated));
        return table;
    }

    void checkLength(const QByteArray &name, std::uint64_t size)
    {
        if (size % blockSize != 0)
            add(name, QStringLiteral("is %1 bytes long, which are not whole blocks: it is cut").arg(size));
        if (size > longestPart)
            add(name, QStringLiteral("is longer than a gibibyte, which players do not read to its end"));
    }

    void checkTitleSet(int titleSet)
    {
        const std::optional<QByteArray> table = checkTable(titleSet);
        const QByteArray menus = tableName(titleSet, "VOB");
        const std::optional<std::uint64_t> menuSize = sizeOf(menus, false);
        if (menuSize)
            checkLength(menus, *menuSize);
        std::uint64_t total = menuSize.value_or(0);
        int last = 0;
        for (int part = 1; part <= mostParts; ++part) {
            if (m_sizes.contains(partName(titleSet, part)))
                last = part;
        }
        for (int part = 1; part <= std::max(last, 1); ++part) {
            const QByteArray name = partName(titleSet, part);
            const std::optional<std::uint64_t> size = sizeOf(name, true);
            if (size)
                checkLength(name, *size);
            total += size.value_or(0);
        }
        if (table)
            checkTotal(titleSet, *table, total);
    }

    /// The tables say where the backup ends, which is behind everything else of the set. Not for the disc's own:
    /// programs that make DVDs put numbers of other meanings there.
    void checkTotal(int titleSet, const QByteArray &table, std::uint64_t vobBytes)
    {
        const std::uint64_t stated =
            (std::uint64_t(qFromBigEndian<quint32>(table.constData() + IfoFields::lastBlockOfSet)) + 1) * blockSize;
        const std::uint64_t tables =
            (std::uint64_t(qFromBigEndian<quint32>(table.constData() + IfoFields::lastBlockOfTable)) + 1) * blockSize
            * 2;
        if (stated < tables || vobBytes == stated - tables)
            return;
        const std::uint64_t wanted = stated - tables;
        const QByteArray name = tableName(titleSet, "IFO");
        if (vobBytes < wanted)
            add(name,
                QStringLiteral("says that the VOB files of its set have %1 bytes; %2 of them are not there")
                    .arg(wanted)
                    .arg(wanted - vobBytes));
        else
            add(name,
                QStringLiteral("says that the VOB files of its set have %1 bytes; they have %2 more")
                    .arg(wanted)
                    .arg(vobBytes - wanted));
    }

    const UniqueDescriptor m_folder;
    const std::stop_token m_stop;
    std::map<QByteArray, std::uint64_t> m_sizes; ///< of the regular files
    std::set<QByteArray> m_known; ///< that belong to a video DVD
    std::vector<DVDFileProblem> m_problems;
    int m_failure = 0; ///< an `errno` value: why not all could be looked at
};

} // namespace

Result<std::vector<DVDFileProblem>> problemsOfVideoFolder(const QByteArray &path, const std::stop_token &stop)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    UniqueDescriptor folder(::open((path + "/VIDEO_TS").constData(), flags));
    if (!folder) {
        QByteArray name = path;
        while (name.size() > 1 && name.endsWith('/'))
            name.chop(1);
        if (lastComponent(name).toUpper() != "VIDEO_TS")
            return std::vector<DVDFileProblem>();
        folder.reset(::open(path.constData(), flags));
    }
    if (!folder)
        return std::vector<DVDFileProblem>();
    return VideoFolderCheck(std::move(folder), stop).run();
}

} // namespace Tessaron
