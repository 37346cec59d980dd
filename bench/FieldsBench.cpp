// Reads all numbers of 32 bits of a file and prints their sum:
//   fields_bench handle|stdio FILE
// "handle" reads each by readBigUnsignedInt() or, every other one, by readLittleUnsignedInt(); "stdio" by fread(), for
// comparison.

#include <TessaronClasses/FileReadAdditions.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

using namespace Tessaron;

namespace
{

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

std::uint64_t sumByHandle(const char *path)
{
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(QString::fromLocal8Bit(path));
    std::uint64_t sum = 0;
    std::uint32_t big = 0, little = 0;
    while (handle && readBigUnsignedInt(*handle, &big) == noErr) {
        sum += big;
        if (readLittleUnsignedInt(*handle, &little) == noErr)
            sum += little;
    }
    return sum;
}

std::uint64_t sumByStdio(const char *path)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "rb"));
    std::uint64_t sum = 0;
    std::uint32_t number = 0;
    static_assert(std::endian::native == std::endian::little);
    for (bool isBig = true; file && std::fread(&number, sizeof number, 1, file.get()) == 1; isBig = !isBig)
        sum += isBig ? __builtin_bswap32(number) : number;
    return sum;
}

} // namespace

int main(int argc, char **argv)
{
    const bool isHandle = argc == 3 && std::strcmp(argv[1], "handle") == 0;
    if (argc != 3 || (!isHandle && std::strcmp(argv[1], "stdio") != 0)) {
        std::fputs("usage: fields_bench handle|stdio FILE\n", stderr);
        return 2;
    }
    const std::uint64_t sum = isHandle ? sumByHandle(argv[2]) : sumByStdio(argv[2]);
    std::printf("%llu\n", static_cast<unsigned long long>(sum));
    return sum != 0 ? 0 : 1;
}
