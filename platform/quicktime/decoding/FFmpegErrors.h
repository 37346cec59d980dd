#pragma once

#include "platform/quicktime/MediaErrors.h"

namespace Tessaron
{

/// mediaError() for a code of FFmpeg's libraries. `deed` says what failed, as in "reading".
[[nodiscard]] NSError mediaErrorOfCode(int code, const QByteArray &path, const QString &deed);

} // namespace Tessaron
