#include "panels/LevelMeter.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace selvane {

namespace {
constexpr qint64 kHoldMs = 1500;
constexpr float kFallDbPerSecond = 20.0f;
constexpr qint64 kClipMs = 2000;
constexpr float kClipLevel = 0.999f;
} // namespace

LevelMeter::LevelMeter(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setMinimumWidth(10);
    m_clock.start();
}

float LevelMeter::toDb(float linear)
{
    if (linear <= 0.0f)
        return kFloorDb;
    return std::max(kFloorDb, 20.0f * std::log10(linear));
}

void LevelMeter::setLevel(float peak, float rms)
{
    ++m_updates;
    const qint64 now = m_clock.elapsed();
    m_peakDb = toDb(peak);
    m_rmsDb = toDb(rms);
    if (m_peakDb >= m_holdDb) {
        m_holdDb = m_peakDb;
        m_holdSinceMs = now;
    } else if (now - m_holdSinceMs > kHoldMs) {
        const float fall = kFallDbPerSecond * float(now - m_lastMs) / 1000.0f;
        m_holdDb = std::max(m_peakDb, m_holdDb - fall);
    }
    m_lastMs = now;
    if (peak >= kClipLevel)
        m_clipUntilMs = now + kClipMs;
    // What is drawn, in whole pixels: repaint only when it moves.
    const int h = height();
    const qint64 key = (qint64(yOf(m_rmsDb, h)) * 4099 + yOf(m_peakDb, h)) * 4099 +
                       yOf(m_holdDb, h) + (clipped() ? qint64(1) << 40 : 0);
    if (key != m_drawnKey) {
        m_drawnKey = key;
        setAccessibleDescription(QString::number(double(m_peakDb), 'f', 1) + " dBFS");
        update();
    }
}

int LevelMeter::yOf(float db, int height) const
{
    const float fraction = (std::clamp(db, kFloorDb, 0.0f) - kFloorDb) / -kFloorDb;
    return int(std::lround((1.0f - fraction) * float(height)));
}

void LevelMeter::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int w = width();
    const int clipHeight = 6;
    const int h = height() - clipHeight - 2;
    painter.fillRect(rect(), QColor(0x12, 0x14, 0x18));
    painter.fillRect(QRect(0, 0, w, clipHeight),
                     clipped() ? QColor(0xff, 0x30, 0x30) : QColor(0x3a, 0x1c, 0x1c));
    painter.translate(0, clipHeight + 2);
    auto zone = [&](float fromDb, float toDbValue, const QColor &colour, float levelDb, int x0,
                    int x1) {
        if (levelDb <= fromDb)
            return;
        const int top = yOf(std::min(levelDb, toDbValue), h);
        const int bottom = yOf(fromDb, h);
        painter.fillRect(QRect(x0, top, x1 - x0, bottom - top), colour);
    };
    // Peak as a thin bar on the right, RMS as the wide body.
    const int split = std::max(2, w * 2 / 3);
    for (const auto &[levelDb, x0, x1, dim] :
         {std::tuple{m_rmsDb, 0, split, false}, std::tuple{m_peakDb, split, w, true}}) {
        zone(kFloorDb, -12.0f, dim ? QColor(0x2f, 0x9a, 0x55) : QColor(0x3c, 0xc8, 0x6e), levelDb,
             x0, x1);
        zone(-12.0f, -3.0f, dim ? QColor(0xb0, 0x9a, 0x30) : QColor(0xe6, 0xc8, 0x3c), levelDb, x0,
             x1);
        zone(-3.0f, 0.0f, dim ? QColor(0xb0, 0x30, 0x30) : QColor(0xff, 0x40, 0x40), levelDb, x0,
             x1);
    }
    if (m_holdDb > kFloorDb) {
        painter.setPen(QColor(0xf0, 0xf0, 0xf0));
        const int y = yOf(m_holdDb, h);
        painter.drawLine(0, y, w, y);
    }
}

void LevelMeter::mousePressEvent(QMouseEvent *)
{
    m_clipUntilMs = 0;
    update();
}

} // namespace selvane
