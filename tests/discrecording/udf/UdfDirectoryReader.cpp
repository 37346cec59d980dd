#include "tests/discrecording/udf/UdfImageReader.h"

#include <QtEndian>

namespace Tessaron::Testing
{

namespace
{

int number8(const QByteArray &bytes, qsizetype at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

std::uint32_t number32(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<std::uint32_t>(bytes.constData() + at);
}

std::uint16_t number16(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<std::uint16_t>(bytes.constData() + at);
}

/// Path components (ECMA-167 4/14.16) as a path; empty when they are none.
QByteArray targetOf(const QByteArray &components)
{
    QByteArray path;
    for (qsizetype at = 0; at + 4 <= components.size(); at += 4 + number8(components, at + 1)) {
        if (!path.isEmpty() && !path.endsWith('/'))
            path += '/';
        const QByteArray name = components.mid(at + 4, number8(components, at + 1));
        switch (components.at(at)) {
        case 2:
            path += '/';
            break;
        case 3:
            path += "..";
            break;
        case 4:
            path += '.';
            break;
        case 5:
            path += decodedUdfText(name).toUtf8();
            break;
        default:
            return {};
        }
    }
    return path;
}

} // namespace

void UdfImageReader::readDirectory(const QByteArray &path, const UdfObject &directory, std::uint32_t parentIcb)
{
    const QString where = QString::fromUtf8("folder “" + path + "”");
    const QByteArray bytes = bytesOf(directory.extents);
    std::set<QByteArray> names;
    std::vector<std::pair<QByteArray, std::uint32_t>> folders;
    for (qsizetype at = 0; at < bytes.size();) {
        if (at + 38 > bytes.size() || at + 38 + number8(bytes, at + 19) + number16(bytes, at + 36) > bytes.size()) {
            problem(where + QStringLiteral(": an entry runs over the end"));
            return;
        }
        const int nameSize = number8(bytes, at + 19);
        const int size = (38 + nameSize + number16(bytes, at + 36) + 3) / 4 * 4;
        const QByteArray entry = bytes.mid(at, size);
        const auto location = static_cast<std::uint32_t>(directory.extents.front().block - m_partitionStart
                                                         + static_cast<std::uint64_t>(at) / 2048);
        checkTag(entry, 257, location, where);
        expect(number16(entry, 16) == 1, where + QStringLiteral(": wrong file version"));
        expect(number32(entry, 20) == 2048 && number16(entry, 28) == 0, where + QStringLiteral(": wrong ICB extent"));
        const int characteristics = number8(entry, 18);
        const std::uint32_t icb = number32(entry, 24);
        ++m_linksTo[icb];
        if (at == 0) {
            expect(characteristics == (2 | 8) && nameSize == 0 && icb == parentIcb,
                   where + QStringLiteral(": the first entry does not lead to the parent"));
            at += size;
            continue;
        }
        at += size;
        const QByteArray recorded = entry.mid(38, nameSize);
        const bool isNarrow = recorded.startsWith('\x08');
        expect(isNarrow || (recorded.startsWith('\x10') && nameSize % 2 == 1), where + QStringLiteral(": wrong name"));
        expect((characteristics & ~3) == 0, where + QStringLiteral(": wrong characteristics"));
        const QByteArray name = decodedUdfText(recorded).toUtf8();
        expect(!name.isEmpty() && names.insert(name).second, where + QStringLiteral(": the same name twice"));
        const QByteArray childPath = path.isEmpty() ? name : path + '/' + name;
        UdfObject object = readEntry(icb, QString::fromUtf8(childPath));
        object.isHidden = (characteristics & 1) != 0;
        object.recordedName = recorded;
        object.linkTarget = object.type == 12 ? targetOf(object.embedded) : QByteArray();
        const bool isFolder = object.type == 4;
        expect(isFolder == ((characteristics & 2) != 0), where + QStringLiteral(": entry and file entry disagree"));
        ++(isFolder ? m_folderNames : m_fileNames);
        m_objects[childPath] = object;
        if (isFolder)
            folders.emplace_back(childPath, icb);
    }
    const std::uint32_t ownIcb = directory.icb - m_partitionStart;
    for (const auto &[folderPath, icb] : folders)
        readDirectory(folderPath, UdfObject(m_objects.at(folderPath)), ownIcb);
}

} // namespace Tessaron::Testing
