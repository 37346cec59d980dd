#include "platform/foundation/NSBundle.h"

#include <QImage>
#include <QPaintEvent>
#include <QPainter>

#include <TessaronClassesUI/TopGrayGradient.h>

namespace Tessaron
{

namespace
{

/// Read when the first of these views is made, and kept for all.
const QImage &grayImage()
{
    static const QImage image(NSBundle::bundleWithIdentifier(frameworkBundleIdentifier)
                                  ->pathForResource(QStringLiteral("gray"), QStringLiteral("png")));
    return image;
}

} // namespace

TopGrayGradient::TopGrayGradient(QWidget *parent)
    : QWidget(parent)
{
    grayImage();
}

TopGrayGradient *TopGrayGradient::initWithFrame(const QRect &frame, QWidget *parent)
{
    auto *const view = new TopGrayGradient(parent);
    view->setGeometry(frame);
    return view;
}

QSize TopGrayGradient::sizeHint() const
{
    return {0, int(height())};
}

void TopGrayGradient::paintEvent(QPaintEvent *)
{
    QPainter(this).drawImage(QRectF(0, 0, width(), TopGrayGradient::height()), grayImage(), grayImage().rect());
}

} // namespace Tessaron
