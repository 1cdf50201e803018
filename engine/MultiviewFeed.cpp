#include "engine/MultiviewFeed.h"

#include "media/ThreadName.h"
#include "output/OutputRouter.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cstring>

extern "C" {
#include <libswscale/swscale.h>
}

namespace selvane {

namespace {

// Limited-range BT.601 colours of the frames around the tiles.
int kRed[3] = {81, 90, 240};
int kGreen[3] = {145, 54, 34};

constexpr int kPreviewTile = 0;
constexpr int kProgramTile = 1;

// Tiles start and span on 16-pixel steps: the scaler's vector writes stay inside their row.
int down16(int v)
{
    return v & ~15;
}

} // namespace

MultiviewFeed::MultiviewFeed(QSize size, std::vector<std::weak_ptr<OutputRouter>> routers)
    : m_size(QSize(std::max(64, size.width() & ~1), std::max(64, size.height() & ~1))),
      m_routers(std::move(routers)), m_pool(4, m_size.width(), m_size.height())
{
    const int w = m_size.width();
    const int h = m_size.height();
    // Two large tiles over four small ones, each band with room for its labels.
    const int bigW = down16(w / 2);
    const int bigH = std::min(h / 2, bigW * 9 / 16) & ~1;
    m_tiles[kPreviewTile].rect = QRect(0, 0, bigW, bigH);
    m_tiles[kProgramTile].rect = QRect(w - bigW, 0, bigW, bigH);
    const int smallW = down16(w / 4);
    const int smallH = std::min((h - bigH) * 3 / 4, smallW * 9 / 16) & ~1;
    const int smallY = (bigH + (h - bigH - smallH) / 4) & ~1;
    for (int c = 0; c < kChannelCount; ++c)
        m_tiles[std::size_t(2 + c)].rect = QRect(down16(c * w / 4), smallY, smallW, smallH);
    m_thread = std::thread([this] { run(); });
}

MultiviewFeed::~MultiviewFeed()
{
    stop();
}

void MultiviewFeed::stop()
{
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
        m_queue.clear();
    }
    m_wake.notify_all();
    if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
        m_thread.join();
}

void MultiviewFeed::setLabels(const std::array<QString, kChannelCount> &sources)
{
    std::lock_guard lock(m_mutex);
    m_sources = sources;
}

void MultiviewFeed::takeChannels(const std::array<FrameTokenPtr, kChannelCount> &pictures)
{
    std::lock_guard lock(m_mutex);
    m_channels = pictures;
}

void MultiviewFeed::takeProgram(const FrameTokenPtr &program, qint64 ptsUs, int programChannel)
{
    {
        std::lock_guard lock(m_mutex);
        if (m_stop)
            return;
        if (int(m_queue.size()) >= kQueueDepth) {
            m_queue.pop_front(); // the newest tick is what a monitor wants
            m_dropped.fetch_add(1);
        }
        m_queue.push_back({program, m_channels, ptsUs, programChannel, m_preview.load()});
    }
    m_wake.notify_one();
}

void MultiviewFeed::run()
{
    nameThisThread("multiview");
    for (;;) {
        Tick tick;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [&] { return m_stop || !m_queue.empty(); });
            if (m_stop)
                return;
            tick = std::move(m_queue.front());
            m_queue.pop_front();
        }
        FrameTokenPtr picture = compose(tick);
        if (!picture) {
            m_dropped.fetch_add(1);
            continue;
        }
        m_made.fetch_add(1);
        for (const auto &weak : m_routers)
            if (auto router = weak.lock())
                router->enqueueFrame(picture, tick.ptsUs);
    }
}

FrameTokenPtr MultiviewFeed::compose(const Tick &tick)
{
    FrameWriter out = m_pool.acquire();
    if (!out)
        return {};
    out.prepareI420(m_size.width(), m_size.height());
    for (int p = 0; p < 3; ++p) {
        const int rows = p == 0 ? m_size.height() : (m_size.height() + 1) / 2;
        std::memset(out.plane(p), p == 0 ? 16 : 128, std::size_t(out->planeStride(p)) * rows);
    }
    std::array<QString, kChannelCount> sources;
    {
        std::lock_guard lock(m_mutex);
        sources = m_sources;
    }
    const int preview = tick.previewChannel;
    const FrameToken *previewPicture = preview >= 0 && preview < kChannelCount
                                           ? tick.channels[std::size_t(preview)].get()
                                           : nullptr;
    drawPicture(m_tiles[kPreviewTile], previewPicture, out);
    drawPicture(m_tiles[kProgramTile], tick.program.get(), out);
    for (int c = 0; c < kChannelCount; ++c)
        drawPicture(m_tiles[std::size_t(2 + c)], tick.channels[std::size_t(c)].get(), out);
    drawLabel(m_tiles[kPreviewTile],
              preview >= 0 ? QStringLiteral("PREVIEW  %1").arg(preview + 1)
                           : QStringLiteral("PREVIEW"),
              out);
    drawLabel(m_tiles[kProgramTile],
              tick.programChannel >= 0 ? QStringLiteral("PROGRAM  %1").arg(tick.programChannel + 1)
                                       : QStringLiteral("PROGRAM"),
              out);
    drawFrame(m_tiles[kPreviewTile].rect, kGreen, out);
    drawFrame(m_tiles[kProgramTile].rect, kRed, out);
    for (int c = 0; c < kChannelCount; ++c) {
        Tile &tile = m_tiles[std::size_t(2 + c)];
        const QString source = sources[std::size_t(c)];
        drawLabel(tile,
                  source.isEmpty() ? QString::number(c + 1)
                                   : QStringLiteral("%1  %2").arg(c + 1).arg(source),
                  out);
        if (c == tick.programChannel)
            drawFrame(tile.rect, kRed, out);
        else if (c == preview)
            drawFrame(tile.rect, kGreen, out);
    }
    return std::move(out).publish();
}

