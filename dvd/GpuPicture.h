#pragma once

#include <QImage>
#include <QOpenGLTexture>
#include <QOpenGLTextureBlitter>
#include <QOpenGLWidget>

#include <memory>

namespace Tessaron
{

/// Draws a picture, as large as itself, by the graphics processor, which scales it at no cost for the others. On the
/// main thread.
class GpuPicture : public QOpenGLWidget
{
    Q_OBJECT

public:
    /// True where a graphics processor draws for the display that the program is connected to: one that is imitated by
    /// software costs many times what QPainter does. TESSARON_VIDEO=gpu takes that, too, and TESSARON_VIDEO=raster
    /// none. Found out once.
    [[nodiscard]] static bool isToBeUsed();

    /// The picture, of Format_RGB32, or null for black, must outlive this.
    GpuPicture(const QImage *picture, QWidget *parent);
    ~GpuPicture() override;

    /// The picture has changed.
    void takePicture();

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void load();
    void release();

    const QImage *const m_picture; ///< not shared, since one that is has to be copied before it can change
    bool m_isLoaded = false;
    std::unique_ptr<QOpenGLTexture> m_texture; ///< null before the first picture
    QOpenGLTextureBlitter m_blitter;
};

} // namespace Tessaron
