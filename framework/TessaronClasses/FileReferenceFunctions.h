#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"

#include <QByteArray>

#include <array>
#include <cstdint>

namespace Tessaron
{

/// 16 bytes of Finder information as they are stored: type, creator, flags (big-endian), place, folder.
struct FileInfo {
    std::array<std::uint8_t, 16> bytes = {};
};
/// 16 bytes of extended Finder information.
struct ExtendedFileInfo {
    std::array<std::uint8_t, 16> bytes = {};
};

/// Functions on file references. Thread-safe. Their symbols are their plain names, so that a plug-in can look them up.
extern "C" {

/// True when the reference's file exists, wherever it was moved meanwhile. False for null.
[[nodiscard]] TESSARON_EXPORT bool FSRefValid(const FSRef *ref);

/// Fetches what is asked for; each output may be null. On failure (fnfErr …) nothing is written.
[[nodiscard]] TESSARON_EXPORT OSErr FSGetFinderInfo(const FSRef *ref, FileInfo *finderInfo,
                                                    ExtendedFileInfo *extendedFinderInfo, bool *isDirectory);

/// Adds up the forks of a file, in bytes; each output may be null. On failure the outputs hold what was added so far.
[[nodiscard]] TESSARON_EXPORT OSErr FSGetTotalForkSizes(const FSRef *ref, std::uint64_t *totalLogicalSize,
                                                        std::uint64_t *totalPhysicalSize, std::uint64_t *forkCount);

#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage" // for programs in C++ all the same
#endif
/// The persistent form of a reference; null when its file is gone.
[[nodiscard]] TESSARON_EXPORT QByteArray AliasDataFromFSRef(const FSRef *ref);
#ifdef __clang__
#pragma clang diagnostic pop
#endif

/// Finds the file of alias data without asking the user for a missing volume. 1 for null data, else noErr or the status
/// of FSResolveAliasWithMountFlags(); the output is left alone on failure.
[[nodiscard]] TESSARON_EXPORT OSErr FSRefFromAliasData(const QByteArray &data, FSRef *ref);

} // extern "C"

} // namespace Tessaron
