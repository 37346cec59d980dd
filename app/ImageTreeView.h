#pragma once

#include <QTreeView>

#include <memory>

class QMimeData;

namespace Tessaron::Desktop
{

/// The tree of what an image holds. Its files have to be taken out before they can be dropped anywhere, which takes
/// time: a drag is asked for once, and begins by drag() when they are there, if the button is still held then.
class ImageTreeView final : public QTreeView
{
    Q_OBJECT

public:
    explicit ImageTreeView(QWidget *parent = nullptr);

    /// The button with which a drag was asked for is still held.
    [[nodiscard]] bool isDragWanted() const;
    /// Lets what is offered be dropped, as copies; returns when it has been, or not.
    void drag(std::unique_ptr<QMimeData> offer);

Q_SIGNALS:
    void dragWanted();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void startDrag(Qt::DropActions actions) override;

private:
    bool m_isDragWanted = false; ///< asked for since the button was pressed
};

} // namespace Tessaron::Desktop
