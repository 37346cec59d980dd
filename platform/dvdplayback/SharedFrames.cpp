#include "platform/dvdplayback/SharedFrames.h"

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

SharedFrames::SharedFrames(SharedMemory memory, std::uint32_t own)
    : m_memory(std::make_shared<const SharedMemory>(std::move(memory)))
    , m_layout(static_cast<Layout *>(m_memory->begin()))
    , m_own(own)
{
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
}

Result<std::unique_ptr<SharedFrames>> SharedFrames::create()
{
    Result<SharedMemory> memory = SharedMemory::create("tessaron-dvd-frames", sizeof(Layout));
    if (!memory)
        return memory.error();
    std::unique_ptr<SharedFrames> frames(new SharedFrames(*std::move(memory), firstOfSession));
    frames->m_layout->middle = firstInMiddle;
    return frames;
}

Result<std::unique_ptr<SharedFrames>> SharedFrames::attach(UniqueDescriptor descriptor)
{
    Result<SharedMemory> memory = SharedMemory::attach(std::move(descriptor), sizeof(Layout));
    if (!memory)
        return memory.error();
    return std::unique_ptr<SharedFrames>(new SharedFrames(*std::move(memory), firstOfHelper));
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
    using Keeper = std::shared_ptr<const SharedMemory>;
    const auto letGo = [](void *keeper) { delete static_cast<Keeper *>(keeper); };
    *image = QImage(frame.pixels, int(width), int(height), qsizetype(mostFrameWidth) * 4, QImage::Format_RGB32, letGo,
                    new Keeper(m_memory));
    return true;
}

} // namespace Tessaron
