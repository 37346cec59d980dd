#pragma once

#include "platform/foundation/Export.h"

#include <QWidget>

namespace Tessaron
{

/// A gray strip along the top of a window's content. On the main thread.
class TESSARON_EXPORT TopGrayGradient : public QWidget
{
    Q_OBJECT

public:
    explicit TopGrayGradient(QWidget *parent = nullptr);
    /// With a place in its parent.
    [[nodiscard]] static TopGrayGradient *initWithFrame(const QRect &frame, QWidget *parent);

    /// Of the strip, in points, however high the view is. Hides QWidget::height(): ask size() for the view's own.
    [[nodiscard]] static qreal height() { return 41; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Tessaron
