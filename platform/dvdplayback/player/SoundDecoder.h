#pragma once

#include "platform/dvdplayback/SharedSound.h"
#include "platform/dvdplayback/player/DecoderHandles.h"
#include "platform/dvdplayback/player/FrameSplitter.h"
#include "platform/dvdplayback/player/PacketSplitter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Tessaron
{

/// Decoded sound in the form that a device takes.
struct DecodedSound {
    std::vector<float> samples; ///< frame after frame
    std::optional<std::int64_t> time; ///< of the first frame, 90 kHz; absent for what follows on the piece before
};

/// Decodes one kind of sound of a disc into what a device takes: the channels of more speakers are mixed with the
/// usual weights (ITU-R BS.775) and made so quiet that nothing is clipped. Broken bytes give broken sound, or none.
class SoundDecoder
{
public:
    /// Null for a kind that is not sound, and without a decoder or memory.
    [[nodiscard]] static std::unique_ptr<SoundDecoder> create(ElementaryKind kind, const SoundForm &form);

    using Visitor = std::function<void(DecodedSound)>;
    /// Takes the next bytes of the stream, a sector's at most, and gives the sound that is complete. The time is that
    /// of the first frame that begins in the bytes.
    void add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor);
    /// The stream ends here: gives the sound that is left.
    void drain(const Visitor &visitor);
    /// The stream goes on elsewhere: forgets what was begun.
    void forget();
    [[nodiscard]] ElementaryKind kind() const { return m_kind; }

private:
    SoundDecoder(ElementaryKind kind, const SoundForm &form);
    void decode(AVPacket *packet, const Visitor &visitor);
    void convert(const AVFrame &frame, const Visitor &visitor);
    [[nodiscard]] bool prepareConversion(const AVFrame &frame);

    const ElementaryKind m_kind;
    const SoundForm m_form;
    DecoderContext m_context;
    FrameSplitter m_packets;
    DecodedFrame m_frame;
    Converter m_converter; ///< null before the first frame
    ChannelLayout m_layout; ///< what it converts from
    int m_format = -1;
    int m_rate = 0;
};

} // namespace Tessaron
