#pragma once

#include "platform/discimage/source/DiscImageSource.h"

#include <memory>

namespace Tessaron
{

/// The library for DVDs reads plain sectors from the begin of a file and no others. Images of other forms it can only
/// read through functions of a library that it loads, if that is there; instead of it, it gets those of this file,
/// which read the sectors' data by our own reader of images, and do nothing else: nothing is unscrambled.
namespace ImageInput
{

/// From now on the library reads that image, by whatever path it asks for it. For a process that serves one disc.
void use(std::shared_ptr<const DiscImageSource> source);

/// What dlopen() answers the library with; null for images that it reads itself.
[[nodiscard]] void *handle();

} // namespace ImageInput

} // namespace Tessaron
