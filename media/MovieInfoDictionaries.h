#pragma once

#include "platform/quicktime/MovieDescription.h"

#include <QVariantList>
#include <QVariantMap>

namespace Tessaron
{

// What KRMovieInfo tells its receivers, made of a description; the keys are those of KRMovieInfo.h.

/// Those tracks of sound and pictures whose samples are described.
[[nodiscard]] QVariantList trackDictionaries(const MovieDescription &movie);

[[nodiscard]] QVariantMap movieDictionary(const MovieDescription &movie);

/// The texts under the five keys that are known, in either order of their bytes: up to 255 bytes and to the first zero
/// byte. One that is not UTF-8 is left out, a later one replaces an earlier one.
[[nodiscard]] QVariantMap metadataDictionary(const std::vector<MovieMetadataItem> &items);

} // namespace Tessaron
