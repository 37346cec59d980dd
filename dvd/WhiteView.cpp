#include <QPaintEvent>
#include <QPainter>

#include <TessaronClassesUI/WhiteView.h>

namespace Tessaron
{

WhiteView::WhiteView(QWidget *parent)
    : KRDelegateView(parent)
{
}

void WhiteView::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), Qt::white);
    KRDelegateView::paintEvent(event);
}

} // namespace Tessaron
