#include <TessaronClasses/ZelFileAttribute.h>

#include <cstring>

namespace Tessaron
{

MallocBuffer mallocCopy(QByteArrayView bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    MallocBuffer buffer(static_cast<char *>(std::malloc(size + 1)));
    if (buffer) {
        if (size > 0)
            std::memcpy(buffer.get(), bytes.data(), size);
        buffer.get()[size] = '\0';
    }
    return buffer;
}

_ZelFileAttribute ZelFileAttributeNone_fct()
{
    return {};
}

_TessaronAttributes TessaronFileAttributesNone_fct()
{
    return {};
}

} // namespace Tessaron
