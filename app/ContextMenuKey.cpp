#include "app/ContextMenuKey.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QWidget>

#include <algorithm>

namespace Tessaron::Desktop
{

namespace
{

bool isContextMenuKey(const QKeyEvent &key)
{
    return key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier && !key.isAutoRepeat();
}

/// Where the menu of a widget belongs that was asked for by a key: at the cursor of a text, or the current row.
QPoint menuPlace(const QWidget &widget)
{
    const QPoint wanted = widget.inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    const QRect area = widget.rect(); // the row may be scrolled out of it
    return {std::clamp(wanted.x(), area.left(), area.right()), std::clamp(wanted.y(), area.top(), area.bottom())};
}

} // namespace

bool ContextMenuKey::eventFilter(QObject *watched, QEvent *event)
{
    // A menu that is open has its keys itself.
    if (event->type() != QEvent::KeyPress || QApplication::activePopupWidget())
        return false;
    auto *const widget = qobject_cast<QWidget *>(watched);
    if (!widget || !isContextMenuKey(*static_cast<QKeyEvent *>(event)))
        return false;
    const QPoint place = menuPlace(*widget);
    QContextMenuEvent wanted(QContextMenuEvent::Keyboard, place, widget->mapToGlobal(place));
    QCoreApplication::sendEvent(widget, &wanted);
    return true;
}

} // namespace Tessaron::Desktop
