#pragma once

// A vertical audio level meter: RMS bar, peak bar, a peak-hold line (held 1.5 s, then falling
// 20 dB a second) and a clip light (lit at full scale for 2 s, or until clicked), on a dBFS scale
// from -60 to 0 (green to -12, yellow to -3, red above). Fed with linear levels measured in the
// mixer thread; repaints only when what it draws changes. GUI thread only.

#include <QElapsedTimer>
#include <QWidget>

namespace selvane {

class LevelMeter : public QWidget
{
    Q_OBJECT

public:
    static constexpr float kFloorDb = -60.0f;

    explicit LevelMeter(QWidget *parent = nullptr);

    // Linear 0..1 of full scale.
    void setLevel(float peak, float rms);
    float peakDb() const { return m_peakDb; }
    float rmsDb() const { return m_rmsDb; }
    float holdDb() const { return m_holdDb; }
    bool clipped() const { return m_clipUntilMs > m_clock.elapsed(); }
    qint64 updates() const { return m_updates; }
    QSize sizeHint() const override { return {14, 160}; }
    QSize minimumSizeHint() const override { return {10, 60}; }

    static float toDb(float linear);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    int yOf(float db, int height) const;

    QElapsedTimer m_clock;
    float m_peakDb = kFloorDb;
    float m_rmsDb = kFloorDb;
    float m_holdDb = kFloorDb;
    qint64 m_holdSinceMs = 0;
    qint64 m_lastMs = 0;
    qint64 m_clipUntilMs = 0;
    qint64 m_updates = 0;
    qint64 m_drawnKey = -1;
};

} // namespace selvane
