#include "fuzz/FuzzTarget.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace
{

bool runOver(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        std::fprintf(stderr, "%s cannot be read\n", path.c_str());
        return false;
    }
    // Into memory of exactly the input's size, so that a sanitizer sees a read past its end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

} // namespace

/// Runs a fuzz target, without an engine, over each file given and each file in the folders given.
int main(int argc, char **argv)
{
    std::size_t count = 0;
    bool isFine = argc > 1;
    for (int index = 1; index < argc; ++index) {
        const std::filesystem::path path(argv[index]);
        if (!std::filesystem::is_directory(path)) {
            isFine = runOver(path) && isFine;
            ++count;
            continue;
        }
        for (const auto &entry : std::filesystem::recursive_directory_iterator(path)) {
            if (entry.is_regular_file()) {
                isFine = runOver(entry.path()) && isFine;
                ++count;
            }
        }
    }
    std::printf("%zu inputs\n", count);
    return isFine && count > 0 ? 0 : 1;
}
