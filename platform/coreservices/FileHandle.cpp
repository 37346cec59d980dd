#include "platform/coreservices/FileHandle.h"

#include "platform/foundation/ByteOrder.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

constexpr qsizetype typeBytes = 4;

/// A file_handle with room for any handle: length, type, bytes.
struct HandleStorage {
    std::array<std::uint32_t, 2 + MAX_HANDLE_SZ / 4> words = {};

    [[nodiscard]] file_handle *handle() { return reinterpret_cast<file_handle *>(words.data()); }
};

} // namespace

QByteArray fileHandleBelow(int folder, const char *name)
{
    HandleStorage storage;
    storage.words[0] = MAX_HANDLE_SZ;
    int mountNumber = 0;
    if (::name_to_handle_at(folder, name, storage.handle(), &mountNumber, 0) != 0)
        return {};
    QByteArray bytes(typeBytes, '\0');
    storeBigEndian<std::uint32_t>(reinterpret_cast<std::uint8_t *>(bytes.data()), storage.words[1]);
    return bytes.append(reinterpret_cast<const char *>(storage.words.data() + 2),
                        static_cast<qsizetype>(storage.words[0]));
}

UniqueDescriptor openFileHandle(int folderOnVolume, const QByteArray &handle)
{
    if (handle.size() <= typeBytes || handle.size() > typeBytes + MAX_HANDLE_SZ)
        return {};
    HandleStorage storage;
    const auto size = static_cast<std::size_t>(handle.size() - typeBytes);
    storage.words[0] = static_cast<std::uint32_t>(size);
    storage.words[1] = loadBigEndian<std::uint32_t>(reinterpret_cast<const std::uint8_t *>(handle.constData()));
    std::memcpy(storage.words.data() + 2, handle.constData() + typeBytes, size);
    return UniqueDescriptor(::open_by_handle_at(folderOnVolume, storage.handle(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

} // namespace Tessaron
