#pragma once

#include <QWidget>

namespace Tessaron::Desktop
{

/// A bar that fills up, in the palette's highlight; what is too much is hatched in the colour of its text, so that it
/// is seen without colours, too.
class CapacityMeter final : public QWidget
{
    Q_OBJECT

public:
    explicit CapacityMeter(QWidget *parent = nullptr);

    /// 1 for full.
    void setFill(double fill);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_fill = 0;
};

} // namespace Tessaron::Desktop
