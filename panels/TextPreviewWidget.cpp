#include "panels/TextPreviewWidget.h"

#include "engine/Engine.h"
#include "engine/OverlayDrawing.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace selvane {

namespace {

constexpr int kFrameMs = 33;         // about 30 pictures a second while a text scrolls
constexpr int kRestartPauseMs = 700; // the empty picture after the last pass, before a rerun
constexpr int kChecker = 12;         // side of the backdrop's squares, in pixels
constexpr int kGrabMargin = 4;       // the text can be taken a little outside its pixels
const QSize kFallbackProgram(1920, 1080);

QRect inkBounds(const QImage &picture)
{
    int left = picture.width(), right = -1, top = picture.height(), bottom = -1;
    for (int y = 0; y < picture.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        int first = -1, last = -1;
        for (int x = 0; x < picture.width(); ++x)
            if (qAlpha(row[x]) != 0) {
                if (first < 0)
                    first = x;
                last = x;
            }
        if (first < 0)
            continue;
        left = std::min(left, first);
        right = std::max(right, last);
        top = std::min(top, y);
        bottom = y;
    }
    return right < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

} // namespace

TextPreviewWidget::TextPreviewWidget(QWidget *parent) : QWidget(parent)
{
    setObjectName("textPreview");
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_position = new QLabel(this);
    m_position->setObjectName("textPreviewPosition");
    m_position->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_position->setStyleSheet("color:#9aa0aa;font-size:11px;");
    m_timer = new QTimer(this);
    m_timer->setInterval(kFrameMs);
    connect(m_timer, &QTimer::timeout, this, &TextPreviewWidget::tick);
    m_scrollClock.start();
    retranslateUi();
}

QSize TextPreviewWidget::sizeHint() const
{
    return {384, heightForWidth(384)};
}

QSize TextPreviewWidget::minimumSizeHint() const
{
    return {320, heightForWidth(320)};
}

int TextPreviewWidget::heightForWidth(int width) const
{
    return width * 9 / 16 + m_position->sizeHint().height();
}

QRect TextPreviewWidget::pictureRect() const
{
    // The position label takes a strip below the picture, so nothing covers the text; the
    // picture sits at the top, centred across.
    const QRect area = rect().adjusted(0, 0, 0, -m_position->sizeHint().height());
    if (area.width() < 16 || area.height() < 9)
        return {};
    QSize size(area.width(), area.width() * 9 / 16);
    if (size.height() > area.height())
        size = QSize(area.height() * 16 / 9, area.height());
    return QRect(QPoint(area.left() + (area.width() - size.width()) / 2, area.top()), size);
}

QPointF TextPreviewWidget::toWidget(QPointF scene) const
{
    const QRect picture = pictureRect();
    const QSizeF sceneSize = OverlayDrawing::sceneSize();
    return {picture.left() + scene.x() * picture.width() / sceneSize.width(),
            picture.top() + scene.y() * picture.height() / sceneSize.height()};
}

QPointF TextPreviewWidget::toScene(QPointF widget) const
{
    const QRect picture = pictureRect();
    if (picture.isEmpty())
        return {};
    const QSizeF sceneSize = OverlayDrawing::sceneSize();
    return {(widget.x() - picture.left()) * sceneSize.width() / picture.width(),
            (widget.y() - picture.top()) * sceneSize.height() / picture.height()};
}

QPoint TextPreviewWidget::scenePosition() const
{
    const QSizeF scene = OverlayDrawing::sceneSize();
    return {int(std::lround(m_text.posX * scene.width())),
            int(std::lround(m_text.posY * scene.height()))};
}

void TextPreviewWidget::setText(const TextOverlayData &text)
{
    TextOverlayData samePlace = text;
    samePlace.posX = m_text.posX;
    samePlace.posY = m_text.posY;
    if (!(samePlace == m_text))
        m_scrollClock.restart();
    m_text = text;
    showPosition();
    redraw();
    updateAnimation();
}

void TextPreviewWidget::setProgramSize(QSize size)
{
    m_programSize = size;
    m_scrollClock.restart();
    redraw();
}

qint64 TextPreviewWidget::scrollTimeUs() const
{
    // The engine moves a text by output pixels a second; the picture here is smaller (or
    // larger) than the program's by the ratio of their heights, and the time runs by the same
    // ratio, so the scroll takes as long relative to the picture as it does on air.
    const QSize program = m_programSize.isEmpty() ? kFallbackProgram : m_programSize;
    const double scale = pictureRect().height() / double(program.height());
    return qint64(m_scrollClock.nsecsElapsed() / 1000.0 * scale);
}

qint64 TextPreviewWidget::scrollLengthUs() const
{
    // Only when the preview starts over depends on this estimate of all the passes (text width
    // plus the visible width each); the pictures themselves come from the engine.
    const QRect picture = pictureRect();
    if (picture.isEmpty())
        return 0;
    const QSizeF scene = OverlayDrawing::sceneSize();
    QFont font(m_text.fontFamily);
    font.setPointSizeF(std::max(1.0, m_text.fontPointSize * picture.height() / scene.height()));
    font.setWeight(m_text.bold ? QFont::Bold : QFont::Normal);
    font.setItalic(m_text.italic);
    const QImage device(1, 1, QImage::Format_ARGB32_Premultiplied);
    const QFontMetricsF metrics(font, &device);
    double textWidth = 0.0;
    for (const QString &line : m_text.text.split(QLatin1Char('\n')))
        textWidth = std::max(textWidth, metrics.horizontalAdvance(line));
    const double visible = m_text.scrollViewportWidth >= 1.0
                               ? m_text.scrollViewportWidth * picture.width() / scene.width()
                               : std::max(0.0, picture.width() * (1.0 - m_text.posX));
    const double seconds =
        m_text.effectivePasses() * (textWidth + visible) / m_text.scrollPixelsPerSecond();
    return qint64(seconds * 1e6);
}

void TextPreviewWidget::redraw()
{
    const QRect picture = pictureRect();
    if (picture.isEmpty()) {
        m_picture = QImage();
        m_ink = QRect();
        update();
        return;
    }
    if (m_backdrop.size() != picture.size()) {
        m_backdrop = QImage(picture.size(), QImage::Format_RGB32);
        QPainter painter(&m_backdrop);
        for (int y = 0; y < picture.height(); y += kChecker)
            for (int x = 0; x < picture.width(); x += kChecker)
                painter.fillRect(x, y, kChecker, kChecker,
                                 ((x + y) / kChecker) % 2 ? QColor(0x36, 0x39, 0x3f)
                                                          : QColor(0x2b, 0x2d, 0x31));
    }
    const qint64 scrollUs = m_text.isScrolling() ? scrollTimeUs() : 0;
    // A text switched off in its row still shows here: the dialog is about how it looks.
    TextOverlayData shown = m_text;
    shown.enabled = true;
    m_picture = OverlayDrawing::text(shown, picture.size(), scrollUs);
    m_ink = inkBounds(m_picture);
    update();
}

void TextPreviewWidget::tick()
{
    if (!m_text.isScrolling()) {
        updateAnimation();
        return;
    }
    // After the last pass the text stays off the picture; a moment later it runs again.
    const QRect picture = pictureRect();
    const QSize program = m_programSize.isEmpty() ? kFallbackProgram : m_programSize;
    const double scale = std::max(1e-6, picture.height() / double(program.height()));
    const qint64 wallUs = qint64(scrollLengthUs() / scale);
    if (m_ink.isEmpty() && m_scrollClock.nsecsElapsed() / 1000 >= wallUs + kRestartPauseMs * 1000)
        m_scrollClock.restart();
    redraw();
}

void TextPreviewWidget::updateAnimation()
{
    if (m_text.isScrolling() && !m_text.text.isEmpty() && m_text.opacity > 0 && isVisible()) {
        if (!m_timer->isActive())
            m_timer->start();
    } else {
        m_timer->stop();
    }
}

void TextPreviewWidget::moveAnchorTo(QPointF widgetPoint)
{
    const QSizeF scene = OverlayDrawing::sceneSize();
    const QPointF at = toScene(widgetPoint);
    const QPoint place(std::clamp(int(std::lround(at.x())), 0, int(scene.width())),
                       std::clamp(int(std::lround(at.y())), 0, int(scene.height())));
    if (place == scenePosition())
        return;
    m_text.posX = place.x() / scene.width();
    m_text.posY = place.y() / scene.height();
    showPosition();
    redraw();
    emit positionChanged(place);
}

void TextPreviewWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect picture = pictureRect();
    if (picture.isEmpty())
        return;
    painter.drawImage(picture.topLeft(), m_backdrop);
    if (!m_picture.isNull())
        painter.drawImage(picture.topLeft(), m_picture);
    painter.setPen(QColor(0x55, 0x5a, 0x63));
    painter.drawRect(picture.adjusted(0, 0, -1, -1));
    if (m_dragging) {
        // The anchor being dragged, as a small cross; it is never part of the program.
        const QPoint anchor = toWidget(scenePosition()).toPoint();
        painter.setPen(QColor(0xff, 0xff, 0xff, 200));
        painter.drawLine(anchor - QPoint(6, 0), anchor + QPoint(6, 0));
        painter.drawLine(anchor - QPoint(0, 6), anchor + QPoint(0, 6));
    }
}

void TextPreviewWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // The position is labelled right under the picture's left edge.
    const QRect picture = pictureRect();
    m_position->setGeometry(picture.left(), picture.bottom() + 1, std::max(0, picture.width()),
                            m_position->sizeHint().height());
    redraw();
}

void TextPreviewWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_scrollClock.restart();
    redraw();
    updateAnimation();
}

void TextPreviewWidget::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    updateAnimation();
}

void TextPreviewWidget::mousePressEvent(QMouseEvent *event)
{
    const QPointF at = event->position();
    if (event->button() != Qt::LeftButton || !pictureRect().contains(at.toPoint())) {
        QWidget::mousePressEvent(event);
        return;
    }
    m_dragging = true;
    setCursor(Qt::ClosedHandCursor);
    // Taken by its letters the text keeps its place under the pointer; a press elsewhere puts
    // the anchor there.
    const QRect ink = m_ink.translated(pictureRect().topLeft())
                          .adjusted(-kGrabMargin, -kGrabMargin, kGrabMargin, kGrabMargin);
    m_grabOffset = ink.contains(at.toPoint()) ? toWidget(scenePosition()) - at : QPointF();
    moveAnchorTo(at + m_grabOffset);
    update();
}

void TextPreviewWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragging) {
        moveAnchorTo(event->position() + m_grabOffset);
        return;
    }
    const QRect ink = m_ink.translated(pictureRect().topLeft());
    setCursor(ink.contains(event->position().toPoint()) ? Qt::OpenHandCursor : Qt::CrossCursor);
}

void TextPreviewWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_dragging || event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    moveAnchorTo(event->position() + m_grabOffset);
    m_dragging = false;
    unsetCursor();
    update();
}

void TextPreviewWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void TextPreviewWidget::retranslateUi()
{
    setAccessibleName(tr("Text preview"));
    setToolTip(tr("Drag the text to place it on the program."));
    m_position->setAccessibleName(tr("Text position"));
    showPosition();
}

void TextPreviewWidget::showPosition()
{
    const QPoint place = scenePosition();
    m_position->setText(tr("X:%1 Y:%2").arg(place.x()).arg(place.y()));
}

} // namespace selvane
