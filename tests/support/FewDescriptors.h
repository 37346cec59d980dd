#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Tessaron::Testing
{

/// Leaves the process only a few further descriptors while it lives.
class FewDescriptors
{
public:
    explicit FewDescriptors(int count)
    {
        const int lowest = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::close(lowest);
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &m_before), 0);
        const rlimit few{static_cast<rlim_t>(lowest + count), m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    FewDescriptors(const FewDescriptors &) = delete;
    FewDescriptors &operator=(const FewDescriptors &) = delete;

private:
    rlimit m_before = {};
};

} // namespace Tessaron::Testing
