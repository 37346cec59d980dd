#include "fuzz/DiscDescriptionPromises.h"

#include "platform/disctracks/CloneCDReader.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(bytes), qsizetype(size));
    checkDescription(Tessaron::cloneCDOfText(text, "disc.img", describedFiles()));
    return 0;
}
