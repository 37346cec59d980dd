#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>

#include <TessaronClassesUI/ControlWindow.h>

namespace Tessaron
{

ControlWindow::ControlWindow(QWidget *parent)
    : QWidget(parent, Qt::Tool)
{
    // The video's keys stay its own. Windows are asked once, when the system makes them.
    setAttribute(Qt::WA_ShowWithoutActivating);
}

void ControlWindow::awakeFromNib()
{
    if (!m_isAwake) {
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &ControlWindow::followApplication);
        m_isAwake = true;
    }
    moveToCorner();
}

void ControlWindow::moveToCorner()
{
    const QRect visible = screen()->availableGeometry();
    m_corner = QPoint(visible.left(), visible.top() + visible.height() - frameGeometry().height());
    move(m_corner);
}

void ControlWindow::followApplication(Qt::ApplicationState state)
{
    if (state == Qt::ApplicationActive) {
        if (std::exchange(m_isHiddenByApplication, false))
            show();
    } else if (isVisible()) {
        m_isHiddenByApplication = true;
        hide();
    }
}

bool ControlWindow::event(QEvent *event)
{
    const bool isHandled = QWidget::event(event);
    // Only now the system has told how high the frame is that it has given the window.
    if (event->type() == QEvent::WindowActivate && m_isAwake && !std::exchange(m_knowsFrame, true) && pos() == m_corner)
        moveToCorner();
    return isHandled;
}

void ControlWindow::keyPressEvent(QKeyEvent *event)
{
    if (m_delegate.onKeyDown && m_delegate.context.isAlive() && m_delegate.onKeyDown(*event))
        QCoreApplication::removePostedEvents(this, QEvent::KeyPress);
    else
        QWidget::keyPressEvent(event);
}

} // namespace Tessaron
