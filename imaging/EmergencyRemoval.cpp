#include "imaging/EmergencyRemoval.h"

#include <TessaronClasses/UnfinishedFiles.h>

#include <array>
#include <atomic>
#include <cstring>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The handler may interrupt any instruction: `isNoted` is set after, and cleared before, the rest is changed.
struct NotedFile {
    std::atomic<bool> isTaken = false;
    std::atomic<bool> isNoted = false;
    int folder = -1;
    std::array<char, 256> name = {};
};
static_assert(std::atomic<bool>::is_always_lock_free);

std::array<NotedFile, 4> notedFiles;

} // namespace

int noteForEmergencyRemoval(int folder, const QByteArray &name)
{
    if (name.size() >= qsizetype(NotedFile().name.size()))
        return -1;
    for (std::size_t number = 0; number < notedFiles.size(); ++number) {
        NotedFile &file = notedFiles[number];
        if (file.isTaken.exchange(true))
            continue;
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
    for (NotedFile &file : notedFiles) {
        if (file.isNoted.load())
            ::unlinkat(file.folder, file.name.data(), 0);
    }
}

} // namespace Tessaron
