#include "dvd/VideoView.h"

#include "dvd/GpuPicture.h"

#include "platform/dvdplayback/DVDVideoFrames.h"
#include "platform/foundation/MainThread.h"

#include <QPainter>

namespace Tessaron
{

namespace
{

/// The view that pictures go to: the one that was made last.
VideoView *currentView = nullptr;

} // namespace

VideoView::VideoView(QWidget *parent)
    : QWidget(parent)
    , m_isAsked(std::make_shared<std::atomic<bool>>(false))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    if (GpuPicture::isToBeUsed())
        m_gpu = new GpuPicture(&m_picture, this);
    currentView = this;
    setDVDFrameHearer([this, isAsked = m_isAsked, life = CallbackContext(m_isAsked)] {
        // One that is not drawn yet makes room for the next one.
        if (isAsked->exchange(true))
            return;
        performOnMainThread([this, life] {
            if (life.isAlive())
                takePicture();
        });
    });
}

VideoView::~VideoView()
{
    if (currentView != this)
        return;
    setDVDFrameHearer({});
    currentView = nullptr;
}

void VideoView::takePicture()
{
    m_isAsked->store(false);
    if (currentView != this || !takeDVDFrame(&m_picture))
        return;
    if (m_gpu)
        m_gpu->takePicture();
    else
        update();
}

void VideoView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_gpu)
        m_gpu->setGeometry(rect());
}

void VideoView::paintEvent(QPaintEvent * /*event*/)
{
    if (m_gpu)
        return;
    QPainter painter(this);
    if (m_picture.isNull()) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(rect(), m_picture);
}

} // namespace Tessaron
