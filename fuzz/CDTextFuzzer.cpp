#include "fuzz/FuzzTarget.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/Subchannel.h"

#include <algorithm>

namespace
{

using namespace Tessaron;

void readAndCheck(const QByteArray &packs)
{
    const Result<CDText> text = cdTextOfPacks(packs);
    if (!text) {
        require(!text.error().localizedFailureReason().isEmpty(), "an error says what is wrong");
        return;
    }
    std::size_t most = 1;
    for (const CDTextBlock &block : text->blocks) {
        for (const auto &[kind, texts] : block.texts)
            most = std::max(most, block.firstTrack + texts.size());
    }
    const Result<QByteArray> again = cdTextPacks(*text, std::uint32_t(std::min<std::size_t>(most, 99)));
    require(!again || cdTextOfPacks(*again), "packs that were made are read");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    QByteArray packs(reinterpret_cast<const char *>(bytes), qsizetype(size));
    readAndCheck(packs);
    // A fuzzing engine hardly ever finds a checksum that fits.
    for (qsizetype at = 0; at + qsizetype(cdTextPackSize) <= packs.size(); at += qsizetype(cdTextPackSize)) {
        auto *const pack = reinterpret_cast<std::uint8_t *>(packs.data()) + at;
        const std::uint16_t checksum = subchannelChecksum(pack, 16);
        pack[16] = std::uint8_t(checksum >> 8);
        pack[17] = std::uint8_t(checksum);
    }
    readAndCheck(packs);
    return 0;
}
