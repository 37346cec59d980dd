#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/AudioImageJob.h>

namespace Tessaron::Tool
{

/// What the orders for discs of folders and files, DiscImageOrder and BurnDiscOrder, have in common.
template <typename Order>
void setLayoutOptions(Order *order, const Arguments &arguments)
{
    order->sources = arguments.paths;
    order->volumeName = arguments.volumeName;
    order->filesystems = arguments.filesystems;
    order->relocatesDeepFolders = arguments.relocatesDeepFolders;
    order->isStrict = arguments.strict;
}

/// What becomes tracks of sound, and how; the file of --isrc is read for that. Where an image of it goes is left out.
[[nodiscard]] Problem setSoundOptions(AudioImageOrder *order, const Arguments &arguments);

} // namespace Tessaron::Tool
