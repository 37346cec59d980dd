#include "platform/discrecording/objects/DRStorageReport.h"

namespace Tessaron
{

DRStorageReport::~DRStorageReport() = default;

QString discTreeName(DRDiscTree tree)
{
    switch (tree) {
    case DRDiscTree::ISO9660:
        return QStringLiteral("iso9660");
    case DRDiscTree::RockRidge:
        return QStringLiteral("rockridge");
    case DRDiscTree::Joliet:
        return QStringLiteral("joliet");
    case DRDiscTree::UDF:
        return QStringLiteral("udf");
    case DRDiscTree::HFSPlus:
        return QStringLiteral("hfs+");
    }
    return {};
}

QString discTreeTitle(DRDiscTree tree)
{
    switch (tree) {
    case DRDiscTree::ISO9660:
        return QStringLiteral("ISO 9660");
    case DRDiscTree::RockRidge:
        return QStringLiteral("Rock Ridge");
    case DRDiscTree::Joliet:
        return QStringLiteral("Joliet");
    case DRDiscTree::UDF:
        return QStringLiteral("UDF");
    case DRDiscTree::HFSPlus:
        return QStringLiteral("HFS+");
    }
    return {};
}

} // namespace Tessaron
