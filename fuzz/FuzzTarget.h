#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What every fuzz target defines and a fuzzing engine, or RunOverFiles.cpp, calls once for each input. A broken
/// promise aborts. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

/// Ends the program when a promise is broken, and says which.
inline void require(bool isKept, const char *promise)
{
    if (isKept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}
