#pragma once

// The schedule editor's ruler: a time scale (mm:ss, or hh:mm:ss for schedules of an hour and
// more) over one lane of base clips and one lane per overlay clip, each clip a bar from its
// start to its end offset; an open-ended clip fades out towards the right edge with an arrow.
// The selected clip's bar is highlighted, and while a schedule runs a playhead marks the
// schedule time. It draws what it is given and keeps no schedule of its own.
//
// GUI thread only. Emits clipClicked(overlay, index) when a bar is clicked.

#include "engine/EngineTypes.h"

#include <QWidget>

namespace selvane {

class ScheduleTimeline : public QWidget
{
    Q_OBJECT

public:
    explicit ScheduleTimeline(QWidget *parent = nullptr);

    void setArrangement(const ProgramArrangement &arrangement);
    // The highlighted bar: a base clip (overlay false) or an overlay clip by its row; -1: none.
    void setSelection(bool overlay, int index);
    // The schedule time to mark; a negative time hides the playhead.
    void setPlayhead(qint64 ms);
    qint64 playhead() const { return m_playheadMs; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    // "mm:ss", or "hh:mm:ss" when `withHours`; negative offsets get a minus sign.
    static QString formatOffset(qint64 ms, bool withHours);

signals:
    void clipClicked(bool overlay, int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Span
    {
        qint64 startMs = 0;
        qint64 endMs = 0; // 0: open-ended
        QString id;
        bool overlay = false;
        int index = 0;
        int lane = 0;
    };
    // The time range the scale covers.
    void range(qint64 *first, qint64 *last) const;
    QRectF barRect(const Span &span, qint64 first, qint64 last) const;
    int laneCount() const { return 1 + int(m_overlayCount); }
    int laneTop(int lane) const;

    QList<Span> m_spans;
    qsizetype m_overlayCount = 0;
    bool m_selectedOverlay = false;
    int m_selectedIndex = -1;
    qint64 m_playheadMs = -1;
};

} // namespace selvane
