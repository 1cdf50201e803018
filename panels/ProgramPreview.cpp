#include "panels/ProgramPreview.h"

#include "panels/GpuPreviewSurface.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QPaintEvent>
#include <QPainter>

namespace selvane {

ProgramPreview::ProgramPreview(QWidget *parent) : QWidget(parent)
{
    setObjectName("programPreview");
    setAccessibleName("Program preview");
    setMinimumSize(320, 180);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

bool ProgramPreview::gpuWanted(QString *renderer)
{
    const QByteArray asked = qgetenv("SELVANE_PREVIEW");
    if (asked == "image")
        return false;
    const QString name = GpuPreviewSurface::rendererName();
    if (renderer)
        *renderer = name;
    if (name.isEmpty())
        return false;
    return asked == "gpu" || !GpuPreviewSurface::isSoftwareRenderer(name);
}

void ProgramPreview::useGpu()
{
    if (m_gpu)
        return;
    m_gpu = new GpuPreviewSurface(this);
    m_gpu->hide();
    placeSurface();
}

void ProgramPreview::placeSurface()
{
    if (m_gpu)
        m_gpu->setGeometry(pictureRect());
}

bool ProgramPreview::hasSignal() const
{
    return m_gpu ? m_gpu->hasPicture() : !m_image.isNull();
}

qint64 ProgramPreview::paintedFrames() const
{
    return m_gpu ? m_gpu->paintedFrames() : m_painted;
}

double ProgramPreview::averagePaintUs() const
{
    const qint64 painted = paintedFrames();
    const qint64 ns = m_gpu ? m_gpu->paintNs() : m_paintNs;
    return painted ? ns / 1000.0 / painted : 0.0;
}

void ProgramPreview::showFrame(FrameTokenPtr frame)
{
    if (!m_gpu || !frame)
        return;
    if (QSize(frame->width, frame->height) != m_aspect) {
        m_aspect = QSize(frame->width, frame->height);
        placeSurface();
    }
    m_gpu->showFrame(std::move(frame));
    if (m_gpu->isHidden()) {
        m_gpu->show();
        update();
    }
}

void ProgramPreview::showImage(const QImage &image)
{
    if (image.isNull())
        return;
    const bool sizeChanged = m_image.isNull() || image.size() != m_image.size();
    m_image = image;
    if (sizeChanged) {
        m_aspect = image.size();
        update(); // the margins change too
        return;
    }
    update(pictureRect()); // only the picture: the margins and the border stay as they are
}

void ProgramPreview::showNoSignal()
{
    if (m_gpu && m_gpu->hasPicture()) {
        m_gpu->clear();
        m_gpu->hide();
        update();
    }
    if (m_image.isNull())
        return;
    m_image = QImage();
    update();
}

void ProgramPreview::setTally(bool onAir)
{
    if (m_tally == onAir)
        return;
    m_tally = onAir;
    update();
}

QRect ProgramPreview::pictureRect() const
{
    const QRect area = rect().adjusted(kTallyWidth, kTallyWidth, -kTallyWidth, -kTallyWidth);
    if (!m_gpu && !m_image.isNull()) {
        // An image is shown as it was made (at the display size or a whole part of the
        // picture's own), centred, unless the widget has shrunk below it meanwhile.
        const QSize own = (QSizeF(m_image.size()) / devicePixelRatioF()).toSize();
        if (own.width() <= area.width() && own.height() <= area.height()) {
            QRect picture(QPoint(0, 0), own);
            picture.moveCenter(area.center());
            return picture;
        }
    }
    QSize fitted = m_aspect.scaled(area.size(), Qt::KeepAspectRatio);
    QRect picture(QPoint(0, 0), fitted);
    picture.moveCenter(area.center());
    return picture;
}

QSize ProgramPreview::displaySize() const
{
    const QRect area = rect().adjusted(kTallyWidth, kTallyWidth, -kTallyWidth, -kTallyWidth);
    return area.size() * devicePixelRatioF();
}

void ProgramPreview::paintEvent(QPaintEvent *event)
{
    QElapsedTimer took;
    took.start();
    QPainter painter(this);
    const QRect picture = pictureRect();
    const bool pictureOnly =
        m_gpu == nullptr && !m_image.isNull() && picture.contains(event->rect());
    if (!pictureOnly) {
        // The margins and the border, when they are asked for (not for every new picture).
        painter.fillRect(rect(), QColor(0x10, 0x13, 0x18));
        if (m_tally) {
            painter.setPen(QPen(QColor(0xe0, 0x30, 0x30), kTallyWidth));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(rect().adjusted(kTallyWidth / 2, kTallyWidth / 2, -kTallyWidth / 2,
                                             -kTallyWidth / 2));
        }
    }
    if (m_gpu && m_gpu->isVisible())
        return; // the surface draws the picture
    if (m_image.isNull()) {
        painter.fillRect(picture, Qt::black);
        painter.setPen(QColor(0x9a, 0xa0, 0xaa));
        QFont font = painter.font();
        font.setPointSizeF(font.pointSizeF() * 1.6);
        painter.setFont(font);
        painter.drawText(picture, Qt::AlignCenter, tr("No signal"));
        return;
    }
    // Made at the display size: a plain copy unless the widget changed size meanwhile.
    const QSize own = (QSizeF(m_image.size()) / devicePixelRatioF()).toSize();
    if (qAbs(own.width() - picture.width()) <= 2 && qAbs(own.height() - picture.height()) <= 2) {
        QRect exact(QPoint(0, 0), own);
        exact.moveCenter(picture.center());
        painter.drawImage(exact.topLeft(), m_image);
    } else {
        painter.drawImage(picture, m_image);
    }
    ++m_painted;
    m_paintNs += took.nsecsElapsed();
}

void ProgramPreview::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeSurface();
    emit displaySizeChanged(displaySize());
}

void ProgramPreview::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        update();
    QWidget::changeEvent(event);
}

} // namespace selvane
