#include <QApplication>
#include <QIcon>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

#include <TessaronClassesUI/ImageAndTextCell.h>
#include <algorithm>
#include <cmath>

namespace Tessaron
{

namespace
{

constexpr qreal marginBeforeImage = 3;

qreal widthOfSlice(const QImage &image)
{
    return image.isNull() ? 0 : image.deviceIndependentSize().width() + marginBeforeImage;
}

QRectF imageFrame(const QImage &image, const QRectF &cellFrame)
{
    if (image.isNull())
        return {};
    const QSizeF size = image.deviceIndependentSize();
    return {{cellFrame.x() + marginBeforeImage, cellFrame.y() + std::ceil((cellFrame.height() - size.height()) / 2)},
            size};
}

/// The slice for an image that is wider than the cell takes all of it.
QRectF textFrame(const QImage &image, const QRectF &cellFrame)
{
    return cellFrame.adjusted(std::min(widthOfSlice(image), cellFrame.width()), 0, 0, 0);
}

/// The same in whole points, for what Qt places by them. An edge inside a point goes to the right of it: the image
/// keeps all that is its own.
QRect textRectangle(const QImage &image, const QRect &cellFrame)
{
    const int slice = std::min(int(std::ceil(widthOfSlice(image))), cellFrame.width());
    return cellFrame.adjusted(slice, 0, 0, 0);
}

bool countsUpwards(const QPainter &painter)
{
    return painter.worldTransform().m22() < 0;
}

/// It is the lower edge that is rounded, towards greater y: half a point that is left over when the image is centred
/// goes below it where y counts upwards, above it elsewhere.
void drawImage(QPainter &painter, const QImage &image, const QRectF &cellFrame)
{
    QRectF frame = imageFrame(image, cellFrame);
    if (!countsUpwards(painter)) {
        frame.moveBottom(cellFrame.y() + std::ceil((cellFrame.height() + frame.height()) / 2));
        painter.drawImage(frame, image);
        return;
    }
    painter.save();
    painter.translate(frame.x(), frame.y() + frame.height());
    painter.scale(1, -1);
    painter.drawImage(QRectF({0, 0}, frame.size()), image);
    painter.restore();
}

const QStyle &styleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? *option.widget->style() : *QApplication::style();
}

} // namespace

ImageAndTextCell::ImageAndTextCell(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

void ImageAndTextCell::setImage(const QImage &image)
{
    m_image = image;
}

std::unique_ptr<ImageAndTextCell> ImageAndTextCell::copy() const
{
    auto result = std::make_unique<ImageAndTextCell>();
    result->m_image = m_image;
    result->setItemEditorFactory(itemEditorFactory());
    return result;
}

QRectF ImageAndTextCell::imageFrameForCellFrame(const QRectF &cellFrame) const
{
    return imageFrame(m_image, cellFrame);
}

QRectF ImageAndTextCell::textFrameForCellFrame(const QRectF &cellFrame) const
{
    return textFrame(m_image, cellFrame);
}

QImage ImageAndTextCell::imageOf(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (!m_image.isNull())
        return m_image;
    const QVariant decoration = index.data(Qt::DecorationRole);
    if (decoration.metaType() == QMetaType::fromType<QImage>())
        return decoration.value<QImage>();
    if (decoration.metaType() == QMetaType::fromType<QPixmap>())
        return decoration.value<QPixmap>().toImage();
    if (decoration.metaType() != QMetaType::fromType<QIcon>())
        return {};
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    const qreal ratio = option.widget ? option.widget->devicePixelRatioF() : qGuiApp->devicePixelRatio();
    return decoration.value<QIcon>()
        .pixmap(option.decorationSize, ratio, isEnabled ? QIcon::Normal : QIcon::Disabled)
        .toImage();
}

void ImageAndTextCell::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (imageOf(*option, index).isNull())
        return;
    option->icon = {};
    option->features &= ~QStyleOptionViewItem::HasDecoration;
}

QSize ImageAndTextCell::cellSize(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QSizeF image = imageOf(option, index).deviceIndependentSize();
    const QSize text = QStyledItemDelegate::sizeHint(option, index);
    return {text.width() + int(std::ceil(image.width() + marginBeforeImage)), text.height()};
}

QSize ImageAndTextCell::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    return cellSize(option, index);
}

void ImageAndTextCell::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QImage image = imageOf(option, index);
    if (image.isNull()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    // The background of the whole cell, of which only the slice before the text is drawn: the text brings its own.
    QStyleOptionViewItem whole = option;
    initStyleOption(&whole, index);
    QStyleOptionViewItem text = option;
    text.rect = textRectangle(image, option.rect);
    painter->save();
    painter->setClipRect(
        QRect(option.rect.topLeft(), QSize(text.rect.left() - option.rect.left(), option.rect.height())),
        Qt::IntersectClip);
    styleOf(option).drawPrimitive(QStyle::PE_PanelItemViewItem, &whole, painter, option.widget);
    drawImage(*painter, image, option.rect);
    painter->restore();
    QStyledItemDelegate::paint(painter, text, index);
}

/// A check box is found where paint() has drawn it.
bool ImageAndTextCell::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                   const QModelIndex &index)
{
    QStyleOptionViewItem text = option;
    text.rect = textRectangle(imageOf(option, index), option.rect);
    return QStyledItemDelegate::editorEvent(event, model, text, index);
}

void ImageAndTextCell::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                            const QModelIndex &index) const
{
    QStyleOptionViewItem text = option;
    text.rect = textRectangle(imageOf(option, index), option.rect);
    QStyledItemDelegate::updateEditorGeometry(editor, text, index);
}

void ImageAndTextCell::editWithFrame(const QRect &cellFrame, QWidget &inView, QLineEdit &editor) const
{
    editor.setParent(&inView);
    editor.setGeometry(textRectangle(m_image, cellFrame));
    editor.show();
    editor.setFocus(Qt::OtherFocusReason);
}

void ImageAndTextCell::selectWithFrame(const QRect &cellFrame, QWidget &inView, QLineEdit &editor, int start,
                                       int length) const
{
    editWithFrame(cellFrame, inView, editor);
    editor.setSelection(start, length);
}

} // namespace Tessaron
