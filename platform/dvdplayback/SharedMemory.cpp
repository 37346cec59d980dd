#include "platform/dvdplayback/SharedMemory.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace Tessaron
{

SharedMemory::SharedMemory(UniqueDescriptor descriptor, void *begin, std::size_t size)
    : m_descriptor(std::move(descriptor))
    , m_begin(begin)
    , m_size(size)
{
}

SharedMemory::SharedMemory(SharedMemory &&other) noexcept
    : m_descriptor(std::move(other.m_descriptor))
    , m_begin(std::exchange(other.m_begin, nullptr))
    , m_size(other.m_size)
{
}

SharedMemory::~SharedMemory()
{
    if (m_begin)
        ::munmap(m_begin, m_size);
}

Result<SharedMemory> SharedMemory::create(const char *name, std::size_t size)
{
    UniqueDescriptor descriptor(::memfd_create(name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!descriptor || ::ftruncate(descriptor.get(), off_t(size)) != 0
        || ::fcntl(descriptor.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return NSError::errorWithErrno(errno, {});
    return attach(std::move(descriptor), size);
}

Result<SharedMemory> SharedMemory::attach(UniqueDescriptor descriptor, std::size_t size)
{
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0)
        return NSError::errorWithErrno(errno, {});
    if (status.st_size != off_t(size))
        return NSError::errorWithErrno(EINVAL, {});
    void *const begin = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor.get(), 0);
    if (begin == MAP_FAILED)
        return NSError::errorWithErrno(errno, {});
    return SharedMemory(std::move(descriptor), begin, size);
}

} // namespace Tessaron
