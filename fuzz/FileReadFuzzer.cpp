#include "fuzz/FuzzTarget.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/DataAdditions.h>
#include <TessaronClasses/FileReadAdditions.h>

#include <algorithm>
#include <sys/mman.h>
#include <vector>

namespace
{

using namespace Tessaron;

/// The first byte says how many bytes are to be made; behind them must be room for one more run.
void unpack(NSFileHandle &handle, std::size_t totalLength)
{
    constexpr std::size_t slack = 128;
    constexpr char untouched = 0x5A;
    std::vector<char> output(totalLength + slack + 1, untouched);
    handle.seekToFileOffset(0);
    const OSStatus status = unpackBits(handle, output.data(), totalLength);
    require(status == noErr || status == eofErr, "a status of two");
    require(output.back() == untouched, "no more than one run too far");
}

void search(NSFileHandle &handle, const QByteArray &bytes, const QByteArray &pattern)
{
    handle.seekToFileOffset(0);
    const std::uint64_t found = offsetOfBytesWithBuffer(handle, pattern.constData(), std::uint32_t(pattern.size()),
                                                        std::uint64_t(bytes.size()));
    require(found == 0 || bytes.sliced(qsizetype(found)).startsWith(pattern), "the pattern is where it was found");
    const NSRange range = rangeOfData(bytes, pattern);
    require(range.length == 0 || bytes.sliced(qsizetype(range.location)).startsWith(pattern),
            "the range holds the pattern");
}

void readTexts(NSFileHandle &handle)
{
    handle.seekToFileOffset(0);
    QString text;
    while (readPascalString(handle, &text, NSStringEncoding::UTF8) == noErr
           && readString(handle, &text, NSStringEncoding::ShiftJIS, 3) == noErr) { }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const UniqueDescriptor file(::memfd_create("input", MFD_CLOEXEC));
    require(file && writeFully(file.get(), bytes, size) == 0, "there is memory for the input");
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(QStringLiteral("/proc/self/fd/%1").arg(file.get()));
    require(handle != nullptr, "the input can be opened");
    const QByteArray input(reinterpret_cast<const char *>(bytes), qsizetype(size));
    unpack(*handle, size > 0 ? std::size_t(bytes[0]) * 4 : 0);
    search(*handle, input, input.sliced(input.size() / 2, std::min<qsizetype>(input.size() / 4, 6)));
    readTexts(*handle);
    return 0;
}
