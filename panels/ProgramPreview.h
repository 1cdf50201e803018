#pragma once

// The program preview in the centre of the window: the newest program image (scaled off the
// GUI thread by the engine's PreviewImages), aspect kept on black, "No signal" while nothing is
// on air, and a red tally border while the outputs run. Painting is one blit of an image made
// at the widget's size. GUI thread only; emits displaySizeChanged when the image it wants
// changes size (device pixels).

#include <QImage>
#include <QWidget>

namespace selvane {

class ProgramPreview : public QWidget
{
    Q_OBJECT

public:
    explicit ProgramPreview(QWidget *parent = nullptr);

    void showImage(const QImage &image);
    // Nothing on air: the last image goes and "No signal" shows.
    void showNoSignal();
    void setTally(bool onAir);
    bool hasSignal() const { return !m_image.isNull(); }
    bool tally() const { return m_tally; }
    // The size images should have to fill the widget, in device pixels.
    QSize displaySize() const;
    // Where the picture is drawn (widget coordinates), for the whole scene.
    QRect pictureRect() const;
    qint64 paintedFrames() const { return m_painted; }
    // GUI-thread time spent painting pictures, on average (microseconds).
    double averagePaintUs() const { return m_painted ? m_paintNs / 1000.0 / m_painted : 0.0; }

signals:
    void displaySizeChanged(QSize size);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QImage m_image;
    QSize m_aspect{16, 9};
    bool m_tally = false;
    qint64 m_painted = 0;
    qint64 m_paintNs = 0;
    static constexpr int kTallyWidth = 4;
};

} // namespace selvane
