#include "platform/coreservices/Mounts.h"

#include "platform/coreservices/PathAccess.h"

#include <QFile>

#include <cstring>
#include <fcntl.h>
#include <sys/vfs.h>

namespace Tessaron
{

namespace
{

// Fields of a line of mountinfo (proc(5)); the type is the first field behind a lone "-".
constexpr qsizetype numberField = 0;
constexpr qsizetype rootField = 3;
constexpr qsizetype pointField = 4;
constexpr qsizetype firstOptionalField = 6;

/// Blanks, tabs, line ends and backslashes in paths are written as three octal digits.
QByteArray unescaped(const QByteArray &field)
{
    QByteArray text;
    for (qsizetype at = 0; at < field.size(); ++at) {
        bool isOctal = false;
        const int code = field[at] == '\\' ? field.mid(at + 1, 3).toInt(&isOctal, 8) : 0;
        if (isOctal && at + 3 < field.size()) {
            text += static_cast<char>(code);
            at += 3;
        } else {
            text += field[at];
        }
    }
    return text;
}

} // namespace

std::vector<Mount> currentMounts()
{
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    return file.open(QIODevice::ReadOnly) ? mountsFromText(file.readAll()) : std::vector<Mount>();
}

std::vector<Mount> mountsFromText(const QByteArray &text)
{
    std::vector<Mount> mounts;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-", firstOptionalField);
        if (dash < 0 || dash + 1 >= fields.size())
            continue;
        Mount mount;
        mount.number = fields[numberField].toULongLong();
        mount.root = unescaped(fields[rootField]);
        mount.point = unescaped(fields[pointField]);
        mount.type = fields[dash + 1];
        if (mount.root.startsWith('/') && mount.point.startsWith('/'))
            mounts.push_back(mount);
    }
    return mounts;
}

std::uint64_t volumeIdentifierAt(const QByteArray &path)
{
    int error = 0;
    const UniqueDescriptor file = openPath(path, O_PATH | O_NOFOLLOW, &error);
    struct statfs facts;
    std::uint64_t identifier = 0;
    if (file && ::fstatfs(file.get(), &facts) == 0)
        std::memcpy(&identifier, &facts.f_fsid, sizeof identifier);
    return identifier;
}

} // namespace Tessaron
