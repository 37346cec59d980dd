#pragma once

#include <cstddef>
#include <cstdint>

/// What every fuzz target defines and a fuzzing engine, or RunOverFiles.cpp, calls once for each input. A broken
/// promise aborts. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);
