#include "control/PanelPictures.h"

#include "control/HttpWire.h"
#include "engine/Engine.h"
#include "engine/OverlayDrawing.h"

#include <QBuffer>
#include <QImage>
#include <QTcpSocket>
#include <QTimer>
#include <chrono>
#include <utility>

namespace selvane::control {

namespace {

constexpr int kMaxWaits = 16;
constexpr qint64 kListenMs = 3000;
const QSize kProgramSize(640, 360);
const QSize kThumbnailSize(320, 180);

qint64 steadyMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// How old a picture may be and still be handed out at once; how long a request waits.
qint64 freshMs(int index)
{
    return index == 0 ? 100 : 300;
}
int waitMs(int index)
{
    return index == 0 ? 2000 : 1000;
}

} // namespace

PanelPictures::PanelPictures(Engine &engine, QObject *parent) : QObject(parent), m_engine(engine)
{
    m_pool.setMaxThreadCount(1);
    m_pool.setObjectName(QStringLiteral("control-pictures"));
    m_timer = new QTimer(this);
    m_timer->setInterval(100);
    connect(m_timer, &QTimer::timeout, this, &PanelPictures::expire);
    const EngineStats stats = engine.stats();
    for (std::size_t c = 0; c < m_empty.size(); ++c)
        m_empty[c] = stats.channels[c].state == ChannelState::Idle;
    connect(&engine, &Engine::channelStateChanged, this, [this](int channel, ChannelState state) {
        if (channel < 0 || channel >= int(m_empty.size()))
            return;
        m_empty[std::size_t(channel)] = state == ChannelState::Idle;
        if (state == ChannelState::Idle)
            source(channel + 1).jpeg.clear();
    });
}

PanelPictures::~PanelPictures()
{
    listen(false);
    m_pool.waitForDone();
}

void PanelPictures::request(QTcpSocket *socket, int channel)
{
    const int index = channel == kProgram ? 0 : channel + 1;
    Source &wanted = source(index);
    const qint64 now = steadyMs();
    m_lastRequestMs = now;
    if (index > 0 && m_empty[std::size_t(channel)]) {
        writeReply(socket, errorReply(404, QStringLiteral("channel %1 has no source").arg(index)));
        return;
    }
    listen(true);
    m_timer->start();
    if (!wanted.jpeg.isEmpty() && now - wanted.madeMs < freshMs(index)) {
        writeReply(socket, Reply(200, wanted.jpeg, "image/jpeg"));
        return;
    }
    if (wanted.waits.size() >= kMaxWaits) {
        writeReply(socket, errorReply(503, QStringLiteral("too many snapshots waiting")));
        return;
    }
    wanted.waits.append({socket, QDeadlineTimer(waitMs(index))});
}

void PanelPictures::closeAll()
{
    for (Source &s : m_sources)
        s.waits.clear();
    listen(false);
    m_timer->stop();
}

void PanelPictures::listen(bool on)
{
    if (on == m_listening)
        return;
    m_listening = on;
    if (!on) {
        disconnect(&m_engine, &Engine::programFrame, this, nullptr);
        disconnect(&m_engine, &Engine::channelPreview, this, nullptr);
        return;
    }
    connect(&m_engine, &Engine::programFrame, this,
            [this](const FrameTokenPtr &frame, int) { offer(0, frame); });
    connect(&m_engine, &Engine::channelPreview, this,
            [this](int channel, const FrameTokenPtr &frame) { offer(channel + 1, frame); });
}

void PanelPictures::offer(int index, const FrameTokenPtr &frame)
{
    Source &s = source(index);
    if (s.waits.isEmpty() || !frame)
        return;
    if (s.encoding) {
        ++m_skipped;
        return;
    }
    s.encoding = true;
    const QSize fit = index == 0 ? kProgramSize : kThumbnailSize;
    m_pool.start([this, index, frame = FrameTokenPtr(frame), fit]() mutable {
        QImage picture = OverlayDrawing::picture(frame, fit);
        frame.reset(); // back to its pool before the encode
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        if (picture.isNull() || !picture.save(&buffer, "JPEG", 80))
            jpeg.clear();
        QMetaObject::invokeMethod(
            this, [this, index, jpeg] { encoded(index, jpeg); }, Qt::QueuedConnection);
    });
}

void PanelPictures::encoded(int index, const QByteArray &jpeg)
{
    Source &s = source(index);
    s.encoding = false;
    if (jpeg.isEmpty())
        return;
    s.jpeg = jpeg;
    s.madeMs = steadyMs();
    const Reply reply(200, jpeg, "image/jpeg");
    for (const Wait &wait : std::exchange(s.waits, {}))
        if (wait.socket)
            writeReply(wait.socket, reply);
}

void PanelPictures::expire()
{
    bool waiting = false;
    for (int index = 0; index < int(m_sources.size()); ++index) {
        Source &s = source(index);
        for (qsizetype i = s.waits.size() - 1; i >= 0; --i) {
            const Wait wait = s.waits[i];
            if (wait.socket && !wait.deadline.hasExpired())
                continue;
            s.waits.removeAt(i);
            if (!wait.socket)
                continue;
            // A still or paused source makes no new pictures: its last one is still right.
            if (!s.jpeg.isEmpty())
                writeReply(wait.socket, Reply(200, s.jpeg, "image/jpeg"));
            else if (index == 0)
                writeReply(wait.socket,
                           errorReply(503, QStringLiteral("no program picture came in time")));
            else
                writeReply(wait.socket,
                           errorReply(404, QStringLiteral("channel %1 has no picture").arg(index)));
        }
        waiting = waiting || !s.waits.isEmpty();
    }
    if (!waiting && steadyMs() - m_lastRequestMs > kListenMs) {
        listen(false);
        m_timer->stop();
    }
}

} // namespace selvane::control
