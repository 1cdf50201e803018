#include "panels/ScheduleTimeline.h"

#include <QEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace selvane {

namespace {

constexpr int kGutter = 76; // lane names
constexpr int kScaleHeight = 22;
constexpr int kLaneHeight = 20;
constexpr int kLaneGap = 4;
constexpr int kMargin = 6;
constexpr int kFadeWidth = 48; // where an open-ended bar fades out
constexpr int kMinTickPixels = 72;

const QColor kBaseColour(58, 120, 194);
const QColor kOverlayColour(58, 154, 91);
const QColor kSelectedEdge(255, 200, 40);
const QColor kPlayheadColour(220, 40, 40);

} // namespace

ScheduleTimeline::ScheduleTimeline(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Schedule timeline"));
}

void ScheduleTimeline::setArrangement(const ProgramArrangement &arrangement)
{
    m_spans.clear();
    for (int i = 0; i < arrangement.sceneClips.size(); ++i) {
        const SceneClip &c = arrangement.sceneClips[i];
        m_spans.append({c.startMs, c.endMs, c.id, false, i, 0});
    }
    for (int i = 0; i < arrangement.overlayClips.size(); ++i) {
        const OverlayClip &c = arrangement.overlayClips[i];
        m_spans.append({c.startMs, c.endMs, c.id, true, i, 1 + i});
    }
    if (m_overlayCount != arrangement.overlayClips.size()) {
        m_overlayCount = arrangement.overlayClips.size();
        updateGeometry();
    }
    update();
}

void ScheduleTimeline::setSelection(bool overlay, int index)
{
    m_selectedOverlay = overlay;
    m_selectedIndex = index;
    update();
}

void ScheduleTimeline::setPlayhead(qint64 ms)
{
    if (ms == m_playheadMs)
        return;
    m_playheadMs = ms;
    update();
}

QSize ScheduleTimeline::sizeHint() const
{
    return {640, minimumSizeHint().height()};
}

QSize ScheduleTimeline::minimumSizeHint() const
{
    return {kGutter + 200, kScaleHeight + laneCount() * (kLaneHeight + kLaneGap) + kMargin};
}

QString ScheduleTimeline::formatOffset(qint64 ms, bool withHours)
{
    const QString sign = ms < 0 ? QStringLiteral("-") : QString();
    const qint64 seconds = qAbs(ms) / 1000;
    const auto two = [](qint64 v) {
        return QString::number(v).rightJustified(2, u'0');
    };
    if (withHours)
        return sign + two(seconds / 3600) + u':' + two(seconds / 60 % 60) + u':' +
               two(seconds % 60);
    return sign + two(seconds / 60) + u':' + two(seconds % 60);
}

void ScheduleTimeline::range(qint64 *first, qint64 *last) const
{
    qint64 lo = 0;
    qint64 hi = 0;
    bool open = false;
    for (const Span &s : m_spans) {
        lo = std::min(lo, s.startMs);
        hi = std::max(hi, s.endMs > 0 ? std::max(s.endMs, s.startMs) : s.startMs);
        open = open || s.endMs == 0;
    }
    if (m_playheadMs >= 0)
        hi = std::max(hi, m_playheadMs);
    // Room for open-ended clips to run on, and never less than a minute.
    if (open)
        hi += std::max<qint64>((hi - lo) / 5, 10000);
    hi = std::max(hi, lo + 60000);
    *first = lo;
    *last = hi + (hi - lo) / 40;
}

int ScheduleTimeline::laneTop(int lane) const
{
    return kScaleHeight + lane * (kLaneHeight + kLaneGap);
}

QRectF ScheduleTimeline::barRect(const Span &span, qint64 first, qint64 last) const
{
    const double left = kGutter;
    const double width = std::max(1, this->width() - kGutter - kMargin);
    const auto x = [&](qint64 ms) {
        return left + double(ms - first) * width / double(last - first);
    };
    const double x0 = x(span.startMs);
    const double x1 = span.endMs > 0 ? std::max(x(span.endMs), x0 + 2.0) : left + width;
    return QRectF(x0, laneTop(span.lane), x1 - x0, kLaneHeight);
}

