#include "platform/coreservices/IconFamily.h"
#include "platform/coreservices/IconFamilyFormat.h"
#include "platform/foundation/ByteOrder.h"

#include <QBuffer>
#include <QImageReader>

#include <map>
#include <utility>

namespace Tessaron
{

namespace
{

/// No member serves larger pictures; a PNG that says otherwise is not decoded.
constexpr int largestSide = 1024;

using Members = std::vector<std::pair<std::string_view, QByteArrayView>>;

qsizetype lengthAt(QByteArrayView bytes, qsizetype at)
{
    return loadBigEndian<std::uint32_t>(reinterpret_cast<const std::uint8_t *>(bytes.data()) + at);
}

Members membersOf(QByteArrayView family)
{
    Members members;
    if (family.size() < iconFamilyHeaderBytes || !family.startsWith("icns"))
        return members;
    qsizetype end = qMin(family.size(), lengthAt(family, 4));
    for (qsizetype at = iconFamilyHeaderBytes; end - at >= iconFamilyHeaderBytes;) {
        const qsizetype length = lengthAt(family, at + 4);
        if (length < iconFamilyHeaderBytes || length > end - at)
            break;
        members.emplace_back(std::string_view(family.data() + at, 4),
                             family.sliced(at + iconFamilyHeaderBytes, length - iconFamilyHeaderBytes));
        at += length;
    }
    return members;
}

QByteArrayView dataOf(const Members &members, std::string_view type)
{
    for (const auto &[memberType, data] : members) {
        if (memberType == type)
            return data;
    }
    return {};
}

QImage decodeColours(const IconFamilyMember &member, QByteArrayView colours, QByteArrayView mask)
{
    const qsizetype pixels = qsizetype(member.side) * member.side;
    if (member.colours == "it32") {
        if (colours.size() < thumbnailPadding)
            return {};
        colours = colours.sliced(thumbnailPadding);
    }
    QByteArray red;
    QByteArray green;
    QByteArray blue;
    if (!takeRunLengthCoded(colours, pixels, red) || !takeRunLengthCoded(colours, pixels, green)
        || !takeRunLengthCoded(colours, pixels, blue))
        return {};
    QImage image(member.side, member.side, QImage::Format_ARGB32);
    qsizetype at = 0;
    for (int row = 0; row < member.side; ++row) {
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int column = 0; column < member.side; ++column, ++at) {
            const int alpha = mask.size() == pixels ? static_cast<unsigned char>(mask[at]) : 0xFF;
            line[column] = qRgba(static_cast<unsigned char>(red[at]), static_cast<unsigned char>(green[at]),
                                 static_cast<unsigned char>(blue[at]), alpha);
        }
    }
    return image;
}

QImage decodePng(QByteArrayView data)
{
    QByteArray bytes = data.toByteArray();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > largestSide || size.height() > largestSide)
        return {};
    return reader.read();
}

} // namespace

std::vector<QImage> imagesFromIconFamily(QByteArrayView family)
{
    const Members members = membersOf(family);
    std::vector<QImage> images;
    for (const auto &[type, data] : members) {
        for (const IconFamilyMember &member : iconFamilyMembers) {
            QImage image;
            if (!member.colours.empty() && type == member.colours)
                image = decodeColours(member, data, dataOf(members, member.mask));
            else if (!member.png.empty() && type == member.png)
                image = decodePng(data);
            if (!image.isNull())
                images.push_back(image);
        }
    }
    return images;
}

QImage imageFromIconFamily(QByteArrayView family, int preferredSide)
{
    QImage best;
    for (const QImage &image : imagesFromIconFamily(family)) {
        const bool isEnough = image.width() >= preferredSide && preferredSide > 0;
        const bool bestIsEnough = best.width() >= preferredSide && preferredSide > 0;
        const bool isBetter = bestIsEnough ? isEnough && image.width() < best.width() : image.width() > best.width();
        if (best.isNull() || isBetter)
            best = image;
    }
    return best;
}

} // namespace Tessaron
