#include "tests/discrecording/planning/IsoImageReader.h"

#include <sys/stat.h>

namespace Tessaron::Testing
{

void IsoImageReader::readAttributes(std::span<const std::uint8_t> entry, RockRidgeEntry &result, const QString &where)
{
    if (entry[0] == 'P' && entry[1] == 'X') {
        if (entry.size() != 44) {
            problem(where + QStringLiteral(": wrong size of PX"));
            return;
        }
        result.mode = bothEndian32(entry.subspan(4), where);
        result.linkCount = bothEndian32(entry.subspan(12), where);
        result.userId = bothEndian32(entry.subspan(20), where);
        result.groupId = bothEndian32(entry.subspan(28), where);
        result.serialNumber = bothEndian32(entry.subspan(36), where);
        if (result.linkCount == 0 || result.serialNumber == 0)
            problem(where + QStringLiteral(": PX without links or serial number"));
    } else if (entry[0] == 'P') {
        if (entry.size() != 20)
            problem(where + QStringLiteral(": wrong size of PN"));
        else
            result.deviceNumber =
                std::uint64_t{bothEndian32(entry.subspan(4), where)} << 32 | bothEndian32(entry.subspan(12), where);
    } else {
        // Modification, access, attributes: the short form.
        if (entry.size() != 26 || entry[4] != 0x0E) {
            problem(where + QStringLiteral(": wrong TF"));
            return;
        }
        result.modificationTime = recordingTime(entry.subspan(5), where);
        result.accessTime = recordingTime(entry.subspan(12), where);
        result.attributeTime = recordingTime(entry.subspan(19), where);
    }
}

void IsoImageReader::readLink(std::span<const std::uint8_t> entry, RockRidgeEntry &result, const QString &where)
{
    for (std::size_t at = 5; at < entry.size();) {
        if (at + 2 > entry.size() || at + 2 + entry[at + 1] > entry.size()) {
            problem(where + QStringLiteral(": a link component beyond its entry"));
            return;
        }
        const std::uint8_t flags = entry[at];
        const std::size_t size = entry[at + 1];
        if ((flags & ~0x0F) != 0 || ((flags & 0x0E) != 0 && size != 0))
            problem(where + QStringLiteral(": wrong flags of a link component"));
        if ((flags & 0x0E) == 0 && size == 0)
            problem(where + QStringLiteral(": an empty link component"));
        if (!m_componentContinues && !result.linkTarget.isEmpty() && !result.linkTarget.endsWith('/'))
            result.linkTarget += '/';
        if ((flags & 8) != 0)
            result.linkTarget += '/';
        else if ((flags & 6) != 0)
            result.linkTarget += (flags & 4) != 0 ? ".." : ".";
        result.linkTarget.append(reinterpret_cast<const char *>(&entry[at + 2]), static_cast<qsizetype>(size));
        m_componentContinues = (flags & 1) != 0;
        at += 2 + size;
    }
    m_linkContinues = (entry[4] & 1) != 0;
}

void IsoImageReader::readSystemUse(std::span<const std::uint8_t> area, RockRidgeEntry &entry, bool isRootItself,
                                   const QString &where)
{
    std::span<const std::uint8_t> continuation;
    bool hasContinuation = false;
    std::size_t number = 0;
    // A field may end with one byte of padding.
    for (std::size_t at = 0; at + 4 <= area.size(); ++number) {
        const std::size_t size = area[at + 2];
        if (size < 4 || at + size > area.size() || area[at + 3] != 1) {
            problem(where + QStringLiteral(": a broken system use entry"));
            return;
        }
        const auto use = area.subspan(at, size);
        at += size;
        const QString signature = QString::fromLatin1(reinterpret_cast<const char *>(use.data()), 2);
        const bool maySeveralTimes = signature == QStringLiteral("NM") || signature == QStringLiteral("SL");
        if (m_signatures.contains(signature) && !maySeveralTimes && signature != QStringLiteral("CE"))
            problem(where + QStringLiteral(": an entry twice: ") + signature);
        m_signatures.append(signature);
        if (signature == QStringLiteral("SP")) {
            if (!isRootItself || number != 0 || size != 7 || use[4] != 0xBE || use[5] != 0xEF || use[6] != 0)
                problem(where + QStringLiteral(": wrong SP"));
        } else if (signature == QStringLiteral("ER")) {
            if (!isRootItself || size != std::size_t{8} + use[4] + use[5] + use[6] || use[7] != 1
                || QByteArray(reinterpret_cast<const char *>(&use[8]), use[4]) != "IEEE_P1282")
                problem(where + QStringLiteral(": wrong ER"));
        } else if (signature == QStringLiteral("PX") || signature == QStringLiteral("PN")
                   || signature == QStringLiteral("TF")) {
            readAttributes(use, entry, where);
        } else if (signature == QStringLiteral("NM")) {
            m_nameContinues = (use[4] & 1) != 0;
            entry.name.append(reinterpret_cast<const char *>(&use[5]), static_cast<qsizetype>(size - 5));
        } else if (signature == QStringLiteral("SL")) {
            readLink(use, entry, where);
        } else if ((signature == QStringLiteral("CL") || signature == QStringLiteral("PL")) && size == 12) {
            (signature == QStringLiteral("CL") ? entry.childBlock : entry.parentBlock) =
                bothEndian32(use.subspan(4), where);
        } else if (signature == QStringLiteral("RE") && size == 4) {
            entry.isRelocated = true;
        } else if (signature == QStringLiteral("CE") && size == 28 && !hasContinuation) {
            const std::uint32_t number32 = bothEndian32(use.subspan(4), where);
            const std::uint32_t offset = bothEndian32(use.subspan(12), where);
            const std::uint32_t length = bothEndian32(use.subspan(20), where);
            const auto whole = block(number32);
            if (whole.empty() || length == 0 || offset + length > 2048) {
                problem(where + QStringLiteral(": a continuation area that is not within a block"));
                return;
            }
            continuation = whole.subspan(offset, length);
            hasContinuation = true;
        } else {
            problem(where + QStringLiteral(": unexpected entry ") + signature);
        }
    }
    if (hasContinuation)
        readSystemUse(continuation, entry, isRootItself, where);
    if (isRootItself && !m_signatures.contains(QStringLiteral("ER")))
        problem(where + QStringLiteral(": no ER"));
}

} // namespace Tessaron::Testing
