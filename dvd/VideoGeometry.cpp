#include "dvd/VideoGeometry.h"

#include "platform/dvdplayback/DVDPlayback.h"

namespace Tessaron
{

float ratioOfAspect(std::int16_t aspect)
{
    constexpr float wideRatio = 1.7777778F;
    constexpr float oldRatio = 1.3333334F;
    return aspect == kDVDAspectRatio16x9 || aspect == kDVDAspectRatioLetterBox ? wideRatio : oldRatio;
}

QSizeF videoContentSize(std::uint32_t sizeCode, double ratio, const QSizeF &visible, const QSizeF &content,
                        const QSizeF &disc)
{
    const QSizeF asWideAsTheScreen(visible.width(), visible.width() * (1 / ratio));
    switch (sizeCode) {
    case RefitVideo: {
        const double width = ratio * content.height();
        return width > visible.width() ? asWideAsTheScreen : QSizeF(width, content.height());
    }
    case SmallVideo:
        return disc / 2;
    case NormalVideo:
        return disc;
    case MaximumVideo:
        return visible.width() / visible.height() >= ratio ? QSizeF(ratio * visible.height(), visible.height())
                                                           : asWideAsTheScreen;
    default:
        return content;
    }
}

} // namespace Tessaron
