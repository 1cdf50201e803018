#include "panels/MultiviewWindow.h"

#include "panels/LevelMeter.h"

#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QTime>
#include <QTimer>
#include <QWindow>
#include <algorithm>

namespace selvane {

namespace {
constexpr int kMargin = 6;
constexpr int kMeterWidth = 18;
constexpr int kClockHeight = 44;
const QColor kProgramRed(0xe0, 0x30, 0x30);
const QColor kPreviewGreen(0x2e, 0xb8, 0x4d);
const QColor kIdleFrame(0x3a, 0x3f, 0x48);
} // namespace

MultiviewWindow::MultiviewWindow(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName("multiviewWindow");
    setAccessibleName("Multiview");
    setAttribute(Qt::WA_OpaquePaintEvent);
    resize(1280, 720);
    m_meter = new LevelMeter(this);
    m_meter->setAccessibleName("Multiview Program Level");
    m_clock = new QTimer(this);
    m_clock->setInterval(1000);
    connect(m_clock, &QTimer::timeout, this, [this] { update(m_clockRect); });
    m_clock->start();
    setWindowTitle(tr("Multiview"));
}

void MultiviewWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        setWindowTitle(tr("Multiview"));
        update();
    }
    QWidget::changeEvent(event);
}

void MultiviewWindow::setImage(int tile, const QImage &image)
{
    if (tile < 0 || tile >= kTiles)
        return;
    m_images[std::size_t(tile)] = image;
    update(m_rects[std::size_t(tile)]);
}

void MultiviewWindow::setSource(int channel, const QString &source)
{
    if (channel < 0 || channel >= 4 || m_sources[std::size_t(channel)] == source)
        return;
    m_sources[std::size_t(channel)] = source;
    update();
}

void MultiviewWindow::setTally(int program, int preview)
{
    if (program == m_program && preview == m_preview)
        return;
    m_program = program;
    m_preview = preview;
    update();
}

void MultiviewWindow::setProgramLevel(float peak, float rms)
{
    m_meter->setLevel(peak, rms);
}

QRect MultiviewWindow::tileRect(int tile) const
{
    return tile >= 0 && tile < kTiles ? m_rects[std::size_t(tile)] : QRect();
}

QSize MultiviewWindow::tileSize(int tile) const
{
    // Inside the frame and the label strip.
    const QRect r = tileRect(tile).adjusted(3, 3, -3, -3);
    return r.isValid() ? r.size() * devicePixelRatioF() : QSize();
}

void MultiviewWindow::showOnScreen(int screen)
{
    const QList<QScreen *> screens = QGuiApplication::screens();
    if (screen < 0 || screen >= screens.size()) {
        showNormal();
        return;
    }
    show();
    windowHandle()->setScreen(screens[screen]);
    setGeometry(screens[screen]->geometry());
    showFullScreen();
}

void MultiviewWindow::layoutTiles()
{
    // Preview and program share the top row; the four channels the row under them.
    // As wide as the window allows, or as high: the rows of 16:9 pictures and the clock fit
    // both ways, centred.
    const int byWidth = this->width() - 3 * kMargin - kMeterWidth;
    const int byHeight = (this->height() - 4 * kMargin - kClockHeight) * 64 / 27;
    const int width = std::max(64, std::min(byWidth, byHeight));
    const int big = (width - kMargin) / 2, small = (width - 3 * kMargin) / 4;
    const int bigHeight = big * 9 / 16, smallHeight = small * 9 / 16;
    const int left = (this->width() - width - kMargin - kMeterWidth) / 2;
    const int top = std::max(
        kMargin, (this->height() - bigHeight - smallHeight - kClockHeight - 2 * kMargin) / 2);
    m_rects[PreviewTile] = QRect(left, top, big, bigHeight);
    m_rects[ProgramTile] = QRect(left + kMargin + big, top, big, bigHeight);
    const int row = top + kMargin + bigHeight;
    for (int c = 0; c < 4; ++c)
        m_rects[std::size_t(FirstChannelTile + c)] =
            QRect(left + c * (small + kMargin), row, small, smallHeight);
    m_clockRect = QRect(left, row + smallHeight + kMargin, width, kClockHeight);
    m_meter->setGeometry(left + width + kMargin, top, kMeterWidth, row + smallHeight - top);
}

