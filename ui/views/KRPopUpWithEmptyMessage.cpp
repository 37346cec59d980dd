#include <QApplication>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <TessaronClassesUI/KRPopUpWithEmptyMessage.h>

namespace Tessaron
{

namespace
{

constexpr int fontPixels = 13;
constexpr QMargins marginsOfTitle(5, 3, 5, 0); ///< left, top, right, bottom, in points
constexpr int marginOfMessage = 2;

} // namespace

KRPopUpWithEmptyMessage::KRPopUpWithEmptyMessage(QWidget *parent)
    : QComboBox(parent)
{
}

void KRPopUpWithEmptyMessage::setEmptyMessage(const QString &message)
{
    m_emptyMessage = message;
    update();
}

void KRPopUpWithEmptyMessage::mousePressEvent(QMouseEvent *event)
{
    if (count() < 2)
        event->accept();
    else
        QComboBox::mousePressEvent(event);
}

/// What does not fit ends in an ellipsis.
void KRPopUpWithEmptyMessage::paintEvent(QPaintEvent *event)
{
    if (count() >= 2) {
        QComboBox::paintEvent(event);
        return;
    }
    QFont font = QApplication::font("QLabel");
    font.setPixelSize(fontPixels);
    const bool hasItem = count() == 1;
    const QRect frame = hasItem ? rect().marginsRemoved(marginsOfTitle)
                                : rect().adjusted(marginOfMessage, marginOfMessage, -marginOfMessage, -marginOfMessage);
    const Qt::Alignment alignment = hasItem ? Qt::AlignLeft | Qt::AlignTop : Qt::AlignCenter;
    QPainter painter(this);
    painter.setFont(font);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter.drawText(
        frame, int(alignment) | Qt::TextSingleLine,
        QFontMetrics(font).elidedText(hasItem ? currentText() : m_emptyMessage, Qt::ElideRight, frame.width()));
}

} // namespace Tessaron
