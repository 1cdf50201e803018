#include "panels/GpuPreviewSurface.h"

#include <QElapsedTimer>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLShaderProgram>

namespace selvane {

namespace {

const char *const kVertexShader = R"(
attribute vec2 position;
attribute vec2 coord;
varying vec2 v;
void main()
{
    v = coord;
    gl_Position = vec4(position, 0.0, 1.0);
}
)";

// Pictures are BT.601 limited range, as everywhere in the engine.
const char *const kFragmentShader = R"(
#ifdef GL_ES
precision mediump float;
#endif
varying vec2 v;
uniform sampler2D planeY;
uniform sampler2D planeU;
uniform sampler2D planeV;
uniform bool rgba;
void main()
{
    if (rgba) {
        gl_FragColor = vec4(texture2D(planeY, v).rgb, 1.0);
        return;
    }
    float y = 1.164383 * (texture2D(planeY, v).r - 0.062745);
    float u = texture2D(planeU, v).r - 0.501961;
    float w = texture2D(planeV, v).r - 0.501961;
    gl_FragColor = vec4(y + 1.596027 * w, y - 0.391762 * u - 0.812968 * w, y + 2.017232 * u, 1.0);
}
)";

} // namespace

GpuPreviewSurface::GpuPreviewSurface(QWidget *parent) : QOpenGLWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

GpuPreviewSurface::~GpuPreviewSurface()
{
    releaseGl();
}

void GpuPreviewSurface::releaseGl()
{
    if (!m_program)
        return;
    makeCurrent();
    glDeleteTextures(3, m_textures);
    m_program.reset();
    doneCurrent();
}

QString GpuPreviewSurface::rendererName()
{
    QOpenGLContext context;
    if (!context.create())
        return {};
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!surface.isValid() || !context.makeCurrent(&surface))
        return {};
    const auto *name = context.functions()->glGetString(GL_RENDERER);
    const QString renderer = name ? QString::fromLatin1(reinterpret_cast<const char *>(name)) : "";
    context.doneCurrent();
    return renderer;
}

bool GpuPreviewSurface::isSoftwareRenderer(const QString &renderer)
{
    for (const char *software : {"llvmpipe", "softpipe", "swrast", "Software Rasterizer"})
        if (renderer.contains(QLatin1String(software), Qt::CaseInsensitive))
            return true;
    return false;
}

void GpuPreviewSurface::showFrame(FrameTokenPtr frame)
{
    if (!frame || frame->width <= 0 || frame->height <= 0)
        return;
    m_frame = std::move(frame);
    update();
}

void GpuPreviewSurface::clear()
{
    m_frame.reset();
    m_hasPicture = false;
    update();
}

void GpuPreviewSurface::initializeGL()
{
    initializeOpenGLFunctions();
    m_program = std::make_unique<QOpenGLShaderProgram>();
    m_program->addShaderFromSourceCode(QOpenGLShader::Vertex, kVertexShader);
    m_program->addShaderFromSourceCode(QOpenGLShader::Fragment, kFragmentShader);
    m_program->bindAttributeLocation("position", 0);
    m_program->bindAttributeLocation("coord", 1);
    if (!m_program->link())
        qWarning().noquote() << "Program preview: the shader does not link:" << m_program->log();
    glGenTextures(3, m_textures);
    for (GLuint texture : m_textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    for (QSize &size : m_textureSize)
        size = {};
    m_hasPicture = false;
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &GpuPreviewSurface::releaseGl,
            Qt::DirectConnection);
}

void GpuPreviewSurface::upload(const FrameToken &frame)
{
    m_rgba = !frame.isI420();
    const int planes = m_rgba ? 1 : 3;
    const GLenum format = m_rgba ? GL_RGBA : GL_LUMINANCE;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    for (int p = 0; p < planes; ++p) {
        const QSize size = p == 0 ? QSize(frame.width, frame.height)
                                  : QSize((frame.width + 1) / 2, (frame.height + 1) / 2);
        const qint64 stride = frame.planeStride(p);
        glActiveTexture(GL_TEXTURE0 + p);
        glBindTexture(GL_TEXTURE_2D, m_textures[p]);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, GLint(m_rgba ? stride / 4 : stride));
        if (m_textureSize[p] != size) {
            glTexImage2D(GL_TEXTURE_2D, 0, GLint(format), size.width(), size.height(), 0, format,
                         GL_UNSIGNED_BYTE, frame.plane(p));
            m_textureSize[p] = size;
        } else {
            glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, size.width(), size.height(), format,
                            GL_UNSIGNED_BYTE, frame.plane(p));
        }
    }
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}

void GpuPreviewSurface::paintGL()
{
    QElapsedTimer took;
    took.start();
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    if (!m_program || !m_program->isLinked())
        return;
    if (m_frame) {
        // The frame goes back to its pool at once; the textures keep the picture.
        upload(*m_frame);
        m_frame.reset();
        m_hasPicture = true;
    }
    if (!m_hasPicture)
        return;
    static const GLfloat position[] = {-1, -1, 1, -1, -1, 1, 1, 1};
    static const GLfloat coord[] = {0, 1, 1, 1, 0, 0, 1, 0}; // rows run top to bottom
    m_program->bind();
    m_program->setUniformValue("planeY", 0);
    m_program->setUniformValue("planeU", 1);
    m_program->setUniformValue("planeV", 2);
    m_program->setUniformValue("rgba", m_rgba);
    for (int p = 0; p < 3; ++p) {
        glActiveTexture(GL_TEXTURE0 + p);
        glBindTexture(GL_TEXTURE_2D, m_textures[p]);
    }
    m_program->setAttributeArray(0, GL_FLOAT, position, 2);
    m_program->setAttributeArray(1, GL_FLOAT, coord, 2);
    m_program->enableAttributeArray(0);
    m_program->enableAttributeArray(1);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    m_program->disableAttributeArray(0);
    m_program->disableAttributeArray(1);
    m_program->release();
    glActiveTexture(GL_TEXTURE0);
    ++m_painted;
    m_paintNs += took.nsecsElapsed();
}

} // namespace selvane
