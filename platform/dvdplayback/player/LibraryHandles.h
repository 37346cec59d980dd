#pragma once

// What the libraries for DVDs allocate, owned from birth. For the sources of this folder only: no other sees their
// types.

extern "C" {
#include <dvdread/dvd_reader.h>
#include <dvdread/dvd_udf.h>
#include <dvdread/ifo_read.h>
#include <dvdread/ifo_types.h>
}

#include <memory>

namespace Tessaron
{

/// Calls a function of a library that frees.
template <auto free>
struct FreeBy {
    template <typename Type>
    void operator()(Type *object) const
    {
        free(object);
    }
};

using DiscReader = std::unique_ptr<dvd_reader_t, FreeBy<DVDClose>>;
using DiscFile = std::unique_ptr<dvd_file_t, FreeBy<DVDCloseFile>>;
using DiscTables = std::unique_ptr<ifo_handle_t, FreeBy<ifoClose>>;

} // namespace Tessaron