void MultiviewWindow::resizeEvent(QResizeEvent *event)
{
    layoutTiles();
    emit tilesResized();
    QWidget::resizeEvent(event);
}

QString MultiviewWindow::label(int tile) const
{
    if (tile == PreviewTile)
        return m_preview >= 0 ? tr("PREVIEW  %1").arg(m_preview + 1) : tr("PREVIEW");
    if (tile == ProgramTile)
        return m_program >= 0 ? tr("PROGRAM  %1").arg(m_program + 1) : tr("PROGRAM");
    const int channel = tile - FirstChannelTile;
    const QString source = m_sources[std::size_t(channel)];
    return QStringLiteral("%1  %2")
        .arg(channel + 1)
        .arg(source.isEmpty() ? tr("(no source)") : source);
}

QColor MultiviewWindow::tally(int tile) const
{
    if (tile == ProgramTile)
        return kProgramRed;
    if (tile == PreviewTile)
        return kPreviewGreen;
    const int channel = tile - FirstChannelTile;
    return channel == m_program ? kProgramRed : channel == m_preview ? kPreviewGreen : kIdleFrame;
}

void MultiviewWindow::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::black);
    QFont font = painter.font();
    for (int t = 0; t < kTiles; ++t) {
        const QRect r = m_rects[std::size_t(t)];
        if (!r.intersects(event->rect()))
            continue;
        painter.fillRect(r, tally(t));
        const QRect inside = r.adjusted(3, 3, -3, -3);
        painter.fillRect(inside, QColor(0x0c, 0x0e, 0x12));
        const QImage &image = m_images[std::size_t(t)];
        if (!image.isNull()) {
            QRect target(QPoint(0, 0), image.size().scaled(inside.size(), Qt::KeepAspectRatio));
            target.moveCenter(inside.center());
            painter.drawImage(target, image);
        }
        // The label on a dark strip along the bottom of the picture.
        font.setPixelSize(std::max(11, r.height() / 14));
        painter.setFont(font);
        const int strip = painter.fontMetrics().height() + 6;
        const QRect labelRect(inside.left(), inside.bottom() - strip + 1, inside.width(), strip);
        painter.fillRect(labelRect, QColor(0, 0, 0, 170));
        painter.setPen(Qt::white);
        painter.drawText(
            labelRect.adjusted(8, 0, -8, 0), Qt::AlignVCenter | Qt::AlignLeft,
            painter.fontMetrics().elidedText(label(t), Qt::ElideMiddle, labelRect.width() - 16));
    }
    if (m_clockRect.intersects(event->rect())) {
        font.setPixelSize(kClockHeight - 10);
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.drawText(m_clockRect, Qt::AlignCenter,
                         QTime::currentTime().toString(QStringLiteral("HH:mm:ss")));
    }
}

void MultiviewWindow::closeEvent(QCloseEvent *event)
{
    emit closed();
    QWidget::closeEvent(event);
}

void MultiviewWindow::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (int s = 0; s < screens.size(); ++s)
        menu.addAction(tr("Full Screen on Screen %1 (%2)").arg(s + 1).arg(screens[s]->name()), this,
                       [this, s] { showOnScreen(s); });
    menu.addAction(tr("In a Window"), this, [this] { showOnScreen(-1); });
    menu.addSeparator();
    menu.addAction(tr("Close"), this, &QWidget::close);
    menu.exec(event->globalPos());
}

void MultiviewWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && isFullScreen()) {
        showNormal();
        return;
    }
    QWidget::keyPressEvent(event);
}

void MultiviewWindow::mouseDoubleClickEvent(QMouseEvent *)
{
    if (isFullScreen())
        showNormal();
    else
        showOnScreen(QGuiApplication::screens().indexOf(screen()));
}

} // namespace selvane
