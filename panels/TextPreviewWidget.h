#pragma once

// A small 16:9 stand-in for the program on which the text effect dialog shows one text overlay
// as it will go on air. The letters, box, shadow and outline are painted by the engine's own
// overlay painting at the size of the picture shown here, so the text scales with the picture
// height exactly as it does on air; a scrolling text moves (about 30 times a second, only while
// the widget is visible) and starts again a moment after its last pass, and it takes as long
// relative to the picture as it will on a program of the size it is told.
//
// Owns: the record being shown, its drawn picture, and the animation timer. The operator drags
// the text's anchor (its top-left corner) with the mouse; the position is kept in whole units
// of the 640 x 360 scene and shown as "X:.. Y:..".
//
// GUI thread only. Emits positionChanged(QPoint) (scene units) while the anchor is dragged.

#include "engine/EngineTypes.h"

#include <QElapsedTimer>
#include <QImage>
#include <QWidget>

class QLabel;
class QTimer;

namespace selvane {

class TextPreviewWidget : public QWidget
{
    Q_OBJECT

public:
    explicit TextPreviewWidget(QWidget *parent = nullptr);

    // Shows this record. A change of anything but the position starts a scroll from its
    // beginning.
    void setText(const TextOverlayData &text);
    const TextOverlayData &text() const { return m_text; }
    // The size of the program the text will go on air with (an empty size: 1920 x 1080). Only
    // the pace of a scroll depends on it.
    void setProgramSize(QSize size);
    // Where the 16:9 picture lies in the widget, and the mapping of scene units onto it.
    QRect pictureRect() const;
    QPointF toWidget(QPointF scene) const;
    QPointF toScene(QPointF widget) const;
    // The anchor in scene units, as labelled.
    QPoint scenePosition() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

signals:
    void positionChanged(QPoint scenePosition);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void redraw();
    void tick();
    void updateAnimation();
    void moveAnchorTo(QPointF widgetPoint);
    void showPosition();
    void retranslateUi();
    qint64 scrollTimeUs() const;
    qint64 scrollLengthUs() const;

    TextOverlayData m_text;
    QSize m_programSize;
    QImage m_picture;  // the text as drawn for the picture rectangle, transparent elsewhere
    QRect m_ink;       // the drawn pixels' bounds, in picture coordinates
    QImage m_backdrop; // the checker behind it, for the current picture size
    bool m_dragging = false;
    QPointF m_grabOffset; // anchor minus the pointer, in widget pixels, while dragging
    QElapsedTimer m_scrollClock;
    QTimer *m_timer = nullptr;
    QLabel *m_position = nullptr;
};

} // namespace selvane
