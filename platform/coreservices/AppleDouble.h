#pragma once

#include "platform/coreservices/ForkAttributes.h"

#include <QByteArray>

#include <optional>

namespace Tessaron
{

/// What an AppleDouble file (RFC 1740) holds of the file it belongs to, as far as it is used here.
struct AppleDouble {
    FinderInfoBytes finderInfo = {};
    QByteArray resourceFork;

    friend bool operator==(const AppleDouble &, const AppleDouble &) = default;
};

/// No value for bytes that are not an AppleDouble file. Safe for any bytes.
[[nodiscard]] std::optional<AppleDouble> appleDoubleFromBytes(QByteArrayView bytes);
[[nodiscard]] QByteArray bytesOfAppleDouble(const AppleDouble &contents);

} // namespace Tessaron
