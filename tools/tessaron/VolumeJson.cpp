#include "tools/tessaron/VolumeJson.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "tools/tessaron/JsonWriter.h"

#include <QDateTime>

namespace Tessaron::Tool
{

namespace
{

void writeTime(JsonWriter &writer, const char *name, const std::optional<VolumeTime> &time)
{
    writer.key(name);
    if (time)
        writer.value(QDateTime::fromSecsSinceEpoch(time->seconds, Qt::UTC).toString(Qt::ISODate));
    else
        writer.null();
}

} // namespace

QString volumeKindKey(VolumeKind kind)
{
    switch (kind) {
    case VolumeKind::ISO9660:
        return QStringLiteral("iso9660");
    case VolumeKind::RockRidge:
        return QStringLiteral("rockridge");
    case VolumeKind::Joliet:
        return QStringLiteral("joliet");
    case VolumeKind::UDF:
        return QStringLiteral("udf");
    case VolumeKind::HFSPlus:
        return QStringLiteral("hfs+");
    }
    return {};
}

void writeVolumeFacts(JsonWriter &writer, const DiscVolumeFacts &facts)
{
    writer.member("name", facts.name);
    writer.member("offset", facts.offset);
    writer.member("blockSize", facts.blockSize);
    writer.member("blocks", facts.blockCount);
    writeTime(writer, "created", facts.created);
    writeTime(writer, "modified", facts.modified);
}

void writeImageError(JsonWriter &writer, const QByteArray &path, const NSError &error)
{
    writer.beginObject();
    writer.pathMember("path", path);
    writer.member("message", error.localizedFailureReason());
    if (const QVariant offset = error.userInfo().value(DiscImageErrorOffsetKey); offset.isValid())
        writer.member("offset", offset.toULongLong());
    writer.endObject();
}

} // namespace Tessaron::Tool
