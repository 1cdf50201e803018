#pragma once

// The program picture drawn by the graphics card: the newest program frame goes up as textures
// (three planes of an I420 picture, or one RGBA plane) and a shader turns it into RGB while the
// card scales it to the surface. The window thread does one upload and one draw per picture;
// nothing is scaled or converted on the processor.
//
// Owns: the GL textures and shader program (in the widget's context) and a reference to the
// newest frame until the next paint has uploaded it. GUI thread only. Emits nothing.

#include "media/FrameToken.h"

#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <memory>

class QOpenGLShaderProgram;

namespace selvane {

class GpuPreviewSurface : public QOpenGLWidget, protected QOpenGLFunctions
{
    Q_OBJECT

public:
    explicit GpuPreviewSurface(QWidget *parent = nullptr);
    ~GpuPreviewSurface() override;

    // The picture to show from the next paint on. The frame is only read.
    void showFrame(FrameTokenPtr frame);
    void clear();
    bool hasPicture() const { return m_frame || m_hasPicture; }

    qint64 paintedFrames() const { return m_painted; }
    qint64 paintNs() const { return m_paintNs; }

    // Whether a GL context can be made here, and the name of its renderer ("" when none).
    static QString rendererName();
    // A renderer that draws on the processor (a software rasteriser) scales no cheaper than the
    // image path does.
    static bool isSoftwareRenderer(const QString &renderer);

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void upload(const FrameToken &frame);
    void releaseGl();

    FrameTokenPtr m_frame;
    bool m_hasPicture = false; // the textures hold a picture
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    GLuint m_textures[3] = {};
    QSize m_textureSize[3];
    bool m_rgba = false;
    qint64 m_painted = 0;
    qint64 m_paintNs = 0;
};

} // namespace selvane
