#pragma once

#include <QByteArray>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace Tessaron::Testing
{

/// Starts the program anew with the object loaded that takes the place of some functions of the system; at the begin of
/// main(). Returns when it is there.
inline void loadReplacements(const QByteArray &object, char **argv)
{
    const QByteArray others = qgetenv("LD_PRELOAD");
    if (others.contains(object))
        return;
    // A sanitizer's library has to stay the first one.
    qputenv("LD_PRELOAD", (others.isEmpty() ? QByteArray() : others + ':') + object);
    const QByteArray options = qgetenv("ASAN_OPTIONS");
    qputenv("ASAN_OPTIONS", (options.isEmpty() ? QByteArray() : options + ':') + "verify_asan_link_order=0");
    ::execv("/proc/self/exe", argv);
    std::perror("tests");
    std::exit(EXIT_FAILURE);
}

} // namespace Tessaron::Testing
