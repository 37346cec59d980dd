#pragma once

#include <cstdint>

namespace Tessaron
{

/// Status of a platform call: 0 is success, anything else one of the codes below or a code of the service called.
using OSStatus = std::int32_t;
/// The 16-bit form of the same codes that older calls return.
using OSErr = std::int16_t;

inline constexpr OSErr noErr = 0;
inline constexpr OSErr dskFulErr = -34; ///< the disk is full
inline constexpr OSErr nsvErr = -35; ///< no such volume
inline constexpr OSErr ioErr = -36; ///< input or output failed
inline constexpr OSErr bdNamErr = -37; ///< a name is too long or otherwise unusable
inline constexpr OSErr fileOpenErr = -20; ///< a file cannot be opened for writing
inline constexpr OSErr eofErr = -39; ///< the end of a file came too early
inline constexpr OSErr tmfoErr = -42; ///< too many files open
inline constexpr OSErr fnfErr = -43; ///< no such file or folder
inline constexpr OSErr wPrErr = -44; ///< the volume is read-only
inline constexpr OSErr fBsyErr = -47; ///< the file is busy
inline constexpr OSErr dupFNErr = -48; ///< the name is taken already
inline constexpr OSErr paramErr = -50; ///< an argument makes no sense
inline constexpr OSErr permErr = -54; ///< the system does not permit it
inline constexpr OSErr memFullErr = -108; ///< out of memory
inline constexpr OSErr dirNFErr = -120; ///< a folder on the way is missing
inline constexpr OSErr userCanceledErr = -128; ///< cancelled
inline constexpr OSErr errFSNameTooLong = -1414; ///< the name is too long for the volume
inline constexpr OSErr errFSNotAFolder = -1407; ///< a folder was needed
inline constexpr OSErr errFSBadFSRef = -1401; ///< the file reference means nothing
inline constexpr OSErr errFSNoMoreItems = -1417; ///< an iteration has reached its end
inline constexpr OSErr afpAccessDenied = -5000; ///< access denied
inline constexpr OSErr coreFoundationUnknownErr = -4960; ///< unknown error; also: could not start

} // namespace Tessaron
