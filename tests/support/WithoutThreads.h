#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

namespace Tessaron::Testing
{

/// While it lives, no std::thread can be started: the stacks that they would get are greater than any address space.
class WithoutThreads
{
public:
    WithoutThreads()
    {
        ::pthread_getattr_default_np(&m_before);
        pthread_attr_t huge;
        ::pthread_getattr_default_np(&huge);
        ::pthread_attr_setstacksize(&huge, std::size_t(1) << 47);
        EXPECT_EQ(::pthread_setattr_default_np(&huge), 0);
        ::pthread_attr_destroy(&huge);
    }
    ~WithoutThreads()
    {
        ::pthread_setattr_default_np(&m_before);
        ::pthread_attr_destroy(&m_before);
    }
    WithoutThreads(const WithoutThreads &) = delete;
    WithoutThreads &operator=(const WithoutThreads &) = delete;

private:
    pthread_attr_t m_before;
};

} // namespace Tessaron::Testing
