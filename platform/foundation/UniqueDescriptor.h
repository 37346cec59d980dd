#pragma once

#include <unistd.h>
#include <utility>

namespace Tessaron
{

/// Owns a file descriptor and closes it at the end of its life. Where the result of closing matters (a file that was
/// written), call closeAndReport() instead of leaving it to the destructor.
class UniqueDescriptor
{
public:
    UniqueDescriptor() = default;
    explicit UniqueDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    UniqueDescriptor(UniqueDescriptor &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    UniqueDescriptor &operator=(UniqueDescriptor &&other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.m_descriptor, -1));
        return *this;
    }
    UniqueDescriptor(const UniqueDescriptor &) = delete;
    UniqueDescriptor &operator=(const UniqueDescriptor &) = delete;
    ~UniqueDescriptor() { reset(); }

    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isValid() const { return m_descriptor >= 0; }
    explicit operator bool() const { return isValid(); }

    [[nodiscard]] int release() { return std::exchange(m_descriptor, -1); }

    void reset(int descriptor = -1)
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = descriptor;
    }

    /// Closes now; false (with `errno` set) when the system reports a failure, for example a full disk that shows only
    /// when buffered data goes out.
    [[nodiscard]] bool closeAndReport() { return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor = -1;
};

} // namespace Tessaron
