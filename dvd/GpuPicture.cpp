#include "dvd/GpuPicture.h"

#include <QDir>
#include <QFile>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLPixelTransferOptions>

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

/// Loading what would imitate one takes longer than a look at the devices.
bool hasDevice()
{
    const QStringList names = {QStringLiteral("renderD*")};
    return !QDir(QStringLiteral("/dev/dri")).entryList(names, QDir::System).isEmpty()
        || QFile::exists(QStringLiteral("/dev/nvidiactl"));
}

/// What draws; empty where nothing can.
QByteArray nameOfRenderer()
{
    QOffscreenSurface surface;
    QOpenGLContext context;
    surface.create();
    if (!context.create() || !context.makeCurrent(&surface))
        return {};
    const auto *const name = reinterpret_cast<const char *>(context.functions()->glGetString(GL_RENDERER));
    QByteArray renderer = name ? QByteArray(name) : QByteArray();
    context.doneCurrent();
    return renderer;
}

constexpr int bytesOfPixel = 4;

bool isSoftware(const QByteArray &renderer)
{
    constexpr std::array names = {"llvmpipe", "softpipe", "swrast", "swr ", "swiftshader", "software", "basic render"};
    const QByteArray small = renderer.toLower();
    return std::any_of(names.begin(), names.end(), [&small](const char *name) { return small.contains(name); });
}

bool findOut()
{
    const QByteArray wish = qgetenv("TESSARON_VIDEO");
    if (wish == "raster" || (wish != "gpu" && !hasDevice()))
        return false;
    const QByteArray renderer = nameOfRenderer();
    return !renderer.isEmpty() && (wish == "gpu" || !isSoftware(renderer));
}

} // namespace

bool GpuPicture::isToBeUsed()
{
    static const bool isToBeUsed = findOut();
    return isToBeUsed;
}

GpuPicture::GpuPicture(const QImage *picture, QWidget *parent)
    : QOpenGLWidget(parent)
    , m_picture(picture)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

GpuPicture::~GpuPicture()
{
    release();
    // What is destroyed behind this must not find it.
    if (context())
        disconnect(context(), nullptr, this, nullptr);
}

void GpuPicture::takePicture()
{
    m_isLoaded = false;
    update();
}

void GpuPicture::initializeGL()
{
    // A window that moves to another screen may get another context.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &GpuPicture::release);
    m_blitter.create();
    m_isLoaded = false;
}

void GpuPicture::paintGL()
{
    QOpenGLFunctions *const functions = context()->functions();
    functions->glClearColor(0, 0, 0, 1);
    functions->glClear(GL_COLOR_BUFFER_BIT);
    if (!m_isLoaded && !m_picture->isNull())
        load();
    if (!m_texture || m_picture->isNull() || !m_blitter.isCreated())
        return;
    const QRect target(QPoint(), size() * devicePixelRatio());
    m_blitter.bind();
    m_blitter.blit(m_texture->textureId(), QOpenGLTextureBlitter::targetTransform(QRectF(target), target),
                   QOpenGLTextureBlitter::OriginTopLeft);
    m_blitter.release();
}

void GpuPicture::load()
{
    // Blue comes first in memory, which the small kinds of OpenGL do not take.
    const bool isSmallKind = context()->isOpenGLES();
    const QImage image = isSmallKind ? m_picture->convertToFormat(QImage::Format_RGBX8888) : *m_picture;
    const QOpenGLTexture::PixelFormat format = isSmallKind ? QOpenGLTexture::RGBA : QOpenGLTexture::BGRA;
    if (!m_texture || m_texture->width() != image.width() || m_texture->height() != image.height()) {
        m_texture = std::make_unique<QOpenGLTexture>(QOpenGLTexture::Target2D);
        m_texture->setSize(image.width(), image.height());
        m_texture->setFormat(QOpenGLTexture::RGBA8_UNorm);
        m_texture->setMipLevels(1);
        m_texture->allocateStorage(format, QOpenGLTexture::UInt8);
        m_texture->setMinMagFilters(QOpenGLTexture::Linear, QOpenGLTexture::Linear);
        m_texture->setWrapMode(QOpenGLTexture::ClampToEdge);
    }
    // Lines are as far apart as those of the widest picture.
    QOpenGLPixelTransferOptions lines;
    lines.setRowLength(int(image.bytesPerLine()) / bytesOfPixel);
    m_texture->setData(0, format, QOpenGLTexture::UInt8, image.constBits(), &lines);
    m_isLoaded = true;
}

void GpuPicture::release()
{
    if (!context())
        return;
    makeCurrent();
    m_texture.reset();
    m_blitter.destroy();
    doneCurrent();
}

} // namespace Tessaron
