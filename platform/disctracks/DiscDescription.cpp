#include "platform/disctracks/DiscDescription.h"

#include "platform/disctracks/CdrdaoTocReader.h"
#include "platform/disctracks/CloneCDReader.h"

namespace Tessaron
{

DiscDescriptionKind discDescriptionKind(const QByteArray &path)
{
    const QByteArray end = path.right(4).toLower();
    if (end == ".cue")
        return DiscDescriptionKind::CueSheet;
    if (end == ".ccd")
        return DiscDescriptionKind::CloneCD;
    return end == ".toc" ? DiscDescriptionKind::Cdrdao : DiscDescriptionKind::None;
}

QString nameOfDiscDescription(DiscDescriptionKind kind)
{
    switch (kind) {
    case DiscDescriptionKind::CueSheet:
        return QStringLiteral("cue sheet");
    case DiscDescriptionKind::CloneCD:
        return QStringLiteral(".ccd file");
    case DiscDescriptionKind::Cdrdao:
        return QStringLiteral(".toc file");
    case DiscDescriptionKind::None:
        break;
    }
    return {};
}

Result<CueSheet> discDescriptionOfFile(const QByteArray &path, const SoundMeasure &otherSounds)
{
    switch (discDescriptionKind(path)) {
    case DiscDescriptionKind::CloneCD:
        return cloneCDOfFile(path);
    case DiscDescriptionKind::Cdrdao:
        return cdrdaoTocOfFile(path, otherSounds);
    default:
        return cueSheetOfFile(path, otherSounds);
    }
}

} // namespace Tessaron
