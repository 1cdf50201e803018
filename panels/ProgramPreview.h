#pragma once

// The program preview in the centre of the window: the live program, aspect kept on black,
// "No signal" while nothing is on air, and a red tally border while the outputs run.
//
// Two ways to draw the picture. Where a graphics card draws GL, program frames go to a
// GpuPreviewSurface inside the border, which converts and scales them on the card. Otherwise
// the engine's PreviewImages makes images off the GUI thread (at the widget's size, or shrunk by a
// whole factor to fit it, which is far cheaper), an image is shown as it was made, centred, and a
// new picture repaints the picture alone, never the margins. GUI thread only; emits
// displaySizeChanged when the image it wants changes size (device pixels).

#include "media/FrameToken.h"

#include <QImage>
#include <QWidget>

namespace selvane {

class GpuPreviewSurface;

class ProgramPreview : public QWidget
{
    Q_OBJECT

public:
    explicit ProgramPreview(QWidget *parent = nullptr);

    // Draw program frames on the graphics card from now on (showFrame), instead of images.
    void useGpu();
    bool usesGpu() const { return m_gpu != nullptr; }
    // Which drawing the environment asks for: SELVANE_PREVIEW=gpu or image; otherwise the card
    // when a hardware GL renderer is there. `renderer` receives the GL renderer's name.
    static bool gpuWanted(QString *renderer = nullptr);

    void showFrame(FrameTokenPtr frame);
    void showImage(const QImage &image);
    // Nothing on air: the last image goes and "No signal" shows.
    void showNoSignal();
    void setTally(bool onAir);
    bool hasSignal() const;
    bool tally() const { return m_tally; }
    // The size images should have to fill the widget, in device pixels.
    QSize displaySize() const;
    // Where the picture is drawn (widget coordinates), for the whole scene.
    QRect pictureRect() const;
    qint64 paintedFrames() const;
    // GUI-thread time spent painting pictures, on average (microseconds).
    double averagePaintUs() const;

signals:
    void displaySizeChanged(QSize size);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void placeSurface();

    GpuPreviewSurface *m_gpu = nullptr;
    QImage m_image;
    QSize m_aspect{16, 9};
    bool m_tally = false;
    qint64 m_painted = 0;
    qint64 m_paintNs = 0;
    static constexpr int kTallyWidth = 4;
};

} // namespace selvane
