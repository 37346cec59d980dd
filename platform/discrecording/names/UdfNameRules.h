#pragma once

#include <string>
#include <string_view>

namespace Tessaron
{

/// The name of a file or folder in a UDF tree, in UTF-16. Never empty.
///
/// A file identifier has 254 bytes for its characters (ECMA-167 14.4.8 with OSTA UDF 1.02 2.1.1): as many characters
/// while all lie below U+0100, half as many otherwise. A longer name is cut before its extension. NUL, "/" and bytes
/// that are not UTF-8 become "_".
[[nodiscard]] std::u16string udfName(std::string_view rawName, bool isFolder);

/// The same for the name of a volume or of a set of volumes, which has 126 bytes for its characters (UDF 2.1.3) and may
/// hold any of them. Empty when the raw name is.
[[nodiscard]] std::u16string udfVolumeName(std::string_view rawName);

} // namespace Tessaron
