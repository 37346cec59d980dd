#pragma once

#include "platform/foundation/Export.h"

#include <QByteArrayView>

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Tessaron
{

struct MallocDeleter {
    void operator()(char *buffer) const { std::free(buffer); }
};
/// A buffer made with malloc(3) and owned by its record; null for no value.
using MallocBuffer = std::unique_ptr<char, MallocDeleter>;

/// A NUL-terminated copy of the bytes.
[[nodiscard]] TESSARON_EXPORT MallocBuffer mallocCopy(QByteArrayView bytes);

/// What is cached about a file, to be handed to a file reference that is being made. The flags are coded the other way
/// round from a boolean: 0 means yes, 1 means no, 2 means not yet known. Strings are NUL-terminated and hold UTF-8, or
/// the bytes of a name that is not UTF-8; they belong to the record and move with it.
struct TESSARON_EXPORT _ZelFileAttribute {
    char empty = 1; ///< 1: nothing cached yet, every getter asks the system; 0: the record has been filled
    char directory = 2; ///< 0: a folder
    char nameBeginsWithADot = 2; ///< filled only by the maker of the record
    char dataSizeIsKnown = 1; ///< 0: `dataSize` holds the value read; 1: it must be read
    char rsrcSizeIsKnown = 1; ///< 0: `rsrcSize` holds the value read; 1: it must be read
    std::uint64_t dataSize = 0; ///< allocated size of the data fork, bytes
    std::uint64_t rsrcSize = 0; ///< allocated size of the resource fork, bytes
    char bundle = 2; ///< a package
    char symLink = 2;
    char alias = 2; ///< an alias file
    char invisible = 2;
    char extensionHidden = 2;
    MallocBuffer extension;
    MallocBuffer displayName;
    MallocBuffer name; ///< last path component
    MallocBuffer displayKind; ///< kind of file in words
    MallocBuffer path;
    MallocBuffer smallIcon; ///< 'icns' data
    std::int32_t smallIconDataLength = 0; ///< bytes
    MallocBuffer largeIcon; ///< 'icns' data
    std::int32_t largeIconDataLength = 0; ///< bytes
};

/// The empty record: nothing is known.
[[nodiscard]] TESSARON_EXPORT _ZelFileAttribute ZelFileAttributeNone_fct();

/// How one item is to appear on the disc.
struct _TessaronAttributes {
    char invisible = 0; ///< make the item invisible on the disc
    char useBasicFSInclusion = 1; ///< 1: the basic choice applies; 0: the advanced mask applies
    std::int32_t basicFSInclusion = 0; ///< 0: all filesystems, 1: UDF and HFS+, 2: ISO 9660 and Joliet
    std::uint32_t advancedFSInclusion = 15; ///< a bit for each filesystem that is to hold the item
    char hasBasicFSInclusion = 0; ///< `basicFSInclusion` has been set
    char hasAdvancedFSInclusion = 0; ///< `advancedFSInclusion` has been set
};

/// The options that every new reference starts with; they ask for nothing special.
[[nodiscard]] TESSARON_EXPORT _TessaronAttributes TessaronFileAttributesNone_fct();

} // namespace Tessaron