void ScheduleTimeline::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(rect(), palette().base());

    qint64 first = 0;
    qint64 last = 0;
    range(&first, &last);
    const double width = std::max(1, this->width() - kGutter - kMargin);
    const auto x = [&](qint64 ms) {
        return kGutter + double(ms - first) * width / double(last - first);
    };

    // Lanes and their names.
    const QColor laneShade = palette().alternateBase().color();
    for (int lane = 0; lane < laneCount(); ++lane)
        p.fillRect(QRectF(kGutter, laneTop(lane), width, kLaneHeight), laneShade);
    p.setPen(palette().text().color());
    QFont small = font();
    small.setPointSizeF(std::max(7.0, small.pointSizeF() * 0.85));
    p.setFont(small);
    p.drawText(QRectF(2, laneTop(0), kGutter - 6, kLaneHeight), Qt::AlignVCenter | Qt::AlignRight,
               tr("Base"));
    if (m_overlayCount > 0)
        p.drawText(QRectF(2, laneTop(1), kGutter - 6, kLaneHeight),
                   Qt::AlignVCenter | Qt::AlignRight, tr("Overlays"));

    // The scale: the smallest step that leaves room for its labels.
    const bool hours = last >= 3600000 || first <= -3600000;
    static constexpr qint64 kSteps[] = {1000,    2000,    5000,     10000,    15000,   30000,
                                        60000,   120000,  300000,   600000,   900000,  1800000,
                                        3600000, 7200000, 21600000, 43200000, 86400000};
    qint64 step = kSteps[std::size(kSteps) - 1];
    for (qint64 candidate : kSteps) {
        if (double(candidate) * width / double(last - first) >= kMinTickPixels) {
            step = candidate;
            break;
        }
    }
    const QColor tickColour = palette().mid().color();
    const int lanesBottom = laneTop(laneCount()) - kLaneGap;
    qint64 tick = first >= 0 ? (first + step - 1) / step * step : -((-first) / step * step);
    for (; tick <= last; tick += step) {
        const double tx = x(tick);
        p.setPen(tickColour);
        p.drawLine(QPointF(tx, kScaleHeight - 5), QPointF(tx, lanesBottom));
        const QString label = formatOffset(tick, hours);
        if (tx + 3 + p.fontMetrics().horizontalAdvance(label) > this->width())
            continue; // no half labels at the right edge
        p.setPen(palette().text().color());
        p.drawText(QRectF(tx + 3, 0, kMinTickPixels, kScaleHeight - 4),
                   Qt::AlignLeft | Qt::AlignBottom, label);
    }

    // The bars.
    for (const Span &s : m_spans) {
        const QRectF r = barRect(s, first, last);
        QColor colour = s.overlay ? kOverlayColour : kBaseColour;
        const bool selected = s.overlay == m_selectedOverlay && s.index == m_selectedIndex;
        if (selected)
            colour = colour.lighter(135);
        if (s.endMs > 0) {
            p.fillRect(r, colour);
            // Back-to-back clips stay apart.
            p.setPen(QPen(colour.darker(160), 1));
            p.drawRect(r.adjusted(0.5, 0.5, -0.5, -0.5));
        } else {
            // Open-ended: solid, then fading towards the edge, with an arrow.
            QLinearGradient fade(r.right() - kFadeWidth, 0, r.right(), 0);
            fade.setColorAt(0, colour);
            QColor clear = colour;
            clear.setAlpha(40);
            fade.setColorAt(1, clear);
            p.fillRect(r, fade);
            QPainterPath arrow;
            const double tipX = r.right();
            const double midY = r.center().y();
            arrow.moveTo(tipX, midY);
            arrow.lineTo(tipX - 8, midY - 6);
            arrow.lineTo(tipX - 8, midY + 6);
            arrow.closeSubpath();
            p.fillPath(arrow, colour.darker(130));
            p.setPen(QPen(colour.darker(160), 1));
            p.drawLine(QPointF(r.left() + 0.5, r.top()), QPointF(r.left() + 0.5, r.bottom()));
        }
        if (selected) {
            p.setPen(QPen(kSelectedEdge, 2));
            p.drawRect(r.adjusted(1, 1, -1, -1));
        }
        p.setPen(Qt::white);
        const QRectF textRect = r.adjusted(4, 0, -4, 0);
        p.drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                   p.fontMetrics().elidedText(s.id, Qt::ElideRight, int(textRect.width())));
    }

    // The playhead.
    if (m_playheadMs >= 0) {
        const double px = x(m_playheadMs);
        p.setPen(QPen(kPlayheadColour, 2));
        p.drawLine(QPointF(px, kScaleHeight - 6), QPointF(px, lanesBottom));
        QPainterPath head;
        head.moveTo(px - 5, kScaleHeight - 10);
        head.lineTo(px + 5, kScaleHeight - 10);
        head.lineTo(px, kScaleHeight - 3);
        head.closeSubpath();
        p.fillPath(head, kPlayheadColour);
    }
}

void ScheduleTimeline::mousePressEvent(QMouseEvent *event)
{
    qint64 first = 0;
    qint64 last = 0;
    range(&first, &last);
    // Later bars are drawn over earlier ones, so they are hit first.
    for (auto it = m_spans.crbegin(); it != m_spans.crend(); ++it) {
        if (barRect(*it, first, last).contains(event->position())) {
            emit clipClicked(it->overlay, it->index);
            return;
        }
    }
    QWidget::mousePressEvent(event);
}

void ScheduleTimeline::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        setAccessibleName(tr("Schedule timeline"));
        update();
    }
    QWidget::changeEvent(event);
}

} // namespace selvane
