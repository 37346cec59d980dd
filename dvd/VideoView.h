#pragma once

#include <QImage>
#include <QWidget>

#include <atomic>
#include <memory>

namespace Tessaron
{

class GpuPicture;

/// Draws the session's pictures, while the session's window is the one that it lies in: by the graphics processor where
/// there is one, else by QPainter. On the main thread; pictures are decoded elsewhere, and what is done here is a copy.
class VideoView : public QWidget
{
    Q_OBJECT

public:
    explicit VideoView(QWidget *parent);
    ~VideoView() override;

    /// Black at first.
    [[nodiscard]] const QImage &picture() const { return m_picture; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void takePicture();

    QImage m_picture;
    GpuPicture *m_gpu = nullptr; ///< owned as a child; null where QPainter draws
    std::shared_ptr<std::atomic<bool>> m_isAsked; ///< a picture waits to be taken
};

} // namespace Tessaron
