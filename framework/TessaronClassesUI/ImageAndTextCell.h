#pragma once

#include "platform/foundation/Export.h"

#include <QImage>
#include <QRectF>
#include <QStyledItemDelegate>

#include <memory>

class QLineEdit;

namespace Tessaron
{

/// Draws and edits the items of a view with an image in front of their text. The image stands 3 points from the left
/// edge of the cell, centred in its height; the text has the rest.
///
/// setImage() gives all items the same image. Without it, each item shows its own from the model (Qt::DecorationRole:
/// an icon in the size that the view asks for, an image or a pixmap), and an item that has no image is drawn as by any
/// other item delegate. Sizes are in points: an image with a device pixel ratio of 2 takes half as many as it has
/// pixels. On the main thread.
class TESSARON_EXPORT ImageAndTextCell : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit ImageAndTextCell(QObject *parent = nullptr);

    /// A null image takes the present one away. Views that are shown have to be updated by the caller.
    void setImage(const QImage &image);
    [[nodiscard]] QImage image() const { return m_image; }
    /// A cell of its own, without a parent, with the same image and the same factory of editors, which stays its
    /// owner's.
    [[nodiscard]] std::unique_ptr<ImageAndTextCell> copy() const;

    /// Where the set image is drawn in the frame of a cell, y counted downwards. A null rectangle without an image.
    [[nodiscard]] QRectF imageFrameForCellFrame(const QRectF &cellFrame) const;
    /// What the set image leaves of the frame of a cell; all of it without an image.
    [[nodiscard]] QRectF textFrameForCellFrame(const QRectF &cellFrame) const;

    /// The size that the base class wants for the text, wider by that of the image and 3 points; without an image by 3
    /// points.
    [[nodiscard]] QSize cellSize(const QStyleOptionViewItem &option, const QModelIndex &index) const;

    /// Places an editor of the view over the text of a cell with this frame and gives it the keyboard. What it holds is
    /// left to the caller.
    void editWithFrame(const QRect &cellFrame, QWidget &inView, QLineEdit &editor) const;
    /// The same, with a part of the editor's text selected; a length of 0 puts the cursor there.
    void selectWithFrame(const QRect &cellFrame, QWidget &inView, QLineEdit &editor, int start, int length) const;

    /// Draws an item into a frame of the painter's own coordinates. Where these count y upwards (a painter whose
    /// transformation turns the y axis), the image is still upright.
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;

protected:
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
    /// Leaves out the model's own image, which this class draws.
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    [[nodiscard]] QImage imageOf(const QStyleOptionViewItem &option, const QModelIndex &index) const;

    QImage m_image;
};

} // namespace Tessaron