void MultiviewFeed::drawPicture(Tile &tile, const FrameToken *picture, FrameWriter &out)
{
    if (!picture || picture->width < 1 || picture->height < 1 || !picture->hasPicture())
        return;
    // Fitted with its shape kept, centred in the tile.
    const QRect &r = tile.rect;
    QSize fit = QSize(picture->width, picture->height).scaled(r.size(), Qt::KeepAspectRatio);
    fit = QSize(std::max(2, fit.width() & ~1), std::max(2, fit.height() & ~1));
    const int x = (r.x() + (r.width() - fit.width()) / 2) & ~1;
    const int y = (r.y() + (r.height() - fit.height()) / 2) & ~1;
    tile.scaler.reset(sws_getCachedContext(tile.scaler.release(), picture->width, picture->height,
                                           picture->isI420() ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_RGBA,
                                           fit.width(), fit.height(), AV_PIX_FMT_YUV420P,
                                           SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!tile.scaler)
        return;
    const FrameToken::AvPlanes src = picture->avPlanes();
    FrameWriter::AvPlanes dst = out.avPlanes();
    dst.data[0] += std::ptrdiff_t(y) * dst.linesize[0] + x;
    for (int p = 1; p < 3; ++p)
        dst.data[p] += std::ptrdiff_t(y / 2) * dst.linesize[p] + x / 2;
    sws_scale(tile.scaler.get(), src.data, src.linesize, 0, picture->height, dst.data,
              dst.linesize);
}

void MultiviewFeed::drawLabel(Tile &tile, const QString &text, FrameWriter &out)
{
    const QRect &r = tile.rect;
    const int height = std::max(12, m_size.height() / 24) & ~1;
    if (tile.text != text || tile.label.height() != height) {
        // Rendered again only when its words change.
        tile.text = text;
        tile.label = QImage(std::min(r.width(), m_size.width()), height, QImage::Format_Grayscale8);
        tile.label.fill(0);
        QPainter painter(&tile.label);
        QFont font;
        font.setPixelSize(height * 3 / 4);
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(Qt::white);
        const QRect room = tile.label.rect().adjusted(6, 0, -10, 0);
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, room.width()));
    }
    // Under the tile where there is room, over its foot otherwise.
    int y = r.bottom() + 1 + 4;
    if (y + height > m_size.height())
        y = r.bottom() + 1 - height;
    y &= ~1;
    for (int row = 0; row < height && y + row < m_size.height(); ++row) {
        std::uint8_t *luma = out.plane(0) + std::ptrdiff_t(y + row) * out->planeStride(0) + r.x();
        const uchar *mask = tile.label.constScanLine(row);
        for (int col = 0; col < tile.label.width() && r.x() + col < m_size.width(); ++col)
            luma[col] = std::uint8_t(16 + mask[col] * 219 / 255);
    }
}

void MultiviewFeed::drawFrame(const QRect &rect, int yuv[3], FrameWriter &out)
{
    const int t = 4;
    const auto fill = [&](int x0, int y0, int x1, int y1) {
        for (int y = y0; y < y1; ++y)
            std::memset(out.plane(0) + std::ptrdiff_t(y) * out->planeStride(0) + x0, yuv[0],
                        std::size_t(x1 - x0));
        for (int p = 1; p < 3; ++p)
            for (int y = y0 / 2; y < y1 / 2; ++y)
                std::memset(out.plane(p) + std::ptrdiff_t(y) * out->planeStride(p) + x0 / 2, yuv[p],
                            std::size_t((x1 - x0) / 2));
    };
    const int x0 = rect.x(), y0 = rect.y(), x1 = rect.x() + rect.width(),
              y1 = rect.y() + rect.height();
    fill(x0, y0, x1, y0 + t);
    fill(x0, y1 - t, x1, y1);
    fill(x0, y0, x0 + t, y1);
    fill(x1 - t, y0, x1, y1);
}

} // namespace selvane
