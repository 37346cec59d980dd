#include "platform/dvdplayback/SharedFrames.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t frameCount = 3;
constexpr std::uint32_t indexMask = 3;
constexpr std::uint32_t isFresh = 4; ///< the session has not taken it
constexpr std::uint32_t firstOfHelper = 0, firstOfSession = 1, firstInMiddle = 2;

} // namespace

struct SharedFrames::Layout {
    struct Frame {
        std::uint32_t number;
        std::uint32_t width;
        std::uint32_t height;
        std::uint32_t reserved;
        std::uint8_t pixels[std::size_t(mostFrameWidth) * mostFrameHeight * 4];
    };

    std::atomic<std::uint32_t> middle; ///< index of the newest picture, and whether it is fresh
    std::uint32_t reserved[3];
    Frame frames[frameCount];
};

SharedFrames::SharedFrames(UniqueDescriptor descriptor, void *memory)
    : m_descriptor(std::move(descriptor))
    , m_layout(static_cast<Layout *>(memory))
    , m_own(firstOfSession)
{
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
}

SharedFrames::~SharedFrames()
{
    ::munmap(m_layout, sizeof(Layout));
}

Result<std::unique_ptr<SharedFrames>> SharedFrames::create()
{
    UniqueDescriptor descriptor(::memfd_create("tessaron-dvd-frames", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!descriptor || ::ftruncate(descriptor.get(), sizeof(Layout)) != 0
        || ::fcntl(descriptor.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return NSError::errorWithErrno(errno, {});
    Result<std::unique_ptr<SharedFrames>> frames = attach(std::move(descriptor));
    if (frames) {
        (*frames)->m_layout->middle = firstInMiddle;
        (*frames)->m_own = firstOfSession;
    }
    return frames;
}

Result<std::unique_ptr<SharedFrames>> SharedFrames::attach(UniqueDescriptor descriptor)
{
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0)
        return NSError::errorWithErrno(errno, {});
    if (status.st_size != off_t(sizeof(Layout)))
        return NSError::errorWithErrno(EINVAL, {});
    void *const memory = ::mmap(nullptr, sizeof(Layout), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor.get(), 0);
    if (memory == MAP_FAILED)
        return NSError::errorWithErrno(errno, {});
    std::unique_ptr<SharedFrames> frames(new SharedFrames(std::move(descriptor), memory));
    frames->m_own = firstOfHelper;
    return frames;
}

std::uint8_t *SharedFrames::pixelsToFill()
{
    return m_layout->frames[m_own].pixels;
}

std::uint32_t SharedFrames::publish(std::uint32_t width, std::uint32_t height)
{
    Layout::Frame &frame = m_layout->frames[m_own];
    frame.number = ++m_number;
    frame.width = width;
    frame.height = height;
    const std::uint32_t taken = m_layout->middle.exchange(m_own | isFresh, std::memory_order_acq_rel) & indexMask;
    m_own = taken < frameCount ? taken : firstOfHelper;
    return m_number;
}

bool SharedFrames::takeNewest(QImage *image, std::uint32_t *number)
{
    if ((m_layout->middle.load(std::memory_order_acquire) & isFresh) == 0)
        return false;
    const std::uint32_t taken = m_layout->middle.exchange(m_own, std::memory_order_acq_rel) & indexMask;
    if (taken >= frameCount)
        return false;
    m_own = taken;
    // Read once: the helper could change them while they are used.
    const Layout::Frame &frame = m_layout->frames[m_own];
    const std::uint32_t width = static_cast<const volatile std::uint32_t &>(frame.width);
    const std::uint32_t height = static_cast<const volatile std::uint32_t &>(frame.height);
    if (width == 0 || width > mostFrameWidth || height == 0 || height > mostFrameHeight)
        return false;
    *number = static_cast<const volatile std::uint32_t &>(frame.number);
    if (image->size() != QSize(int(width), int(height)) || image->format() != QImage::Format_RGB32)
        *image = QImage(int(width), int(height), QImage::Format_RGB32);
    for (std::uint32_t line = 0; line < height; ++line)
        std::memcpy(image->scanLine(int(line)), frame.pixels + std::size_t(line) * mostFrameWidth * 4,
                    std::size_t(width) * 4);
    return true;
}

} // namespace Tessaron
