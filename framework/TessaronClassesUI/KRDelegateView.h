#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"

#include <QWidget>

#include <functional>

namespace Tessaron
{

class KRDelegateView;

/// Answers for the drags over a KRDelegateView, on the main thread. All four functions are needed: what lacks one is
/// refused.
struct KRDelegateViewDelegate {
    CallbackContext context; ///< once it has ended, drags are refused
    /// The actions that a drop would take now; none refuses it.
    std::function<Qt::DropActions(KRDelegateView &view, const QDropEvent &drag)> draggingEntered;
    std::function<Qt::DropActions(KRDelegateView &view, const QDropEvent &drag)> draggingUpdated;
    /// Whether the drop is taken, asked once the user lets go.
    std::function<bool(KRDelegateView &view, const QDropEvent &drag)> prepareForDragOperation;
    /// Takes the drop; false when that failed.
    std::function<bool(KRDelegateView &view, const QDropEvent &drag)> performDragOperation;
};

/// A view that leaves drag and drop to its delegate, and draws the ring of the keyboard focus while something is
/// dragged over it. On the main thread.
class TESSARON_EXPORT KRDelegateView : public QWidget
{
    Q_OBJECT

public:
    explicit KRDelegateView(QWidget *parent = nullptr);

    /// Without a delegate, drags are refused.
    void setDelegate(const KRDelegateViewDelegate &delegate) { m_delegate = delegate; }
    [[nodiscard]] const KRDelegateViewDelegate &delegate() const { return m_delegate; }

    /// The actions that are allowed for drags which begin here: all of them, within the program and beyond.
    [[nodiscard]] Qt::DropActions draggingSourceOperationMaskForLocal(bool isLocal) const;

    // The four operations return what the delegate returns, or nothing and false without one. Qt's events of a drag
    // call them; they accept the action that the sender proposes if it is among those returned, else one of these. A
    // drag that is refused stays the view's, which hears where it goes: the delegate is asked again as it moves.
    Qt::DropActions draggingEntered(const QDropEvent &sender);
    Qt::DropActions draggingUpdated(const QDropEvent &sender);
    void draggingExited();
    bool prepareForDragOperation(const QDropEvent &sender);
    bool performDragOperation(const QDropEvent &sender);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    KRDelegateViewDelegate m_delegate;
    bool m_hasFocus = false; ///< something is dragged over the view
};

} // namespace Tessaron
