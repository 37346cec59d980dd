#include "imaging/EmergencyRemoval.h"

#include <TessaronClasses/UnfinishedFiles.h>

#include <array>
#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The handler may interrupt any instruction: `isNoted` is set after, and cleared before, the rest is changed.
struct NotedFile {
    std::atomic<bool> isTaken = false;
    std::atomic<bool> isNoted = false;
    EmergencyKind kind = EmergencyKind::File;
    int folder = -1;
    std::array<char, 256> name = {};
};
static_assert(std::atomic<bool>::is_always_lock_free);

std::array<NotedFile, 128> notedFiles;

void removeNoted(EmergencyKind kind)
{
    for (NotedFile &file : notedFiles) {
        if (file.isNoted.load() && file.kind == kind)
            ::unlinkat(file.folder, file.name.data(), kind == EmergencyKind::Folder ? AT_REMOVEDIR : 0);
    }
}

} // namespace

int noteForEmergencyRemoval(int folder, const QByteArray &name, EmergencyKind kind)
{
    if (name.size() >= qsizetype(NotedFile().name.size()))
        return -1;
    for (std::size_t number = 0; number < notedFiles.size(); ++number) {
        NotedFile &file = notedFiles[number];
        if (file.isTaken.exchange(true))
            continue;
        file.kind = kind;
        file.folder = folder;
        std::memcpy(file.name.data(), name.constData(), size_t(name.size()) + 1);
        file.isNoted.store(true);
        return int(number);
    }
    return -1;
}

void forgetEmergencyRemoval(int number)
{
    if (number < 0)
        return;
    NotedFile &file = notedFiles[std::size_t(number)];
    file.isNoted.store(false);
    file.isTaken.store(false);
}

void removeUnfinishedFiles()
{
    removeNoted(EmergencyKind::File);
    removeNoted(EmergencyKind::Folder);
}

} // namespace Tessaron
