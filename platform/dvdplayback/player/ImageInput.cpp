#include "platform/dvdplayback/player/ImageInput.h"

#include <dlfcn.h>
#include <utility>

namespace
{

constexpr std::uint64_t blockSize = 2048;

std::shared_ptr<const Tessaron::DiscImageSource> &imageInUse()
{
    static std::shared_ptr<const Tessaron::DiscImageSource> source;
    return source;
}

} // namespace

namespace Tessaron::ImageInput
{

void use(std::shared_ptr<const DiscImageSource> source)
{
    imageInUse() = std::move(source);
}

void *handle()
{
    // The program itself, which has the functions below.
    return imageInUse() ? ::dlmopen(LM_ID_BASE, nullptr, RTLD_NOW) : nullptr;
}

} // namespace Tessaron::ImageInput

// The names and forms that the library asks for.

extern "C" {

struct dvdcss_s {
    std::uint64_t block = 0;
};

__attribute__((visibility("default"))) dvdcss_s *dvdcss_open(const char * /*path*/)
{
    return imageInUse() ? new dvdcss_s : nullptr;
}

__attribute__((visibility("default"))) int dvdcss_close(dvdcss_s *input)
{
    delete input;
    return 0;
}

__attribute__((visibility("default"))) int dvdcss_seek(dvdcss_s *input, int block, int /*flags*/)
{
    if (block < 0)
        return -1;
    input->block = std::uint64_t(block);
    return block;
}

/// How many blocks were read, fewer at the image's end; -1 when it cannot be read.
__attribute__((visibility("default"))) int dvdcss_read(dvdcss_s *input, void *buffer, int blocks, int /*flags*/)
{
    if (blocks < 0)
        return -1;
    const std::uint64_t all = imageInUse()->length() / blockSize;
    const std::uint64_t left = input->block < all ? all - input->block : 0;
    const std::uint64_t count = std::min(std::uint64_t(blocks), left);
    if (imageInUse()->read(input->block * blockSize, buffer, std::size_t(count * blockSize)))
        return -1;
    input->block += count;
    return int(count);
}

} // extern "C"
