#include "fuzz/DiscDescriptionPromises.h"

#include "platform/disctracks/CdrdaoTocReader.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(bytes), qsizetype(size));
    checkDescription(Tessaron::cdrdaoTocOfText(text, describedFiles()));
    return 0;
}
