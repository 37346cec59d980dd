#include "platform/disctracks/DiscTrack.h"

namespace Tessaron
{

namespace
{

constexpr std::int32_t audioControl = 0;
constexpr std::int32_t dataControl = 4;
constexpr std::int32_t romSession = 0;
constexpr std::int32_t xaSession = 32;

// Data block types of MMC.
constexpr std::int32_t audioBlocks = 0;
constexpr std::int32_t mode1Blocks = 8;
constexpr std::int32_t formlessBlocks = 9;
constexpr std::int32_t form1Blocks = 10;
constexpr std::int32_t form1BlocksWithSubheader = 11;
constexpr std::int32_t form2Blocks = 12;
constexpr std::int32_t mixedBlocks = 13;

// Main data forms of MMC's cue sheet.
constexpr std::int32_t audioForm = 0;
constexpr std::int32_t mode1Form = 16;
constexpr std::int32_t rawMode1Form = 17;
constexpr std::int32_t xaForm = 32;
constexpr std::int32_t rawXAForm = 33;
constexpr std::int32_t formlessForm = 48;

RecordingNumbers usualNumbers(TrackKind kind, SectorForm form)
{
    const auto numbers = [](std::int32_t mode, std::int32_t dataForm, std::int32_t blockType, std::int32_t session) {
        return RecordingNumbers{mode, dataForm, blockType, session};
    };
    const bool isRaw = form == SectorForm::Raw || form == SectorForm::RawWithSubchannel;
    switch (kind) {
    case TrackKind::Audio:
        if (isRaw)
            return numbers(audioControl, audioForm, audioBlocks, romSession);
        break;
    case TrackKind::Mode1:
        if (isRaw || form == SectorForm::UserData)
            return numbers(dataControl, isRaw ? rawMode1Form : mode1Form, mode1Blocks, romSession);
        break;
    case TrackKind::Mode2Formless:
        if (form == SectorForm::WithoutHeader)
            return numbers(dataControl, formlessForm, formlessBlocks, xaSession);
        if (isRaw)
            return numbers(dataControl, rawXAForm, formlessBlocks, xaSession);
        break;
    case TrackKind::Mode2Form1:
        if (form == SectorForm::UserData)
            return numbers(dataControl, xaForm, form1Blocks, xaSession);
        [[fallthrough]];
    case TrackKind::Mode2Form2:
        if (kind == TrackKind::Mode2Form2 && form == SectorForm::Form2UserData)
            return numbers(dataControl, xaForm, form2Blocks, xaSession);
        [[fallthrough]];
    case TrackKind::Mode2Mixed:
        if (form == SectorForm::WithoutHeader)
            return numbers(dataControl, xaForm, mixedBlocks, xaSession);
        if (isRaw || form == SectorForm::Form2WithSubheader)
            return numbers(dataControl, rawXAForm, form2Blocks, xaSession);
        break;
    case TrackKind::Unstated:
        break;
    }
    return {};
}

} // namespace

RecordingNumbers recordingNumbers(const DiscTrack &track)
{
    const std::optional<SectorForm> form = track.sectorForm();
    RecordingNumbers numbers = form ? usualNumbers(track.kind, *form) : RecordingNumbers{};
    for (const auto member : {&RecordingNumbers::trackMode, &RecordingNumbers::dataForm, &RecordingNumbers::blockType,
                              &RecordingNumbers::sessionFormat}) {
        if (track.recording.*member)
            numbers.*member = track.recording.*member;
    }
    return numbers;
}

TrackKind trackKindOfBlockType(std::optional<std::int32_t> blockType, std::uint32_t blockSize)
{
    if (!blockType)
        return TrackKind::Unstated;
    switch (*blockType) {
    case audioBlocks:
        return TrackKind::Audio;
    case mode1Blocks:
        return TrackKind::Mode1;
    case formlessBlocks:
        return TrackKind::Mode2Formless;
    case form1Blocks:
    case form1BlocksWithSubheader:
        return TrackKind::Mode2Form1;
    case form2Blocks: // sectors with subheaders say themselves which form they are of
        return blockSize == std::uint32_t(SectorForm::Form2UserData) ? TrackKind::Mode2Form2 : TrackKind::Mode2Mixed;
    case mixedBlocks:
        return TrackKind::Mode2Mixed;
    default:
        return TrackKind::Unstated;
    }
}

} // namespace Tessaron
