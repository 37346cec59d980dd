#pragma once

/// Marks what the shared library exports; everything else stays hidden.
#define TESSARON_EXPORT __attribute__((visibility("default")))
