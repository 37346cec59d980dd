#include "platform/coreservices/IconFamily.h"
#include "platform/coreservices/IconFamilyFormat.h"
#include "platform/foundation/ByteOrder.h"

#include <QBuffer>

#include <algorithm>

namespace Tessaron
{

namespace
{

void appendLength(QByteArray &to, qsizetype length)
{
    std::uint8_t bytes[4];
    storeBigEndian<std::uint32_t>(bytes, static_cast<std::uint32_t>(length));
    to.append(reinterpret_cast<const char *>(bytes), sizeof bytes);
}

void appendMember(QByteArray &to, std::string_view type, const QByteArray &data)
{
    to.append(type.data(), static_cast<qsizetype>(type.size()));
    appendLength(to, data.size() + iconFamilyHeaderBytes);
    to.append(data);
}

/// One byte of each pixel, row by row; `shift` names the channel in 0xAARRGGBB.
QByteArray channelOf(const QImage &image, int shift)
{
    QByteArray channel;
    channel.reserve(qsizetype(image.width()) * image.height());
    for (int row = 0; row < image.height(); ++row) {
        const auto *const pixels = reinterpret_cast<const QRgb *>(image.constScanLine(row));
        for (int column = 0; column < image.width(); ++column)
            channel += static_cast<char>((pixels[column] >> shift) & 0xFF);
    }
    return channel;
}

QByteArray coloursOf(const QImage &image, const IconFamilyMember &member)
{
    QByteArray data;
    if (member.colours == "it32")
        data.append(thumbnailPadding, '\0');
    for (const int shift : {16, 8, 0})
        appendRunLengthCoded(data, channelOf(image, shift));
    return data;
}

QByteArray pngOf(const QImage &image)
{
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? data : QByteArray();
}

} // namespace

QByteArray iconFamilyFromImages(const std::vector<QImage> &images, std::uint32_t selectors)
{
    QByteArray members;
    for (const IconFamilyMember &member : iconFamilyMembers) {
        const auto found = std::find_if(images.begin(), images.end(), [&](const QImage &image) {
            return image.width() == member.side && image.height() == member.side;
        });
        if (found == images.end())
            continue;
        const QImage image = found->convertToFormat(QImage::Format_ARGB32);
        if ((selectors & member.colourSelector) && !member.colours.empty())
            appendMember(members, member.colours, coloursOf(image, member));
        if ((selectors & member.maskSelector) && !member.mask.empty())
            appendMember(members, member.mask, channelOf(image, 24));
        if ((selectors & member.colourSelector) && !member.png.empty()) {
            const QByteArray png = pngOf(image);
            if (!png.isEmpty())
                appendMember(members, member.png, png);
        }
    }
    if (members.isEmpty())
        return {};
    QByteArray family("icns");
    appendLength(family, members.size() + iconFamilyHeaderBytes);
    return family.append(members);
}

} // namespace Tessaron
