#include "panels/ProgramPreview.h"

#include <QElapsedTimer>
#include <QEvent>
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

void ProgramPreview::showImage(const QImage &image)
{
    if (image.isNull())
        return;
    const bool aspectChanged = m_image.isNull() || image.size() != m_image.size();
    m_image = image;
    if (aspectChanged)
        m_aspect = image.size();
    update();
}

void ProgramPreview::showNoSignal()
{
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

void ProgramPreview::paintEvent(QPaintEvent *)
{
    QElapsedTimer took;
    took.start();
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0x10, 0x13, 0x18));
    if (m_tally) {
        painter.setPen(QPen(QColor(0xe0, 0x30, 0x30), kTallyWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(
            rect().adjusted(kTallyWidth / 2, kTallyWidth / 2, -kTallyWidth / 2, -kTallyWidth / 2));
    }
    const QRect picture = pictureRect();
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
    emit displaySizeChanged(displaySize());
}

void ProgramPreview::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        update();
    QWidget::changeEvent(event);
}

} // namespace selvane
