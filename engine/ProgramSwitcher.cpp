#include "engine/ProgramSwitcher.h"

#include <QPainter>
#include <QThread>
#include <QTimer>
#include <cmath>
#include <cstring>

namespace selvane {

ProgramSwitcher::ProgramSwitcher(const FramePool &programPool)
    : m_pool(programPool), m_compositor(programPool)
{
}

ProgramSwitcher::~ProgramSwitcher() = default;

void ProgramSwitcher::moveToProgramThread(QThread *thread)
{
    m_compositor.moveGlToThread(thread);
    moveToThread(thread);
}

// ---- decoder threads ----

void ProgramSwitcher::submitChannelFrame(int channel, FrameTokenPtr frame)
{
    if (!frame || m_still.load() || channel != m_channel.load())
        return;
    m_baseChannel.store(channel);
    if (m_baseMailbox.store(0, std::move(frame)))
        QMetaObject::invokeMethod(this, &ProgramSwitcher::flushBaseFrame, Qt::QueuedConnection);
}

void ProgramSwitcher::submitOverlayPicture(int mediaId, FrameTokenPtr frame)
{
    std::lock_guard lock(m_mutex);
    m_pendingPictures.insert(mediaId, std::move(frame));
}

// ---- controls ----

void ProgramSwitcher::cutTo(int channel)
{
    m_channel.store(channel);
    m_still.store(false);
}

void ProgramSwitcher::showStill(const QImage &image)
{
    {
        std::lock_guard lock(m_mutex);
        m_stillImage = image;
        ++m_stillVersion;
    }
    m_still.store(true);
    m_channel.store(-1);
    m_baseMailbox.take();
    QMetaObject::invokeMethod(this, &ProgramSwitcher::startStillTimer, Qt::QueuedConnection);
}

void ProgramSwitcher::setScene(OverlayScenePtr scene)
{
    std::lock_guard lock(m_mutex);
    m_scene = std::move(scene);
}

void ProgramSwitcher::forgetOverlayPicture(int mediaId)
{
    std::lock_guard lock(m_mutex);
    m_pendingPictures.remove(mediaId);
    m_forgottenPictures.append(mediaId);
}

void ProgramSwitcher::setOutputSize(QSize size, double fps)
{
    {
        std::lock_guard lock(m_mutex);
        m_outputSize = size;
        m_fps = fps > 0 ? fps : 30.0;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_stillTimer && m_stillTimer->isActive())
                startStillTimer();
        },
        Qt::QueuedConnection);
}

void ProgramSwitcher::setOutputSink(OutputSink sink)
{
    std::lock_guard lock(m_mutex);
    m_outputSink = std::move(sink);
}

ProgramSwitcher::Preview ProgramSwitcher::takePreview()
{
    std::lock_guard lock(m_previewMutex);
    Preview preview = std::move(m_preview);
    m_preview = {};
    m_previewPosted.store(false);
    return preview;
}

// ---- program thread ----

void ProgramSwitcher::flushBaseFrame()
{
    const FrameTokenPtr frame = m_baseMailbox.take()[0];
    const int channel = m_baseChannel.load();
    if (!frame || m_still.load() || channel != m_channel.load())
        return; // a cut came in between: the picture belongs to the old channel
    compose(frame, channel);
}

void ProgramSwitcher::compose(const FrameTokenPtr &base, int channel)
{
    OverlayScenePtr scene;
    OutputSink sink;
    {
        std::lock_guard lock(m_mutex);
        scene = m_scene;
        sink = m_outputSink;
        for (int id : std::as_const(m_forgottenPictures))
            m_compositor.setVideoPicture(id, nullptr);
        m_forgottenPictures.clear();
        for (auto it = m_pendingPictures.begin(); it != m_pendingPictures.end(); ++it)
            m_compositor.setVideoPicture(it.key(), std::move(it.value()));
        m_pendingPictures.clear();
    }
    const FrameTokenPtr program = m_compositor.compose(base, scene.get());
    if (m_compositor.lastPath() == VulkanCompositor::Path::PassThrough && scene &&
        m_compositor.overlayCount(*scene) > 0)
        m_withoutOverlays.fetch_add(1);
    m_frames.fetch_add(1);
    if (sink)
        sink(program);
    {
        std::lock_guard lock(m_previewMutex);
        m_preview = {program, channel};
    }
    if (!m_previewPosted.exchange(true))
        emit previewReady();
}

void ProgramSwitcher::startStillTimer()
{
    if (!m_still.load())
        return;
    if (!m_stillTimer) {
        m_stillTimer = new QTimer(this);
        m_stillTimer->setTimerType(Qt::PreciseTimer);
        connect(m_stillTimer, &QTimer::timeout, this, &ProgramSwitcher::pushStill);
    }
    double fps = 30.0;
    {
        std::lock_guard lock(m_mutex);
        fps = m_fps;
    }
    m_stillTimer->start(std::max(1, int(std::lround(1000.0 / fps))));
    pushStill(); // the new picture goes on air now, not one period later
}

void ProgramSwitcher::pushStill()
{
    if (!m_still.load()) {
        m_stillTimer->stop();
        return;
    }
    const FrameTokenPtr frame = stillFrame();
    if (frame)
        compose(frame, -1);
}

FrameTokenPtr ProgramSwitcher::stillFrame()
{
    QImage image;
    quint64 version = 0;
    QSize out;
    double fps = 30.0;
    {
        std::lock_guard lock(m_mutex);
        image = m_stillImage;
        version = m_stillVersion;
        out = m_outputSize;
        fps = m_fps;
    }
    if (out.width() < 1 || out.height() < 1)
        return {};
    // The canvas is redrawn only when the picture or the size changes.
    if (m_canvas.size() != out || m_canvasVersion != version) {
        m_canvas = QImage(out, QImage::Format_RGBA8888);
        m_canvas.fill(Qt::black);
        if (!image.isNull()) {
            const QSize scaled = image.size().scaled(out, Qt::KeepAspectRatio);
            QPainter painter(&m_canvas);
            painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
            painter.drawImage(QRect((out.width() - scaled.width()) / 2,
                                    (out.height() - scaled.height()) / 2, scaled.width(),
                                    scaled.height()),
                              image);
        }
        m_canvasVersion = version;
    }
    FrameWriter token = m_pool.acquire();
    if (!token)
        return {};
    const qint64 stride = m_canvas.bytesPerLine();
    token.prepare(out.width(), out.height(), stride);
    token->flag = true;
    m_stillPtsUs += qint64(std::llround(1e6 / fps));
    token->ptsUs = m_stillPtsUs;
    std::memcpy(token.bits(), m_canvas.constBits(), std::size_t(stride * out.height()));
    return std::move(token).publish();
}

} // namespace selvane
