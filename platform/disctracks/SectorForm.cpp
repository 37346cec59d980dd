#include "platform/disctracks/SectorForm.h"

namespace Tessaron
{

namespace
{

constexpr std::size_t headerEnd = 16; // behind sync, address and mode
constexpr std::size_t subheaderSize = 8;
constexpr std::size_t form1Size = 2048;
constexpr std::size_t form2Size = 2324;
constexpr std::size_t formlessSize = 2336;
constexpr std::size_t audioSize = 2352;

/// Where the bytes of the form begin in the sector.
constexpr std::size_t firstByte(SectorForm form)
{
    switch (form) {
    case SectorForm::Form2WithSubheader:
    case SectorForm::WithoutHeader:
        return headerEnd;
    default:
        return 0;
    }
}

/// The user data of the kind within a whole sector.
std::optional<SectorPart> partOfSector(TrackKind kind)
{
    switch (kind) {
    case TrackKind::Audio:
        return SectorPart{0, audioSize};
    case TrackKind::Mode1:
        return SectorPart{headerEnd, form1Size};
    case TrackKind::Mode2Formless:
        return SectorPart{headerEnd, formlessSize};
    case TrackKind::Mode2Form1:
    case TrackKind::Mode2Mixed:
        return SectorPart{headerEnd + subheaderSize, form1Size};
    case TrackKind::Mode2Form2:
        return SectorPart{headerEnd + subheaderSize, form2Size};
    case TrackKind::Unstated:
        break;
    }
    return std::nullopt;
}

} // namespace

std::optional<SectorForm> sectorFormOfSize(std::uint64_t bytes)
{
    switch (bytes) {
    case 2048:
    case 2324:
    case 2332:
    case 2336:
    case 2352:
    case 2448:
        return SectorForm(std::uint32_t(bytes));
    default:
        return std::nullopt;
    }
}

std::optional<SectorPart> userDataPart(TrackKind kind, SectorForm form)
{
    const bool isForm1 = kind == TrackKind::Mode1 || kind == TrackKind::Mode2Form1 || kind == TrackKind::Mode2Mixed;
    if (form == SectorForm::UserData)
        return isForm1 || kind == TrackKind::Unstated ? std::optional(SectorPart{0, form1Size}) : std::nullopt;
    if (form == SectorForm::Form2UserData)
        return kind == TrackKind::Mode2Form2 ? std::optional(SectorPart{0, form2Size}) : std::nullopt;
    const std::optional<SectorPart> part = partOfSector(kind);
    const std::size_t first = firstByte(form);
    if (!part || part->offset < first || part->offset - first + part->length > std::size_t(form))
        return std::nullopt;
    if (first == headerEnd && kind == TrackKind::Mode1)
        return std::nullopt; // mode 1 has no sector of this form
    return SectorPart{part->offset - first, part->length};
}

} // namespace Tessaron
