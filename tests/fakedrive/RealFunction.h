#pragma once

#include <dlfcn.h>

namespace Tessaron::Testing
{

/// The function of the C library whose name this object has taken.
template <typename Function>
Function realFunction(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace Tessaron::Testing
