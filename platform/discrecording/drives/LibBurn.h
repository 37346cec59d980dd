#pragma once

// Everything of libburn that this folder uses comes by this header, born owned. Its types stay in this folder.
#include <cstdlib>
#include <libburn/libburn.h>
#include <memory>

namespace Tessaron
{

template <auto Free>
struct LibBurnDeleter {
    template <typename Type>
    void operator()(Type *handle) const
    {
        Free(handle);
    }
};

using BurnDiscHandle = std::unique_ptr<burn::burn_disc, LibBurnDeleter<burn::burn_disc_free>>;
using BurnSessionHandle = std::unique_ptr<burn::burn_session, LibBurnDeleter<burn::burn_session_free>>;
using BurnTrackHandle = std::unique_ptr<burn::burn_track, LibBurnDeleter<burn::burn_track_free>>;
using BurnSourceHandle = std::unique_ptr<burn::burn_source, LibBurnDeleter<burn::burn_source_free>>;
using BurnWriteOptionsHandle = std::unique_ptr<burn::burn_write_opts, LibBurnDeleter<burn::burn_write_opts_free>>;

} // namespace Tessaron
